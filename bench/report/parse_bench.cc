// Reading the tool's output is linear in its size: logs of 1, 10 and 100 MB of runs with
// timing lines, verdicts and diff listings, read in the chunks a pipe delivers.
#include <benchmark/benchmark.h>

#include <string>

#include "report/output_parser.h"

namespace {

// Runs of one execution whose 16-byte "out" differs in every fourth byte, up to `bytes`.
std::string benchLog(size_t bytes) {
  std::string log;
  for (int run = 1; log.size() < bytes; ++run) {
    const std::string prefix = "[" + std::to_string(run) + "] ";
    log += prefix +
           "Test pattern start...\nRunning command: -f a.bin\nExecution info of command: -f a.bin\n"
           "    IP time of sub-command 0: 120 us\n    Driver time of sub-command 0: 30 us\n"
           "    Timestamp start of sub-command 0: 1000\n    Timestamp end of sub-command 0: 1150\n"
           "Result does not match golden data.\nDiff:\n5a 0 0 0  5a 0 0 0  5a 0 0 0  5a 0 0 0 \n"
           "Test failed for argument out\n" + prefix + "Test pattern passed!!!\n";
  }
  return log;
}

void BM_ReadLog(benchmark::State& state) {
  // One command set run with -l -1, so that every line carries its run's number.
  const kesh::report::Plan plan{{{"sets.txt:1", "-f a.bin", {{"a.bin", {{"out", 16, ""}}, true}}}}, {{0}}, -1};
  const std::string log = benchLog(static_cast<size_t>(state.range(0)) << 20);
  constexpr size_t kChunk = 1 << 16;
  for (auto _ : state) {
    kesh::report::OutputParser parser(plan);
    for (size_t at = 0; at < log.size(); at += kChunk)
      parser.feedStdout(log.data() + at, std::min(kChunk, log.size() - at));
    parser.finish(0, 0);
    benchmark::DoNotOptimize(parser.results().runs.size());
  }
  state.SetComplexityN(static_cast<int64_t>(log.size()));
}
BENCHMARK(BM_ReadLog)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond)->Complexity(benchmark::oN);

}  // namespace

BENCHMARK_MAIN();
