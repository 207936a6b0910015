// readData against a plain read() loop of the same file, and the cost of
// building command sets from a command file (1,000 and 10,000 lines: the
// time per line stays flat when the growth is linear).
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <fstream>
#include <iostream>
#include <memory>
#include <string>

#include "random_bytes.h"
#include "settings/tester_setting.h"

namespace {

std::string writeFile(const std::string& name, const std::string& content) {
  const std::string path = "/tmp/kesh_settings_bench_" + name;
  std::ofstream(path, std::ios::binary) << content;
  return path;
}

// 0: 64 MB of random bytes; 1: the largest built-in case file (2 MB).
std::string dataFile(int64_t which) {
  if (which == 1) return std::string(KESH_CASE_DATA_DIR) + "/case5_in_GI_65542.bin";
  const std::vector<uint8_t> bytes = kesh::bench::randomBytes(std::size_t{64} << 20, 3);
  return writeFile("random_64M", std::string(bytes.begin(), bytes.end()));
}

// The baseline: read() calls filling one uninitialised buffer of the file's size.
void BM_PlainRead(benchmark::State& state) {
  const std::string path = dataFile(state.range(0));
  for (auto _ : state) {
    const int fd = open(path.c_str(), O_RDONLY);
    struct stat info;
    fstat(fd, &info);
    const auto size = static_cast<std::size_t>(info.st_size);
    std::unique_ptr<uint8_t[]> buffer(new uint8_t[size]);
    ssize_t got = 1;
    for (std::size_t filled = 0; filled < size && got > 0; filled += got > 0 ? static_cast<std::size_t>(got) : 0) {
      got = read(fd, buffer.get() + filled, size - filled);
    }
    close(fd);
    benchmark::DoNotOptimize(buffer.get());
  }
}
BENCHMARK(BM_PlainRead)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_ReadData(benchmark::State& state) {
  const std::string path = dataFile(state.range(0));
  for (auto _ : state) {
    std::vector<uint8_t> bytes = TesterSetting::TestCommand::readData(path.c_str());
    benchmark::DoNotOptimize(bytes.data());
  }
}
BENCHMARK(BM_ReadData)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// Lines as a test farm writes them: a pattern, its data and a few settings.
void BM_CommandFile(benchmark::State& state) {
  const std::string pattern = writeFile("p.bin", std::string(1024, 'p'));
  const std::string input = writeFile("in.bin", std::string(1024, 'i'));
  std::string content;
  for (int64_t i = 0; i < state.range(0); ++i) {
    content += "-f " + pattern + " -i " + input + " -b 50 -c 1 -a 100 -s 50 -g " + std::to_string(i % 8) + "\n";
  }
  const std::string path = writeFile("commands.txt", content);
  char program[] = "kesh_player";
  char* argv[] = {program};
  TesterSetting setting(1, argv);
  std::streambuf* saved = std::cout.rdbuf(nullptr);  // the echo lines are not what is measured
  for (auto _ : state) {
    std::vector<TesterSetting::TestCommand> commands = setting.readCommand(program, path.c_str());
    benchmark::DoNotOptimize(commands.data());
  }
  std::cout.rdbuf(saved);
  state.counters["per_line"] = benchmark::Counter(static_cast<double>(state.range(0)),
                                                  benchmark::Counter::kIsIterationInvariantRate |
                                                      benchmark::Counter::kInvert);
}
BENCHMARK(BM_CommandFile)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
