// Cost of the golden comparison against its lower bounds, in the same run: an equal compare
// against memcmp, a fully differing buffer's listing against one fwrite of the same text.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "driver/command_info.h"
#include "driver/diff_listing.h"
#include "random_bytes.h"

#if defined(__GLIBCXX__)
#include <ext/stdio_sync_filebuf.h>
#endif

namespace {

constexpr size_t kSize = 2 * 1024 * 1024;
// A result, a golden equal to it and one differing from it in every byte.
const std::vector<uint8_t> kResult = kesh::bench::randomBytes(kSize, 1), kEqual = kResult,
                           kDiffering = kesh::bench::randomBytes(kSize, 1, 0xff);

// Standard output redirected to a file, as on a test farm; rewound before every write.
FILE* rewoundSink() {
  static FILE* const file = std::tmpfile();
  std::fseek(file, 0, SEEK_SET);
  return file;
}

void BM_CompareGoldenEqual(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(CommandInfo::compareGolden(kResult, kEqual));
}
void BM_MemcmpEqual(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::memcmp(kResult.data(), kEqual.data(), kSize));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_CompareGoldenEqual);
BENCHMARK(BM_MemcmpEqual);

#if defined(__GLIBCXX__)
void BM_CompareGoldenFullMismatch(benchmark::State& state) {
  // The same stdio-backed buffer that standard output uses, aimed at the sink.
  __gnu_cxx::stdio_sync_filebuf<char> buffer(rewoundSink());
  std::streambuf* saved = std::cout.rdbuf(&buffer);
  for (auto _ : state) {
    rewoundSink();
    benchmark::DoNotOptimize(CommandInfo::compareGolden(kResult, kDiffering));
    std::cout.flush();
  }
  std::cout.rdbuf(saved);
}
BENCHMARK(BM_CompareGoldenFullMismatch)->Unit(benchmark::kMillisecond);
#endif

void BM_FwriteSameBytes(benchmark::State& state) {
  std::ostringstream listing;
  printDiffListing(listing, "Result does not match golden data.\nDiff:\n", kResult.data(), kDiffering.data(), kSize);
  const std::string text = listing.str();
  for (auto _ : state) {
    FILE* file = rewoundSink();
    benchmark::DoNotOptimize(std::fwrite(text.data(), 1, text.size(), file));
    std::fflush(file);
  }
}
BENCHMARK(BM_FwriteSameBytes)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
