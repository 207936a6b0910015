// Counts what one job costs the host library: allocations and mutex locks per
// play -> wait -> release of a trivial one-node pattern, over all threads.
// job_cost.sh adds the instructions per job, from callgrind.
// Usage: kesh_job_cost [JOBS]   (default 1000)
#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "testing/pattern_calls.h"
#include "testing/sample_patterns.h"

namespace {

std::atomic<long> allocations{0};
std::atomic<long> locks{0};
std::atomic<bool> counting{false};

}  // namespace

extern "C" void* __libc_malloc(size_t size);  // NOLINT: glibc's own allocator entry

// Every allocation of the process, the library's included, passes here.
extern "C" void* malloc(size_t size) {
  if (counting.load(std::memory_order_relaxed)) allocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_malloc(size);
}

// Every std::mutex lock of the process passes here.
extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) {
  using Lock = int (*)(pthread_mutex_t*);
  static Lock next = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
  if (counting.load(std::memory_order_relaxed)) locks.fetch_add(1, std::memory_order_relaxed);
  return next(mutex);
}

int main(int argc, char** argv) {
  using namespace kesh::testing;  // NOLINT: the sample patterns and API helpers
  const long jobs = argc > 1 ? std::atol(argv[1]) : 1000;
  _kesh_player* player = keshCreatePlayer("bench");
  _pattern_node_handle* node = nullptr;
  _pattern_graph* graph = singleNodeGraph(player, loadPattern(player, copyPattern(64, 7, 3)), &node);
  bindFilled(player, node, 7, 64, 7);
  bindFilled(player, node, 3, 64, 0);
  _pattern_job* job = nullptr;
  playAndWait(player, graph, &job);  // starts the cores and warms every cache
  keshDestroyPatternJob(job);
  counting = true;
  for (long i = 0; i < jobs; ++i) {
    playAndWait(player, graph, &job);
    keshDestroyPatternJob(job);
  }
  counting = false;
  std::printf("%ld jobs: %.2f allocations, %.2f mutex locks per job\n", jobs,
              static_cast<double>(allocations.load()) / static_cast<double>(jobs),
              static_cast<double>(locks.load()) / static_cast<double>(jobs));
  return 0;
}
