// The host library's per-job overhead (play to wait, trivial pattern) against a bare pool of as many threads as
// it has cores (KESH_EMU_CORES), all on one CPU. The figure: "ratio" (job time / bare time) of the _median row.
#include <benchmark/benchmark.h>

#include <sched.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "testing/pattern_calls.h"
#include "testing/sample_patterns.h"

/// A job's least cost: a task queued to plain threads, a wait for its flag; wake-ups after unlocking, as the library.
struct BarePool {
  explicit BarePool(int threads) {
    for (int i = 0; i < threads; ++i) {
      std::thread([this] {
        std::unique_lock<std::mutex> lock(mutex);
        for (;;) {
          wake.wait(lock, [this] { return !tasks.empty(); });
          std::function<void()> task = std::move(tasks.front());
          tasks.pop_front();
          lock.unlock();
          task();
          lock.lock();
        }
      }).detach();
    }
  }
  void roundTrip() {
    done = false;  // the previous task set it and is done with it
    std::unique_lock<std::mutex> lock(mutex);
    tasks.push_back([this] {
      std::unique_lock<std::mutex> doneLock(doneMutex);
      done = true;
      doneLock.unlock();
      doneCv.notify_all();
    });
    lock.unlock();
    wake.notify_one();
    std::unique_lock<std::mutex> doneLock(doneMutex);
    doneCv.wait(doneLock, [this] { return done; });
  }

  std::mutex mutex, doneMutex;
  std::condition_variable wake, doneCv;
  std::deque<std::function<void()>> tasks;
  bool done = false;
};

// A job and a bare-pool task alternately, so that both see the same load on a shared machine.
static void BM_JobOverheadVsBarePool(benchmark::State& state) {
  // Every thread on this CPU (threads inherit it): wake-ups across CPUs take 3 to 80 us by run.
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(sched_getcpu(), &one);
  sched_setaffinity(0, sizeof one, &one);
  const char* cores = std::getenv("KESH_EMU_CORES");
  static BarePool* pool = new BarePool(cores ? std::atoi(cores) : static_cast<int>(std::thread::hardware_concurrency()));
  _kesh_player* player = keshCreatePlayer("bench");
  _pattern_node_handle* node = nullptr;
  _pattern_graph* graph =
      kesh::testing::singleNodeGraph(player, kesh::testing::loadPattern(player, kesh::testing::copyPattern(64, 7, 3)), &node);
  kesh::testing::bindFilled(player, node, 7, 64, 7);
  kesh::testing::bindFilled(player, node, 3, 64, 0);
  std::chrono::duration<double, std::micro> jobs{}, bare{};
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    _pattern_job* job = nullptr;
    kesh::testing::playAndWait(player, graph, &job);
    keshDestroyPatternJob(job);
    const auto middle = std::chrono::steady_clock::now();
    pool->roundTrip();
    jobs += middle - start;
    bare += std::chrono::steady_clock::now() - middle;
  }
  state.counters["job_us"] = jobs.count() / static_cast<double>(state.iterations());
  state.counters["ratio"] = jobs / bare;
}
BENCHMARK(BM_JobOverheadVsBarePool)->Repetitions(9)->ReportAggregatesOnly(true);

BENCHMARK_MAIN();
