#include "report/report_main.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

#include "report/child_run.h"
#include "report/html_writer.h"
#include "report/json_writer.h"
#include "report/junit_writer.h"
#include "report/library_probe.h"
#include "report/output_parser.h"
#include "report/plan.h"
#include "report/progress.h"
#include "report/provenance.h"
#include "report/report_options.h"
#include "report/timing_stats.h"

extern char** environ;

namespace kesh::report {

namespace {

constexpr int kReportFailed = 2;

int complain(const std::string& why) {
  std::cerr << "kesh_report: " << why << '\n';
  return kReportFailed;
}

// Opens every requested result file now, so that a path that cannot be written
// is reported before the tool runs for hours.
bool openOutputs(const ReportOptions& options, std::vector<std::unique_ptr<std::ofstream>>& files, std::string& why) {
  for (const std::string* path : {&options.junit, &options.json, &options.csv, &options.html}) {
    files.push_back(nullptr);
    if (path->empty()) continue;
    files.back() = std::make_unique<std::ofstream>(*path, std::ios::binary | std::ios::trunc);
    if (!*files.back()) {
      why = "cannot write '" + *path + "': " + std::strerror(errno);
      return false;
    }
  }
  return true;
}

// The program as execve needs it: a word without a slash is looked up in PATH.
std::string programPath(const std::string& word) {
  if (word.find('/') != std::string::npos) return word;
  const char* path = std::getenv("PATH");
  std::istringstream folders(path != nullptr ? path : "/usr/bin:/bin");
  std::string folder;
  while (std::getline(folders, folder, ':')) {
    const std::string candidate = (folder.empty() ? "." : folder) + "/" + word;
    if (access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return word;
}

// The library's fault injection and call trace are meant for the tool: the report's
// own look at the patterns must neither fail nor write a trace.
void keepLibrarySettingsForTheTool() {
  unsetenv("KESH_EMU_FAIL");
  unsetenv("KESH_EMU_TRACE");
}

bool readLog(const std::string& path, OutputParser& parser, std::string& why) {
  std::ifstream log(path, std::ios::binary);
  if (!log) {
    why = "cannot read log '" + path + "': " + std::strerror(errno);
    return false;
  }
  std::vector<char> buffer(1 << 16);
  while (log.read(buffer.data(), static_cast<std::streamsize>(buffer.size())) || log.gcount() > 0) {
    parser.feedLog(buffer.data(), static_cast<size_t>(log.gcount()));
  }
  return true;
}

bool looksLikeToolOutput(const Results& results) {
  return !results.runs.empty() || results.helpShown || !results.fatal.empty() || results.unknown.empty();
}

void writeResults(const ReportOptions& options, std::vector<std::unique_ptr<std::ofstream>>& files, const Plan& plan,
                  const Results& results, const Provenance& provenance) {
  if (files[0]) *files[0] << junitXml(plan, results);
  if (files[1]) *files[1] << resultsJson(plan, results, provenance);
  const std::vector<PatternStats> stats = patternStats(plan, results);
  if (files[2]) writeStatsCsv(*files[2], stats);
  if (files[3]) *files[3] << resultsHtml(plan, results, provenance);
  const char* names[] = {options.junit.c_str(), options.json.c_str(), options.csv.c_str(), options.html.c_str()};
  for (size_t k = 0; k < files.size(); ++k) {
    if (files[k] && !files[k]->flush()) complain(std::string("could not finish writing '") + names[k] + "'");
  }
  bool timed = false;
  for (const PatternStats& entry : stats) timed = timed || entry.ip.count > 0;
  if (!timed) return;
  std::cerr << "kesh_report: times per pattern in microseconds\n";
  writeStatsTable(std::cerr, stats);
}

}  // namespace

int reportMain(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
    std::cout << reportUsage();
    return 0;
  }
  ReportOptions options;
  std::string why;
  if (!parseReportOptions(std::vector<std::string>(argv + 1, argv + argc), options, why)) {
    std::cerr << "kesh_report: " << why << '\n' << reportUsage();
    return kReportFailed;
  }
  std::vector<std::unique_ptr<std::ofstream>> files;
  if (!openOutputs(options, files, why)) return complain(why);

  std::vector<std::string> env;
  for (char** entry = environ; *entry != nullptr; ++entry) env.emplace_back(*entry);
  keepLibrarySettingsForTheTool();
  const Plan plan = planOf(std::vector<std::string>(options.tool.begin() + 1, options.tool.end()));

  Provenance provenance = collectProvenance(env);
  provenance.commandLine = options.tool;
  provenance.log = options.log;
  OutputParser parser(plan);
  const std::string program = programPath(options.tool[0]);

  if (!options.log.empty()) {
    if (!readLog(options.log, parser, why)) return complain(why);
    const int signal = options.status > 128 ? options.status - 128 : 0;
    parser.finish(options.status, signal);
    if (!looksLikeToolOutput(parser.results())) {
      return complain("'" + options.log + "' is not kesh_player's output: no line of it is");
    }
  } else {
    Progress progress(isatty(2) == 1, plan.help ? 0 : plan.loopCount);
    std::string mapped;
    int lookups = 0;  // the loader maps the library before the tool's first line: a few looks suffice
    constexpr int kMaxLookups = 16;
    ChildListener listener;
    listener.stdoutChunk = [&](const char* data, size_t size) { parser.feedStdout(data, size); };
    listener.stderrChunk = [&](const char* data, size_t size) { parser.feedStderr(data, size); };
    listener.beforeWrite = [&] { progress.erase(); };
    listener.wokeUp = [&](pid_t pid) {
      if (mapped.empty() && lookups++ < kMaxLookups) mapped = mappedLibrary(pid);
      progress.update(parser.results());
    };
    std::vector<std::string> argvWords = options.tool;
    argvWords[0] = program;
    const ChildEnd end = runChild(argvWords, env, listener);
    progress.erase();
    if (!end.why.empty()) return complain("cannot run '" + options.tool[0] + "': " + end.why);
    parser.finish(end.status, end.signal);
    if (!mapped.empty()) provenance.library = describeLibrary(mapped, "process map");
  }
  if (provenance.library.path.empty()) {
    const std::string resolved = resolvedLibrary(program, env);
    if (!resolved.empty()) provenance.library = describeLibrary(resolved, "loader resolution");
  }
  writeResults(options, files, plan, parser.results(), provenance);
  return parser.results().status;
}

}  // namespace kesh::report
