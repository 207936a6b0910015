#include "runtime/cores.h"

#include <cstdlib>
#include <cstring>
#include <thread>

namespace kesh::runtime {

int coreCountFrom(const char* setting, unsigned hardwareThreads) {
  int fallback = hardwareThreads == 0 ? 1 : static_cast<int>(hardwareThreads);
  if (setting == nullptr || *setting == '\0' || std::strlen(setting) > 3) return fallback;
  int value = 0;
  for (const char* c = setting; *c != '\0'; ++c) {
    if (*c < '0' || *c > '9') return fallback;
    value = value * 10 + (*c - '0');
  }
  return value >= 1 && value <= 256 ? value : fallback;
}

CorePool& CorePool::instance() {
  static CorePool* pool =  // never destroyed, see the header
      new CorePool(coreCountFrom(std::getenv("KESH_EMU_CORES"), std::thread::hardware_concurrency()));
  return *pool;
}

CorePool::CorePool(int cores) : cores_(cores), pinned_(static_cast<size_t>(cores)) {}

void CorePool::ensureStarted() {
  if (allStarted_.load(std::memory_order_acquire)) return;
  std::lock_guard<std::mutex> lock(mutex_);
  if (threadsStarted_ < cores_) startThreadsLocked();
}

void CorePool::submit(CoreTask task) {
  const bool pinned = task.core >= 0 && task.core < cores_;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (threadsStarted_ < cores_) startThreadsLocked();
    Queue& queue = pinned ? pinned_[static_cast<size_t>(task.core)] : anyCore_;
    queue.push(Queued{task.boost, sequence_++, task.run, std::move(task.owner), task.index});
  }
  // Any idle core can take an any-core task, so waking one is enough; a pinned
  // task wants one particular core, which only waking all is sure to reach.
  if (pinned) {
    wake_.notify_all();
  } else {
    wake_.notify_one();
  }
}

void CorePool::startThreadsLocked() {
  while (threadsStarted_ < cores_) {
    std::thread(&CorePool::workerLoop, this, threadsStarted_).detach();
    ++threadsStarted_;
  }
  allStarted_.store(true, std::memory_order_release);
}

CorePool::Queue* CorePool::nextQueueLocked(int core) {
  Queue& own = pinned_[static_cast<size_t>(core)];
  if (own.empty()) return anyCore_.empty() ? nullptr : &anyCore_;
  if (anyCore_.empty()) return &own;
  return RunsLater()(own.top(), anyCore_.top()) ? &anyCore_ : &own;
}

void CorePool::workerLoop(int core) {
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    Queue* queue = nullptr;
    wake_.wait(lock, [&] { return (queue = nextQueueLocked(core)) != nullptr; });
    Queued task = std::move(const_cast<Queued&>(queue->top()));
    queue->pop();
    lock.unlock();
    if (hook_) hook_(core);
    task.run(task.owner, task.index);
    task.owner.reset();  // release what the task holds before sleeping again
    lock.lock();
  }
}

}  // namespace kesh::runtime
