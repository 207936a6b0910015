// Cost of the golden comparison against its lower bounds: an equal compare
// against memcmp, and the listing of a fully differing buffer against one
// fwrite of the same number of bytes to the same sink.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "driver/command_info.h"
#include "driver/diff_listing.h"

#if defined(__GLIBCXX__)
#include <ext/stdio_sync_filebuf.h>
#endif

namespace {

constexpr size_t kBufferSize = 2 * 1024 * 1024;

std::vector<uint8_t> pseudoRandomBytes(size_t size, uint32_t seed) {
  std::vector<uint8_t> bytes(size);
  for (size_t i = 0; i < size; ++i) {
    seed = seed * 1664525u + 1013904223u;
    bytes[i] = static_cast<uint8_t>(seed >> 24);
  }
  return bytes;
}

void BM_CompareGoldenEqual(benchmark::State& state) {
  const std::vector<uint8_t> result = pseudoRandomBytes(kBufferSize, 1);
  const std::vector<uint8_t> golden = result;
  for (auto _ : state) benchmark::DoNotOptimize(CommandInfo::compareGolden(result, golden));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kBufferSize);
}
BENCHMARK(BM_CompareGoldenEqual);

void BM_MemcmpEqual(benchmark::State& state) {
  const std::vector<uint8_t> result = pseudoRandomBytes(kBufferSize, 1);
  const std::vector<uint8_t> golden = result;
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::memcmp(result.data(), golden.data(), result.size()));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kBufferSize);
}
BENCHMARK(BM_MemcmpEqual);

// Both listing benchmarks write to one temporary file, rewound before every
// write, as standard output redirected to a file on a test farm.
class Sink {
 public:
  Sink() : file_(std::tmpfile()) {}
  ~Sink() {
    if (file_ != nullptr) std::fclose(file_);
  }
  FILE* rewound() {
    std::fseek(file_, 0, SEEK_SET);
    return file_;
  }
  FILE* file() { return file_; }

 private:
  FILE* file_;
};

std::vector<uint8_t> complement(const std::vector<uint8_t>& bytes) {
  std::vector<uint8_t> out(bytes.size());
  for (size_t i = 0; i < bytes.size(); ++i) out[i] = static_cast<uint8_t>(~bytes[i]);
  return out;
}

size_t listingBytes(const std::vector<uint8_t>& result, const std::vector<uint8_t>& golden) {
  std::string text = "Result does not match golden data.\nDiff:\n";
  appendDiffListing(text, result.data(), golden.data(), result.size());
  return text.size();
}

void BM_CompareGoldenFullMismatch(benchmark::State& state) {
  const std::vector<uint8_t> result = pseudoRandomBytes(kBufferSize, 2);
  const std::vector<uint8_t> golden = complement(result);
  Sink sink;
#if defined(__GLIBCXX__)
  // The same stdio-backed buffer that standard output uses, aimed at the sink.
  __gnu_cxx::stdio_sync_filebuf<char> buffer(sink.file());
  std::streambuf* saved = std::cout.rdbuf(&buffer);
#endif
  for (auto _ : state) {
    sink.rewound();
    benchmark::DoNotOptimize(CommandInfo::compareGolden(result, golden));
    std::cout.flush();
  }
#if defined(__GLIBCXX__)
  std::cout.rdbuf(saved);
#endif
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * listingBytes(result, golden)));
}
BENCHMARK(BM_CompareGoldenFullMismatch)->Unit(benchmark::kMillisecond);

void BM_FwriteSameBytes(benchmark::State& state) {
  const std::vector<uint8_t> result = pseudoRandomBytes(kBufferSize, 2);
  const std::string text(listingBytes(result, complement(result)), 'f');
  Sink sink;
  for (auto _ : state) {
    FILE* file = sink.rewound();
    benchmark::DoNotOptimize(std::fwrite(text.data(), 1, text.size(), file));
    std::fflush(file);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_FwriteSameBytes)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
