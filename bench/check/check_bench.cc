// A command file of N lines, each naming a 2 MB pattern input and golden
// (built-in case 5's files): kesh_check over it, and the tool's own set-up
// (TesterSetting, which reads every file) over it. Compare the per-line
// times (items per second) and the checker's growth from 1,000 to 10,000 lines.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "check/checker.h"
#include "settings/tester_setting.h"

namespace {

namespace fs = std::filesystem;

// A scratch folder with the case's files under their argument names and a
// command file of `lines` identical lines.
std::string commandFile(int64_t lines) {
  static const fs::path dir = [] {
    fs::path made = fs::temp_directory_path() / "kesh_check_bench";
    fs::create_directories(made);
    const fs::path data = KESH_CASE_DATA_DIR;
    fs::copy_file(data / "case5_pattern.bin", made / "p.bin", fs::copy_options::overwrite_existing);
    fs::copy_file(data / "case5_in_GI_65542.bin", made / "GI_65542.bin", fs::copy_options::overwrite_existing);
    fs::copy_file(data / "case5_golden_GO_65548.bin", made / "GO_65548.bin", fs::copy_options::overwrite_existing);
    return made;
  }();
  const fs::path file = dir / ("commands_" + std::to_string(lines) + ".txt");
  if (!fs::exists(file)) {
    std::ofstream out(file);
    const std::string at = dir.string() + "/";
    for (int64_t i = 0; i < lines; ++i) {
      out << "-f " << at << "p.bin -i " << at << "GI_65542.bin -o " << at << "GO_65548.bin -o " << at
          << "GI_65542.bin\n";
    }
  }
  return file.string();
}

void BM_Check(benchmark::State& state) {
  kesh::check::CheckOptions options;
  options.cores = 4;
  options.playerArgs = {"--command", commandFile(state.range(0))};
  for (auto _ : state) {
    kesh::check::Diagnostics findings;
    std::string why;
    const int status = kesh::check::collectFindings(options, findings, why);
    if (status != 0) state.SkipWithError("the command file is not clean");
    benchmark::DoNotOptimize(findings);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Check)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// The tool keeps every file's bytes for the whole run, so its set-up is
// measured on fewer lines; the per-line rate is what compares.
void BM_ToolSetUp(benchmark::State& state) {
  const std::string file = commandFile(state.range(0));
  char name[] = "kesh_player";
  char option[] = "--command";
  std::string path = file;
  char* argv[] = {name, option, path.data(), nullptr};
  std::streambuf* saved = std::cout.rdbuf(nullptr);  // the set-up echoes every option
  for (auto _ : state) {
    TesterSetting setting(3, argv);
    benchmark::DoNotOptimize(setting);
  }
  std::cout.rdbuf(saved);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ToolSetUp)->Arg(100)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
