// The host library's per-job overhead (play to wait of a trivial pattern,
// median) against a bare mutex/condition-variable worker pool with as many
// threads as the library has cores (KESH_EMU_CORES, fixed per process).
#include <benchmark/benchmark.h>

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
  const int cores = std::getenv("KESH_EMU_CORES") != nullptr ? std::atoi(std::getenv("KESH_EMU_CORES")) : 0;
  return cores >= 1 && cores <= 256 ? cores : std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

/// How long `body` takes, in microseconds.
template <typename Body>
double micros(Body body) {
  const auto start = std::chrono::steady_clock::now();
  body();
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

/// One round trip through the bare pool: queue a task, wait for its flag.
void barePoolRoundTrip(BarePool& pool) {
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
}

// A job and a bare-pool task alternately, so that both see the same load on a
// shared machine; the ratio of their medians is the per-job overhead.
void BM_JobOverheadVsBarePool(benchmark::State& state) {
  static BarePool* pool = new BarePool(libraryCores());  // lives as long as the library's cores do
  _kesh_player* player = keshCreatePlayer("bench");
  _pattern_node_handle* node = nullptr;
  _pattern_graph* graph = singleNodeGraph(player, loadPattern(player, copyPattern(64, 7, 3)), &node);
  bindFilled(player, node, 7, 64, 7);
  bindFilled(player, node, 3, 64, 0);
  std::vector<double> jobs, bare;
  for (auto _ : state) {
    jobs.push_back(micros([&] {  // play -> wait -> release
      _pattern_job* job = nullptr;
      playAndWait(player, graph, &job);
      keshDestroyPatternJob(job);
    }));
    bare.push_back(micros([&] { barePoolRoundTrip(*pool); }));
  }
  state.counters["job_us"] = median(jobs);
  state.counters["bare_us"] = median(bare);
  state.counters["ratio"] = state.counters["job_us"] / state.counters["bare_us"];
}
BENCHMARK(BM_JobOverheadVsBarePool);

}  // namespace

BENCHMARK_MAIN();
