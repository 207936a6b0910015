// readData of a 64 MB file against read() calls filling a fresh buffer: the ratio is the figure.
#include <fcntl.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <fstream>
#include <memory>
#include <string>

#include "random_bytes.h"
#include "settings/tester_setting.h"

namespace {

constexpr std::size_t kSize = std::size_t{64} << 20;

const char* dataFile() {
  static const std::string path = [] {
    const std::vector<uint8_t> bytes = kesh::bench::randomBytes(kSize, 3);
    const std::string made = "/tmp/kesh_settings_bench_random_64M";
    std::ofstream(made, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), kSize);
    return made;
  }();
  return path.c_str();
}

void BM_PlainRead(benchmark::State& state) {
  for (auto _ : state) {
    const int fd = open(dataFile(), O_RDONLY);
    std::unique_ptr<uint8_t[]> buffer(new uint8_t[kSize]);
    for (ssize_t filled = 0, got = 1; filled < ssize_t{kSize} && got > 0; filled += got) {
      got = read(fd, buffer.get() + filled, kSize - filled);
    }
    close(fd);
    benchmark::DoNotOptimize(buffer.get());
  }
}
BENCHMARK(BM_PlainRead)->Unit(benchmark::kMillisecond);

void BM_ReadData(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(TesterSetting::TestCommand::readData(dataFile()).data());
}
BENCHMARK(BM_ReadData)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
