// Host library costs: the per-job overhead (play to wait of a trivial
// pattern, median) and 63 compute-heavy jobs in flight. The number of cores
// is fixed per process (KESH_EMU_CORES); runtime_scaling.sh runs this with 1
// core and with all cores.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <initializer_list>
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

void BM_JobOverhead(benchmark::State& state) {
  _kesh_player* player = keshCreatePlayer("bench");
  _pattern_graph* graph = boundGraph(player, copyPattern(64, 7, 3), 64, {7, 3});
  std::vector<double> micros;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    _pattern_job* job = nullptr;
    playAndWait(player, graph, &job);
    keshDestroyPatternJob(job);
    micros.push_back(std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count());
  }
  std::nth_element(micros.begin(), micros.begin() + micros.size() / 2, micros.end());
  state.counters["median_us"] = micros[micros.size() / 2];
}
BENCHMARK(BM_JobOverhead);

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
