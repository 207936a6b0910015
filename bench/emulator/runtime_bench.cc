// The host library's per-job overhead (play to wait of a trivial pattern) against a bare
// mutex/condition-variable worker pool with as many threads as the library has cores
// (KESH_EMU_CORES), all on one CPU. The figure: "ratio" of the _median row (of two medians).
#include <benchmark/benchmark.h>

#include <sched.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "testing/pattern_calls.h"
#include "testing/sample_patterns.h"

namespace {

using namespace kesh::testing;  // NOLINT: the sample patterns and API helpers
using Micros = std::chrono::duration<double, std::micro>;

/// The least a job could cost: a task queued to plain worker threads, a wait for its flag.
class BarePool {
 public:
  explicit BarePool(int threads) {
    for (int i = 0; i < threads; ++i) std::thread([this] { work(); }).detach();
  }
  void submit(std::function<void()> task) {
    std::unique_lock<std::mutex> lock(mutex_);
    tasks_.push_back(std::move(task));
    lock.unlock();  // a woken worker finds the lock free
    wake_.notify_one();
  }

 private:
  void work() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
      wake_.wait(lock, [this] { return !tasks_.empty(); });
      std::function<void()> task = std::move(tasks_.front());
      tasks_.pop_front();
      lock.unlock();
      task();
      lock.lock();
    }
  }
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> tasks_;
};

/// One round trip through the bare pool: queue a task, wait for its flag. The flag outlives
/// its setters, who wake the waiter after unlocking, as the library does.
void barePoolRoundTrip(BarePool& pool) {
  static std::mutex& mutex = *new std::mutex;
  static std::condition_variable& doneCv = *new std::condition_variable;
  static bool done;
  done = false;  // the previous task set it and is done with it
  pool.submit([] {
    std::unique_lock<std::mutex> lock(mutex);
    done = true;
    lock.unlock();
    doneCv.notify_all();
  });
  std::unique_lock<std::mutex> lock(mutex);
  doneCv.wait(lock, [] { return done; });
}

// A job and a bare-pool task alternately, so that both see the same load on a shared machine.
void BM_JobOverheadVsBarePool(benchmark::State& state) {
  // Every thread on this CPU (threads inherit it): wake-ups across CPUs take 3 to 80 us by run.
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(sched_getcpu(), &one);
  sched_setaffinity(0, sizeof one, &one);
  const int cores = std::getenv("KESH_EMU_CORES") != nullptr ? std::atoi(std::getenv("KESH_EMU_CORES")) : 0;
  static BarePool* pool = new BarePool(  // never destroyed, like the library's cores
      cores >= 1 && cores <= 256 ? cores : std::max(1, static_cast<int>(std::thread::hardware_concurrency())));
  _kesh_player* player = keshCreatePlayer("bench");
  _pattern_node_handle* node = nullptr;
  _pattern_graph* graph = singleNodeGraph(player, loadPattern(player, copyPattern(64, 7, 3)), &node);
  bindFilled(player, node, 7, 64, 7);
  bindFilled(player, node, 3, 64, 0);
  std::vector<double> jobs, bare;
  const auto median = [](std::vector<double>& v) {  // reorders v
    std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(v.size() / 2), v.end());
    return v[v.size() / 2];
  };
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    _pattern_job* job = nullptr;  // play -> wait -> release
    playAndWait(player, graph, &job);
    keshDestroyPatternJob(job);
    const auto middle = std::chrono::steady_clock::now();
    barePoolRoundTrip(*pool);
    jobs.push_back(Micros(middle - start).count());
    bare.push_back(Micros(std::chrono::steady_clock::now() - middle).count());
  }
  state.counters["job_us"] = median(jobs);
  state.counters["bare_us"] = median(bare);
  state.counters["ratio"] = state.counters["job_us"] / state.counters["bare_us"];
}
BENCHMARK(BM_JobOverheadVsBarePool)->Repetitions(9)->ReportAggregatesOnly(true);

}  // namespace

BENCHMARK_MAIN();
