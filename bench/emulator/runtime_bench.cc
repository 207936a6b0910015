// Host library costs: the per-job overhead (play to wait of a trivial
// pattern, median) against a bare mutex/condition-variable worker pool with as
// many threads as the library has cores, and 63 compute-heavy jobs in flight.
// The number of cores is fixed per process (KESH_EMU_CORES); runtime_scaling.sh
// runs this with 1 core and with all cores.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <functional>
#include <initializer_list>
#include <mutex>
#include <thread>
#include <vector>

#include "testing/pattern_calls.h"
#include "testing/sample_patterns.h"

namespace {

using namespace kesh::testing;  // NOLINT: the sample patterns and API helpers

/// A built one-node graph of `binary` whose two arguments are bound to `size`-byte memories.
_pattern_graph* boundGraph(_kesh_player* player, const std::vector<uint8_t>& binary, uint32_t size,
                           std::initializer_list<uint32_t> indices) {
  _pattern_node_handle* node = nullptr;
  _pattern_graph* graph = singleNodeGraph(player, loadPattern(player, binary), &node);
  for (uint32_t index : indices) bindFilled(player, node, index, size, 7);
  return graph;
}

/// The median of `micros` (reordered).
double median(std::vector<double>& micros) {
  std::nth_element(micros.begin(), micros.begin() + micros.size() / 2, micros.end());
  return micros[micros.size() / 2];
}

/// The least a job could cost: a task queued to a plain pool of worker threads
/// and a wait for its completion flag.
class BarePool {
 public:
  explicit BarePool(int threads) {
    for (int i = 0; i < threads; ++i) std::thread([this] { work(); }).detach();
  }
  void submit(std::function<void()> task) {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      tasks_.push_back(std::move(task));
    }
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

/// The library's number of cores, as it reads them.
int libraryCores() {
  const char* setting = std::getenv("KESH_EMU_CORES");
  int cores = setting != nullptr ? std::atoi(setting) : 0;
  if (cores < 1 || cores > 256) cores = static_cast<int>(std::thread::hardware_concurrency());
  return cores < 1 ? 1 : cores;
}

/// One round trip through the bare pool: queue a task, wait for its flag; microseconds.
double barePoolRoundTrip(BarePool& pool) {
  const auto start = std::chrono::steady_clock::now();
  std::mutex mutex;
  std::condition_variable doneCv;
  bool done = false;
  pool.submit([&] {
    std::lock_guard<std::mutex> lock(mutex);
    done = true;
    doneCv.notify_all();
  });
  std::unique_lock<std::mutex> lock(mutex);
  doneCv.wait(lock, [&] { return done; });
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

/// One play -> wait -> release of `graph`; microseconds.
double jobRoundTrip(_kesh_player* player, _pattern_graph* graph) {
  const auto start = std::chrono::steady_clock::now();
  _pattern_job* job = nullptr;
  playAndWait(player, graph, &job);
  keshDestroyPatternJob(job);
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

// A job and a bare-pool task alternately, so that both see the same load on a
// shared machine; the ratio of their medians is the per-job overhead.
void BM_JobOverheadVsBarePool(benchmark::State& state) {
  static BarePool* pool = new BarePool(libraryCores());  // lives as long as the library's cores do
  _kesh_player* player = keshCreatePlayer("bench");
  _pattern_graph* graph = boundGraph(player, copyPattern(64, 7, 3), 64, {7, 3});
  std::vector<double> jobs, bare;
  for (auto _ : state) {
    jobs.push_back(jobRoundTrip(player, graph));
    bare.push_back(barePoolRoundTrip(*pool));
  }
  state.counters["job_us"] = median(jobs);
  state.counters["bare_us"] = median(bare);
  state.counters["ratio"] = state.counters["job_us"] / state.counters["bare_us"];
}
BENCHMARK(BM_JobOverheadVsBarePool);

void BM_SixtyThreeConvJobs(benchmark::State& state) {
  const uint32_t width = 1920, height = 1080;
  _kesh_player* player = keshCreatePlayer("bench");
  const std::vector<uint8_t> binary = convPattern(width, height);
  std::vector<_pattern_graph*> graphs;
  for (int i = 0; i < 63; ++i) graphs.push_back(boundGraph(player, binary, width * height, {0, 1}));
  for (auto _ : state) {
    std::vector<_pattern_job*> jobs(graphs.size(), nullptr);
    for (size_t i = 0; i < graphs.size(); ++i) keshPlayPatternGraph(player, graphs[i], 0, &jobs[i]);
    for (auto* job : jobs) {
      keshWaitPatternJob(job);
      keshDestroyPatternJob(job);
    }
  }
}
BENCHMARK(BM_SixtyThreeConvJobs)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
