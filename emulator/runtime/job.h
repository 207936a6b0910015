// One play of a graph. The job runs its plan step by step on the cores: the
// nodes of a step are queued together and the next step is queued when the
// last of them ends. A job over its hard limit stops after the running step
// and fails; a soft limit overrun is only recorded. Thread-safe; the cores
// keep the job alive while any of its nodes is queued or running. Once
// complete a job never changes, so its queries take no lock.
#ifndef KESH_EMULATOR_RUNTIME_JOB_H_
#define KESH_EMULATOR_RUNTIME_JOB_H_

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "runtime/cores.h"
#include "runtime/handles.h"
#include "runtime/job_plan.h"
#include "runtime/player.h"

namespace kesh::runtime {

/// Measured times of one node, microseconds (timestamps: CLOCK_MONOTONIC).
struct NodeTiming {
  int64_t startUs = 0;   ///< the node's core took it
  int64_t endUs = 0;     ///< the node's core was done with it
  int64_t ipUs = 0;      ///< its operations ran
  int64_t driverUs = 0;  ///< the library prepared and cleaned up around them
};

class Job : public std::enable_shared_from_this<Job> {
 public:
  /// A job of `player` that will run `plan` (shared, never modified) under `limits`.
  Job(std::shared_ptr<Player> player, std::shared_ptr<const JobPlan> plan, JobLimits limits);
  /// Not copyable: its timings point into itself and the cores hold it shared.
  Job(const Job&) = delete;
  Job& operator=(const Job&) = delete;

  /// Queues the first step on `pool` (or completes at once when the plan is
  /// empty); throws std::system_error if the cores cannot start. Call once.
  void start(CorePool& pool);

  /// Blocks until the job is complete; kOk, or kFailed when a node could not
  /// run or the hard limit was exceeded. The same answer every time.
  int wait();

  /// True once the job is complete.
  bool done() const;

  /// Execution information `kind` of node `nodeId`; false before completion,
  /// for a node not in the job or an unknown kind. Nodes that never ran
  /// (the job stopped early) report zeros.
  bool execInfo(HandleId nodeId, uint32_t kind, int64_t* value) const;

  /// After completion: why the job failed or what it overran, or "".
  std::string outcomeNote() const;

 private:
  // Up to this many nodes keep their timings inside the job: no allocation.
  static constexpr size_t kInlineNodes = 4;

  static void runTask(const std::shared_ptr<void>& job, size_t node);
  void beginStepLocked(size_t step);
  void submitStep(size_t step);
  void nodeNeverRan();
  void runNode(size_t node);
  void nodeFinished(size_t node, const NodeTiming& timing, int64_t startNs, int64_t endNs, bool ok);
  void complete(std::unique_lock<std::mutex>& lock);

  const std::shared_ptr<Player> player_;
  const std::shared_ptr<const JobPlan> plan_;
  const JobLimits limits_;
  CorePool* pool_ = nullptr;

  mutable std::mutex mutex_;
  std::condition_variable doneCv_;
  NodeTiming inlineTimings_[kInlineNodes];
  std::unique_ptr<NodeTiming[]> heapTimings_;  // only for larger plans
  NodeTiming* timings_;                        // one per node of the plan
  size_t step_ = 0;
  size_t pending_ = 0;  // nodes of the current step not yet finished
  int64_t firstStartNs_ = 0;
  int64_t lastEndNs_ = 0;
  bool nodeFailed_ = false;
  bool hardExceeded_ = false;
  bool softExceeded_ = false;
  std::atomic<bool> done_{false};  // set last, under mutex_; what it guards is final then
};

}  // namespace kesh::runtime

#endif  // KESH_EMULATOR_RUNTIME_JOB_H_
