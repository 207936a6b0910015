// Host library costs: the per-job overhead (play to wait of a trivial
// pattern) and 63 compute-heavy jobs in flight. The number of cores is fixed
// per process (KESH_EMU_CORES); runtime_scaling.sh runs this with 1 core and
// with all cores to show how the 63 jobs scale.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <cstring>
#include <vector>

#include "driver/kesh_pattern.h"
#include "format/program.h"
#include "format/writer.h"

namespace {

using kesh::format::Opcode;

uint32_t argRef(uint32_t position) { return kesh::format::bufferRef(kesh::format::Space::kArg, position); }

kesh::format::Op makeOp(Opcode opcode, std::vector<uint32_t> params) {
  kesh::format::Op op;
  op.opcode = opcode;
  std::copy(params.begin(), params.end(), op.p.begin());
  return op;
}

std::vector<uint8_t> copyPattern(uint32_t size) {
  kesh::format::Program program;
  program.args = {{0, size, false, "in"}, {1, size, false, "out"}};
  program.ops = {makeOp(Opcode::kCopy, {argRef(1), 0, argRef(0), 0, size})};
  return kesh::format::encodePattern(program);
}

std::vector<uint8_t> convPattern(uint32_t width, uint32_t height) {
  kesh::format::Program program;
  program.args = {{0, width * height, false, "src"}, {1, width * height, false, "dst"}};
  program.constData.assign(50, 0);
  for (size_t i = 0; i < 25; ++i) program.constData[2 * i] = 1;
  program.ops = {makeOp(Opcode::kConv2D, {argRef(1), 0, width, argRef(0), 0, width, width, height, 0, height,
                                          kesh::format::bufferRef(kesh::format::Space::kConst, 0), 0, 5, 5, 0})};
  return kesh::format::encodePattern(program);
}

/// A built one-node graph of `binary` with `memSize`-byte memory on both arguments (0 and 1).
_pattern_graph* oneNodeGraph(_kesh_player* player, const std::vector<uint8_t>& binary, uint32_t memSize) {
  _pattern* pattern = keshCreatePattern(player, binary.data(), static_cast<uint32_t>(binary.size()), "bench");
  _pattern_graph* graph = keshCreatePatternGraph(player, "bench");
  _pattern_node_handle* node = nullptr;
  keshAddPattern(graph, pattern, 0, 0, &node, "bench");
  keshBuildPatternGraph(graph);
  for (uint32_t index = 0; index < 2; ++index) {
    _kesh_mem* mem = keshCreateMem(player, memSize, "arg");
    std::memset(keshMapMem(mem), 7, memSize);
    keshFlushMem(mem);
    keshSetPatternNodeArg(node, index, mem, memSize);
  }
  keshUpdatePatternNode(node);
  return graph;
}

double medianOf(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
  return values[values.size() / 2];
}

// Baseline for the per-job overhead: the bare round trip to a waiting thread
// and back (mutex + condition variable), which any play-then-wait must pay.
void BM_ThreadRoundTripBaseline(benchmark::State& state) {
  std::mutex mutex;
  std::condition_variable wake;
  int posted = 0, done = 0;
  bool stop = false;
  std::thread worker([&] {
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
      wake.wait(lock, [&] { return stop || posted > done; });
      if (stop) return;
      ++done;
      wake.notify_all();
    }
  });
  std::vector<double> micros;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    std::unique_lock<std::mutex> lock(mutex);
    ++posted;
    wake.notify_all();
    wake.wait(lock, [&] { return done == posted; });
    lock.unlock();
    micros.push_back(std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count());
  }
  {
    std::lock_guard<std::mutex> lock(mutex);
    stop = true;
  }
  wake.notify_all();
  worker.join();
  state.counters["median_us"] = medianOf(micros);
}
BENCHMARK(BM_ThreadRoundTripBaseline);

void BM_JobOverhead(benchmark::State& state) {
  _kesh_player* player = keshCreatePlayer("bench");
  _pattern_graph* graph = oneNodeGraph(player, copyPattern(64), 64);
  std::vector<double> micros;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    _pattern_job* job = nullptr;
    keshPlayPatternGraph(player, graph, 0, &job);
    keshWaitPatternJob(job);
    micros.push_back(std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count());
    keshDestroyPatternJob(job);
  }
  state.counters["median_us"] = medianOf(micros);
}
BENCHMARK(BM_JobOverhead);

void BM_SixtyThreeConvJobs(benchmark::State& state) {
  const uint32_t width = 1920, height = 1080;
  _kesh_player* player = keshCreatePlayer("bench");
  std::vector<uint8_t> binary = convPattern(width, height);
  std::vector<_pattern_graph*> graphs;
  for (int i = 0; i < 63; ++i) graphs.push_back(oneNodeGraph(player, binary, width * height));
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
