// kesh_check on N lines naming case 5's 2 MB input and golden against the tool's own set-up (which
// reads every file) of the same lines; and the checker's rate at 1,000 against 10,000 lines.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "check/checker.h"
#include "settings/tester_setting.h"

namespace {

// `lines` lines in a scratch folder made the working folder, with case 5's files under their argument names.
std::string commandFile(int64_t lines) {
  namespace fs = std::filesystem;
  const fs::path dir = fs::temp_directory_path() / "kesh_check_bench", data = KESH_CASE_DATA_DIR;
  fs::create_directories(dir);
  fs::current_path(dir);
  fs::copy_file(data / "case5_in_GI_65542.bin", "GI_65542.bin", fs::copy_options::overwrite_existing);
  fs::copy_file(data / "case5_golden_GO_65548.bin", "GO_65548.bin", fs::copy_options::overwrite_existing);
  const std::string file = "commands_" + std::to_string(lines) + ".txt";
  std::ofstream out(file);
  for (int64_t i = 0; i < lines; ++i)
    out << "-f " KESH_CASE_DATA_DIR "/case5_pattern.bin -i GI_65542.bin -o GO_65548.bin\n";
  return file;
}

void BM_Check(benchmark::State& state) {
  kesh::check::CheckOptions options;
  options.cores = 4;
  options.playerArgs = {"--command", commandFile(state.range(0))};
  for (auto _ : state) {
    kesh::check::Diagnostics findings;
    std::string why;
    if (kesh::check::collectFindings(options, findings, why) != 0) state.SkipWithError("the command file is not clean");
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Check)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// The tool keeps every file's bytes, so it is measured on fewer lines.
void BM_ToolSetUp(benchmark::State& state) {
  std::string name = "kesh_player", option = "--command", path = commandFile(state.range(0));
  char* argv[] = {name.data(), option.data(), path.data(), nullptr};
  std::streambuf* saved = std::cout.rdbuf(nullptr);  // the set-up echoes every option
  for (auto _ : state) benchmark::DoNotOptimize(TesterSetting(3, argv).loopCount);
  std::cout.rdbuf(saved);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ToolSetUp)->Arg(100)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
