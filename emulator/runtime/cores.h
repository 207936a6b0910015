// The worker threads ("cores") that run nodes. KESH_EMU_CORES, read once,
// sets their number (default: one per hardware thread). Every core has its
// own queue for nodes pinned to it and all cores share a queue for nodes that
// may run anywhere; a core always takes the waiting node with the highest
// boost, the earliest submitted among equals. The library's pool is
// process-wide, created at first use and intentionally never destroyed, so a
// process may exit with jobs in flight; a test may make a pool of its own,
// which must outlive its threads (never destroy it). Thread-safe.
#ifndef KESH_EMULATOR_RUNTIME_CORES_H_
#define KESH_EMULATOR_RUNTIME_CORES_H_

#include <condition_variable>
#include <cstdint>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <queue>
#include <vector>

namespace kesh::runtime {

/// Number of cores from a KESH_EMU_CORES value (null, empty or invalid:
/// `hardwareThreads`, at least 1). Accepted values are 1..256.
int coreCountFrom(const char* setting, unsigned hardwareThreads);

/// One unit of work for a core: run(owner, index). Queuing one allocates
/// nothing (the owner is shared, not copied).
struct CoreTask {
  int boost = 0;                                          ///< 0..100, higher runs first
  int core = -1;                                          ///< -1 any core, else the core it must run on
  void (*run)(const std::shared_ptr<void>&, size_t) = nullptr;  ///< must not throw
  std::shared_ptr<void> owner;                            ///< kept alive until the task has run
  size_t index = 0;                                       ///< passed to run
};

class CorePool {
 public:
  /// The process-wide pool (threads start with the first task).
  static CorePool& instance();

  /// A pool of `cores` threads (1..256) of its own, for tests; never destroy it.
  explicit CorePool(int cores);

  /// Calls `hook(core)` on the core's thread just before each task runs there,
  /// so a test can see which core takes what and hold it. Set it before the
  /// first task is submitted; never changed afterwards.
  void setDispatchHook(std::function<void(int core)> hook) { hook_ = std::move(hook); }

  /// Number of cores.
  int coreCount() const { return cores_; }

  /// Starts the threads if they are not running; throws std::system_error
  /// if they cannot start.
  void ensureStarted();

  /// Queues `task`; throws std::system_error if the threads cannot start.
  void submit(CoreTask task);

 private:
  struct Queued {
    int boost;
    uint64_t sequence;
    void (*run)(const std::shared_ptr<void>&, size_t);
    std::shared_ptr<void> owner;
    size_t index;
  };
  struct RunsLater {
    bool operator()(const Queued& a, const Queued& b) const {
      return a.boost != b.boost ? a.boost < b.boost : a.sequence > b.sequence;
    }
  };
  using Queue = std::priority_queue<Queued, std::vector<Queued>, RunsLater>;

  void startThreadsLocked();
  void workerLoop(int core);
  Queue* nextQueueLocked(int core);

  const int cores_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::vector<Queue> pinned_;
  Queue anyCore_;
  uint64_t sequence_ = 0;
  int threadsStarted_ = 0;
  std::atomic<bool> allStarted_{false};  // lets ensureStarted skip the lock once running
  std::function<void(int)> hook_;
};

}  // namespace kesh::runtime

#endif  // KESH_EMULATOR_RUNTIME_CORES_H_
