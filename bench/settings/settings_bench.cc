// readData of a 64 MB file against read() calls filling a fresh buffer: the ratio is the figure.
#include <fcntl.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <fstream>
#include <memory>
#include <string>

#include "settings/tester_setting.h"

namespace {

constexpr ssize_t kSize = ssize_t{64} << 20;
const std::string kFile = "/tmp/kesh_settings_bench_64M";
[[maybe_unused]] const bool kWritten = bool(std::ofstream(kFile, std::ios::binary) << std::string(kSize, '\x5a'));

void BM_PlainRead(benchmark::State& state) {
  for (auto _ : state) {
    const int fd = open(kFile.c_str(), O_RDONLY);
    std::unique_ptr<uint8_t[]> buffer(new uint8_t[kSize]);
    if (read(fd, buffer.get(), kSize) != kSize) state.SkipWithError("short read");  // one call reads a whole file
    close(fd);
  }
}
BENCHMARK(BM_PlainRead)->Unit(benchmark::kMillisecond);

void BM_ReadData(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(TesterSetting::TestCommand::readData(kFile.c_str()).data());
}
BENCHMARK(BM_ReadData)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
