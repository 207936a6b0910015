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
#include <random>
#include <string>

#include "settings/tester_setting.h"

namespace {

const std::string kScratch = "/tmp/kesh_settings_bench";

std::string writeFile(const std::string& name, const std::string& content) {
  const std::string path = kScratch + "_" + name;
  std::ofstream(path, std::ios::binary) << content;
  return path;
}

std::string randomFile(std::size_t size) {
  std::mt19937 engine(3);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(engine());
  return writeFile("random_" + std::to_string(size), bytes);
}

const std::string& dataFile(int which) {
  static const std::string big = randomFile(std::size_t{64} << 20);
  static const std::string caseFile = std::string(KESH_CASE_DATA_DIR) + "/case5_in_GI_65542.bin";
  return which == 0 ? big : caseFile;
}

// The baseline: read() calls filling one uninitialised buffer of the file's size.
void BM_PlainRead(benchmark::State& state) {
  const std::string& path = dataFile(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    const int fd = open(path.c_str(), O_RDONLY);
    struct stat info;
    fstat(fd, &info);
    const auto size = static_cast<std::size_t>(info.st_size);
    std::unique_ptr<uint8_t[]> buffer(new uint8_t[size]);
    std::size_t filled = 0;
    for (ssize_t got; filled < size && (got = read(fd, buffer.get() + filled, size - filled)) > 0;) {
      filled += static_cast<std::size_t>(got);
    }
    close(fd);
    benchmark::DoNotOptimize(buffer.get());
  }
}
BENCHMARK(BM_PlainRead)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_ReadData(benchmark::State& state) {
  const std::string& path = dataFile(static_cast<int>(state.range(0)));
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
  std::cout.clear();
  state.counters["per_line"] = benchmark::Counter(static_cast<double>(state.range(0)),
                                                  benchmark::Counter::kIsIterationInvariantRate |
                                                      benchmark::Counter::kInvert);
}
BENCHMARK(BM_CommandFile)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
