#include "runtime/job.h"

#include <algorithm>
#include <new>

#include "kesh/kesh_pattern.h"
#include "kernels/executor.h"
#include "runtime/api_call.h"
#include "runtime/clock.h"

namespace kesh::runtime {

Job::Job(std::shared_ptr<Player> player, std::shared_ptr<const JobPlan> plan, JobLimits limits)
    : player_(std::move(player)), plan_(std::move(plan)), limits_(limits), timings_(inlineTimings_) {
  if (plan_->nodes.size() > kInlineNodes) {
    heapTimings_.reset(new NodeTiming[plan_->nodes.size()]);
    timings_ = heapTimings_.get();
  }
}

void Job::runTask(const std::shared_ptr<void>& job, size_t node) {
  static_cast<Job*>(job.get())->runNode(node);
}

void Job::start(CorePool& pool) {
  pool_ = &pool;
  player_->unfinishedJobs.fetch_add(1);
  std::unique_lock<std::mutex> lock(mutex_);
  if (plan_->steps.empty()) return complete(lock);
  beginStepLocked(0);
  lock.unlock();
  submitStep(0);
}

void Job::beginStepLocked(size_t step) {
  step_ = step;
  pending_ = plan_->steps[step].size();
}

// Outside the job's lock: a core that finishes a node at once then never waits
// for the submitter to let go of it.
void Job::submitStep(size_t step) {
  std::shared_ptr<void> self = shared_from_this();
  for (size_t node : plan_->steps[step]) {
    const NodeRun& run = plan_->nodes[node];
    try {
      pool_->submit(CoreTask{run.boost, run.core, &Job::runTask, self, node});
    } catch (...) {
      nodeNeverRan();
    }
  }
}

void Job::nodeNeverRan() {
  std::unique_lock<std::mutex> lock(mutex_);
  nodeFailed_ = true;  // the job fails once the step's other nodes end
  if (--pending_ == 0) complete(lock);
}

void Job::runNode(size_t node) {
  const NodeRun& run = plan_->nodes[node];
  int64_t startNs = monotonicNanos();
  int64_t opsStartNs = startNs;
  int64_t opsEndNs = startNs;
  bool ok = true;
  try {
    std::vector<std::shared_ptr<ByteBlock>> scratch;  // zero-filled no-alloc buffers
    // Kept per core and reused: binding a node's buffers allocates nothing.
    thread_local std::vector<kernels::BufferView> views;
    views.clear();
    for (size_t i = 0; i < run.args.size(); ++i) {
      std::shared_ptr<ByteBlock> block = run.args[i].block;
      size_t size = run.args[i].size;
      if (block == nullptr) {
        size = run.program->args[i].size;
        block = ByteBlock::allocate(size);
        if (block == nullptr) throw std::bad_alloc();
        scratch.push_back(block);
      }
      views.push_back(kernels::BufferView{block->data(), size});
    }
    opsStartNs = monotonicNanos();
    kernels::executeProgram(*run.program, views);
    opsEndNs = monotonicNanos();
  } catch (...) {
    ok = false;
    opsEndNs = std::max(opsStartNs, monotonicNanos());
  }
  int64_t endNs = monotonicNanos();
  NodeTiming timing;
  timing.startUs = toMicros(startNs);
  timing.endUs = toMicros(endNs);
  timing.ipUs = toMicros(opsEndNs - opsStartNs);
  timing.driverUs = toMicros((opsStartNs - startNs) + (endNs - opsEndNs));
  nodeFinished(node, timing, startNs, endNs, ok);
}

void Job::nodeFinished(size_t node, const NodeTiming& timing, int64_t startNs, int64_t endNs, bool ok) {
  std::unique_lock<std::mutex> lock(mutex_);
  timings_[node] = timing;
  if (firstStartNs_ == 0 || startNs < firstStartNs_) firstStartNs_ = startNs;
  lastEndNs_ = std::max(lastEndNs_, endNs);
  if (!ok) nodeFailed_ = true;
  int64_t runUs = toMicros(lastEndNs_ - firstStartNs_);
  if (limits_.hardUs > 0 && runUs > limits_.hardUs) hardExceeded_ = true;
  if (--pending_ != 0) return;
  if (nodeFailed_ || hardExceeded_ || step_ + 1 == plan_->steps.size()) return complete(lock);
  const size_t next = step_ + 1;
  beginStepLocked(next);
  lock.unlock();
  submitStep(next);
}

void Job::complete(std::unique_lock<std::mutex>& lock) {
  int64_t runUs = toMicros(lastEndNs_ - firstStartNs_);
  softExceeded_ = limits_.softUs > 0 && runUs > limits_.softUs;
  // Before done_: a caller that sees the job done may destroy its player at once.
  player_->unfinishedJobs.fetch_sub(1);
  done_.store(true, std::memory_order_release);
  // Woken after the lock is free, a waiter never sleeps again on it. The job
  // outlives this: whoever completes it holds a reference.
  lock.unlock();
  doneCv_.notify_all();
}

int Job::wait() {
  if (!done()) {
    std::unique_lock<std::mutex> lock(mutex_);
    doneCv_.wait(lock, [this] { return done(); });
  }
  return nodeFailed_ || hardExceeded_ ? kFailed : kOk;
}

bool Job::done() const { return done_.load(std::memory_order_acquire); }

bool Job::execInfo(HandleId nodeId, uint32_t kind, int64_t* value) const {
  if (!done()) return false;
  for (size_t i = 0; i < plan_->nodes.size(); ++i) {
    if (plan_->nodes[i].nodeId != nodeId) continue;
    const NodeTiming& timing = timings_[i];
    switch (kind) {
      case PATTERN_NODE_EXEC_INFO_DRIVER_TIME: *value = timing.driverUs; return true;
      case PATTERN_NODE_EXEC_INFO_IP_TIME: *value = timing.ipUs; return true;
      case PATTERN_NODE_EXEC_INFO_END_TIMESTAMP: *value = timing.endUs; return true;
      case PATTERN_NODE_EXEC_INFO_START_TIMESTAMP: *value = timing.startUs; return true;
      default: return false;
    }
  }
  return false;
}

std::string Job::outcomeNote() const {
  if (!done()) return "";
  if (nodeFailed_) return "a node could not run";
  if (!hardExceeded_ && !softExceeded_) return "";
  std::string runUs = std::to_string(toMicros(lastEndNs_ - firstStartNs_));
  if (hardExceeded_) return "hard limit of " + std::to_string(limits_.hardUs) + " us exceeded: " + runUs + " us";
  if (softExceeded_) return "soft limit of " + std::to_string(limits_.softUs) + " us exceeded: " + runUs + " us";
  return "";
}

}  // namespace kesh::runtime
