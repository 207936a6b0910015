// kesh_report around the real tool on real command files: the tool's output
// passes through unchanged (times aside, which differ between any two runs),
// its status is returned, the JUnit XML is valid against the format's schema
// and counts what happened, the JSON parses and names the library that ran;
// and every line the tool printed is one the output grammar knows.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "e2e_config.h"
#include "player_test.h"
#include "report_config.h"
#include "testing/child_process.h"
#include "testing/read_file.h"

namespace kesh::testing {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;  // the sanitizers own SIGSEGV: a crash ends in their report instead
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
#else
constexpr bool kSanitized = false;
#endif

struct Case {
  const char* label;
  std::vector<std::string> args;  // kesh_player's
  std::string failing;            // KESH_EMU_FAIL
  int status;                     // the tool's own
  // JUnit counts over all suites.
  int suites, tests, failures, errors, skipped;
  std::vector<std::string> caseNames;  // some test case names that must be there
  bool shuffled = false;               // -r: groups print in a random order
};

const std::vector<std::string> kCopy = {"-f", "copy.bin", "-i", "in.bin", "-o", "out.bin"};

std::vector<std::string> with(std::vector<std::string> args, const std::vector<std::string>& more) {
  args.insert(args.end(), more.begin(), more.end());
  return args;
}

// Per execution: one case for it, one skipped ("in" has no golden), one compared ("out").
const Case kCases[] = {
    {"Passing", kCopy, "", 0, 1, 3, 0, 0, 1, {"&lt;command line&gt;", "&lt;command line&gt; copy.bin out"}},
    {"FailingWithDiff",
     {"-f", "copy.bin", "-i", "in.bin", "-o", "flipped/out.bin"},
     "",
     255,
     1,
     3,
     1,
     0,
     1,
     {"&lt;command line&gt; copy.bin out"}},
    {"FatalLibraryFailure", kCopy, "keshPlayPatternGraph@1", 1, 1, 2, 0, 2, 0, {"run 1 end"}},
    {"Crash", {"-f", "copy.bin", "-i", "long/in.bin", "-o", "out.bin"}, "", 139, 1, 2, 0, 2, 0, {"run 1 end"}},
    {"Loops", with(kCopy, {"-l", "3"}), "", 0, 3, 9, 0, 0, 3, {}},
    {"Groups", {"--command", "grouped.txt"}, "", 0, 1, 6, 0, 0, 2, {"grouped.txt:1", "grouped.txt:2 copy.bin out"}},
    {"ShuffledGroups",
     {"--command", "grouped.txt", "--command", "single.txt", "-r", "-l", "2"},
     "",
     0,
     2,
     18,
     0,
     0,
     6,
     {"single.txt:1", "grouped.txt:2"},
     true},
    {"SetUpFault", {"-f", "missing.bin"}, "", 1, 1, 1, 0, 1, 0, {"set-up"}},
    {"Help", {"-h"}, "", 0, 0, 0, 0, 0, 0, {}},
};

// Numbers that differ from one run to the next.
std::string maskTimes(const std::string& out) {
  static const std::regex kVarying(
      "((time|Timestamp start|Timestamp end) of sub-command [0-9]+: |Random boost value: )-?[0-9]+");
  return std::regex_replace(out, kVarying, "$1#");
}

// `text` as it is, or its lines sorted.
std::string inOrder(const std::string& text, bool sorted) {
  if (!sorted) return text;
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  std::sort(lines.begin(), lines.end());
  std::string all;
  for (const std::string& line : lines) all += line + "\n";
  return all;
}

int attribute(const std::string& xml, const std::string& name) {
  std::smatch match;
  const std::regex pattern("<testsuites[^>]* " + name + "=\"([0-9]+)\"");
  return std::regex_search(xml, match, pattern) ? std::stoi(match[1]) : -1;
}

// A launcher (an emulator for a cross build) would have to stand between the report
// and the tool it starts as well; these tests run where programs start natively.
bool launched() { return kLauncher[0] != nullptr; }

class Report : public PlayerTest, public ::testing::WithParamInterface<Case> {
 protected:
  void SetUp() override {
    if (launched()) GTEST_SKIP() << "programs start through a launcher";
    writeCopyCase(16);
    std::vector<uint8_t> flipped = readFileBytes(dir_ + "/out.bin");
    flipped[3] ^= 0x5a;
    flipped[9] ^= 0x01;
    writeFile("flipped/out.bin", flipped);
    writeFile("long/in.bin", std::vector<uint8_t>(4 << 20));  // far past the buffer: the tool crashes
    writeText("grouped.txt", "-f copy.bin -i in.bin -o out.bin -g 1\n-f copy.bin -i in.bin -o out.bin -g 1\n");
    writeText("single.txt", "-f copy.bin -i in.bin -o out.bin\n");
  }

  ChildResult start(const std::vector<std::string>& argv, const std::string& failing) {
    ChildTask task;
    task.argv = argv;
    task.dir = dir_;
    task.env = {{"KESH_EMU_FAIL", failing.empty() ? std::nullopt : std::optional<std::string>(failing)},
                {"KESH_EMU_CORES", std::string("4")}};
    return runChild(task);
  }
};

int statusOf(const ChildResult& result) { return result.signal != 0 ? 128 + result.signal : result.status; }

TEST_P(Report, PassesThroughAndWritesResults) {
  const Case& row = GetParam();
  if (kSanitized && row.status > 128) GTEST_SKIP() << "the sanitizers report the fault themselves";
  const ChildResult direct = start(with({KESH_PLAYER_PATH}, row.args), row.failing);
  ASSERT_EQ(statusOf(direct), row.status) << direct.err;
  const ChildResult report = start(with({KESH_REPORT_PATH, "--junit", "r.xml", "--json", "r.json", "--csv", "r.csv",
                                         "--html", "r.html", "--", KESH_PLAYER_PATH},
                                        row.args),
                                   row.failing);

  EXPECT_EQ(statusOf(report), row.status) << report.err;
  // Shuffled groups print in an order of their own on every run: then only the lines must agree.
  EXPECT_EQ(inOrder(maskTimes(report.out), row.shuffled), inOrder(maskTimes(direct.out), row.shuffled));
  // The tool's standard error, then (when anything was timed) the report's table.
  ASSERT_EQ(report.err.substr(0, direct.err.size()), direct.err);
  const std::string added = report.err.substr(direct.err.size());
  EXPECT_TRUE(added.empty() || added.rfind("kesh_report: times per pattern", 0) == 0) << added;

  const std::string xml = readFile(dir_ + "/r.xml");
  ChildTask lintTask;
  lintTask.argv = {"xmllint", "--noout", "--schema", KESH_JUNIT_XSD, dir_ + "/r.xml"};
  const ChildResult lint = runChild(lintTask);
  EXPECT_EQ(lint.status, 0) << lint.err << xml;
  EXPECT_EQ(attribute(xml, "tests"), row.tests) << xml;
  EXPECT_EQ(attribute(xml, "failures"), row.failures) << xml;
  EXPECT_EQ(attribute(xml, "errors"), row.errors) << xml;
  EXPECT_EQ(attribute(xml, "skipped"), row.skipped) << xml;
  for (const std::string& name : row.caseNames)
    EXPECT_NE(xml.find("name=\"" + name + "\""), std::string::npos) << name << "\n" << xml;

  const nlohmann::json json = nlohmann::json::parse(readFile(dir_ + "/r.json"));
  EXPECT_EQ(json["exit_status"], row.status);
  EXPECT_EQ(json["runs"].size(), static_cast<size_t>(row.suites - (row.status == 1 && json["runs"].empty() ? 1 : 0)));
  EXPECT_EQ(json["unknown_lines"].size(), 0u) << json["unknown_lines"].dump();
  const std::string library = json["provenance"]["library"]["path"];
  EXPECT_NE(library.find("libkesh_pattern_25.so"), std::string::npos) << library;
  EXPECT_EQ(json["provenance"]["library"]["host_library"], true);
  EXPECT_EQ(json["provenance"]["library"]["build_id"].get<std::string>().size(), 40u);
  EXPECT_NE(readFile(dir_ + "/r.html").find("</html>"), std::string::npos);
  EXPECT_EQ(readFile(dir_ + "/r.csv").rfind("pattern,time,count,", 0), 0u);
}

// The direct run's output, both streams in one log, read back: no line is outside the grammar.
TEST_P(Report, EveryLineOfTheToolIsInTheGrammar) {
  const Case& row = GetParam();
  if (kSanitized && row.status > 128) GTEST_SKIP() << "the sanitizers report the fault themselves";
  const ChildResult direct = start(with({KESH_PLAYER_PATH}, row.args), row.failing);
  writeText("direct.log", direct.out + direct.err);
  const ChildResult report =
      start(with({KESH_REPORT_PATH, "--log", "direct.log", "--status", std::to_string(statusOf(direct)), "--json",
                  "log.json", "--", KESH_PLAYER_PATH},
                 row.args),
            "");
  EXPECT_EQ(statusOf(report), statusOf(direct)) << report.err;
  const nlohmann::json json = nlohmann::json::parse(readFile(dir_ + "/log.json"));
  EXPECT_EQ(json["unknown_lines"].size(), 0u) << json["unknown_lines"].dump();
}

// More of the tool's lines: echoes of every setting, random boosts, packs, notices and
// each kind of fatal line, read back through the grammar.
struct LineCase {
  const char* label;
  std::vector<std::string> args;
  std::string failing;  // KESH_EMU_FAIL
  std::string printed;  // a line the row is there for
  size_t fatalLines;    // how many of them end the tool
};

class Grammar : public PlayerTest, public ::testing::WithParamInterface<LineCase> {
 protected:
  void SetUp() override {
    if (launched()) GTEST_SKIP() << "programs start through a launcher";
  }
};

TEST_P(Grammar, EveryLineOfTheToolIsKnown) {
  const LineCase& row = GetParam();
  writeCopyCase(16);
  writeText("unknown.txt", "-f copy.bin -x\n");
  writeText("loop64.txt", "-f copy.bin -i in.bin -o out.bin -g 1 -l 64\n");
  writeText("big.txt", "-f copy.bin -i in.bin -o out.bin -g 1 -l 40\n-f copy.bin -i in.bin -o out.bin -g 1 -l 40\n");
  ChildTask task;
  task.argv = with({KESH_PLAYER_PATH}, row.args);
  task.dir = dir_;
  task.env = {{"KESH_EMU_FAIL", row.failing.empty() ? std::nullopt : std::optional<std::string>(row.failing)}};
  const ChildResult direct = runChild(task);
  const std::string both = direct.out + direct.err;
  EXPECT_NE(both.find(row.printed), std::string::npos) << both;
  writeText("direct.log", both);
  task.argv = with({KESH_REPORT_PATH, "--log", "direct.log", "--status", std::to_string(statusOf(direct)), "--json",
                    "log.json", "--", KESH_PLAYER_PATH},
                   row.args);
  task.env = {{"KESH_EMU_FAIL", std::nullopt}};
  runChild(task);
  const nlohmann::json json = nlohmann::json::parse(readFile(dir_ + "/log.json"));
  EXPECT_EQ(json["unknown_lines"].size(), 0u) << json["unknown_lines"].dump();
  EXPECT_EQ(json["fatal"].size(), row.fatalLines) << json["fatal"].dump();
}

const LineCase kLineCases[] = {
    {"EverySetting", with(kCopy, {"-b", "-1", "-c", "0", "-a", "100000", "-s", "50000", "--session_reused"}), "",
     "Random boost value: ", 0},
    {"FixedBoost", with(kCopy, {"-b", "7"}), "", "Set boost value to 7", 0},
    {"Pack", with(kCopy, {"-f", "copy.bin", "-i", "in.bin", "-o", "out.bin", "--pack"}), "", "Test pattern passed", 0},
    {"ArgumentNotSet", {"-f", "copy.bin"}, "", "Pattern argument in not set", 0},
    {"NodeNotAdded", kCopy, "keshAddPattern@1", "Failed to add pattern to graph", 1},
    {"MissingArgumentOfCommandOption", {"-f"}, "", "option requires an argument", 0},
    {"CommandFileMissing", {"--command", "x.txt"}, "", "Error: cannot open file x.txt", 1},
    {"UnknownOption", {"--command", "unknown.txt"}, "", "Unknown option: 63", 1},
    {"GroupLoopCountTooLarge", {"--command", "loop64.txt"}, "", "Invalid group loop count: 64", 1},
    {"NoPatternBinary", {"-i", "in.bin"}, "", "No pattern binary found", 1},
    {"InvalidCase", {"-t", "9"}, "", "Invalid mode: 9", 1},
    {"GroupTooLarge", {"--command", "big.txt"}, "", "Exceed maximum number of commands", 1},
};

INSTANTIATE_TEST_SUITE_P(Rows, Grammar, ::testing::ValuesIn(kLineCases),
                         [](const ::testing::TestParamInfo<LineCase>& rowInfo) {
                           return std::string(rowInfo.param.label);
                         });

INSTANTIATE_TEST_SUITE_P(Rows, Report, ::testing::ValuesIn(kCases), [](const ::testing::TestParamInfo<Case>& rowInfo) {
  return std::string(rowInfo.param.label);
});

// The first program of `names` on PATH, "" when none is.
std::string onPath(const std::vector<std::string>& names) {
  const char* path = std::getenv("PATH");
  std::istringstream folders(path != nullptr ? path : "");
  for (std::string folder; std::getline(folders, folder, ':');) {
    for (const std::string& name : names) {
      if (access((folder + "/" + name).c_str(), X_OK) == 0) return folder + "/" + name;
    }
  }
  return "";
}

// The page of a group of 8 jobs, opened in a real browser: it renders without
// script errors, its pictures are in the document, and a screenshot is kept.
TEST_F(Report, HtmlOpensInAHeadlessBrowser) {
  const std::string browser = onPath({"chromium", "chromium-browser", "google-chrome"});
  if (browser.empty()) GTEST_SKIP() << "no headless browser installed";
  std::string eight;
  for (int k = 0; k < 8; ++k) eight += "-f copy.bin -i in.bin -o out.bin -g 1\n";
  writeText("eight.txt", eight);
  const ChildResult report =
      start({KESH_REPORT_PATH, "--html", "r.html", "--", KESH_PLAYER_PATH, "--command", "eight.txt", "-l", "3"}, "");
  ASSERT_EQ(statusOf(report), 0) << report.err;
  const std::vector<std::string> common = {browser,
                                           "--headless",
                                           "--no-sandbox",
                                           "--disable-gpu",
                                           "--user-data-dir=" + dir_ + "/profile",
                                           "--enable-logging=stderr"};
  ChildTask dom;
  dom.argv = with(common, {"--dump-dom", "file://" + dir_ + "/r.html"});
  const ChildResult page = runChild(dom);
  ASSERT_EQ(page.status, 0) << page.err;
  EXPECT_NE(page.out.find("Run 3, group 1"), std::string::npos) << page.out;
  // A timeline per run (one group each) and the IP times of the one pattern.
  size_t pictures = 0;
  for (size_t at = page.out.find("<svg"); at != std::string::npos; at = page.out.find("<svg", at + 1)) ++pictures;
  EXPECT_EQ(pictures, 4u);
  for (const char* scriptError : {"Uncaught", "CONSOLE"})
    EXPECT_EQ(page.err.find(scriptError), std::string::npos) << page.err;
  ChildTask shot;
  shot.argv =
      with(common, {"--window-size=1100,1600", "--screenshot=" KESH_REPORT_SCREENSHOT, "file://" + dir_ + "/r.html"});
  const ChildResult picture = runChild(shot);
  ASSERT_EQ(picture.status, 0) << picture.err;
  EXPECT_EQ(readFile(KESH_REPORT_SCREENSHOT).substr(1, 3), "PNG");
}

struct BadUse {
  const char* label;
  std::vector<std::string> args;
  std::string err;  // what standard error begins with
};

class ReportRefuses : public Report {};

// Bad input: a clear message and status 2, before the tool runs (no output of it).
TEST_F(ReportRefuses, BadInput) {
  writeText("not_a_log.txt", "hello\nworld\n");
  const BadUse kBad[] = {
      {"UnwritableOutput",
       {"--junit", "no/such/dir/r.xml", "--", KESH_PLAYER_PATH, "-t", "4"},
       "kesh_report: cannot write 'no/such/dir/r.xml'"},
      {"NoTool", {"--json", "r.json"}, "kesh_report: no tool to run"},
      {"ForeignLog",
       {"--log", "not_a_log.txt", "--status", "0", "--", KESH_PLAYER_PATH},
       "kesh_report: 'not_a_log.txt' is not kesh_player's output"},
      {"LogWithoutStatus", {"--log", "not_a_log.txt", "--", KESH_PLAYER_PATH}, "kesh_report: --log needs --status"},
  };
  for (const BadUse& bad : kBad) {
    const ChildResult result = start(with({KESH_REPORT_PATH}, bad.args), "");
    EXPECT_EQ(result.status, 2) << bad.label;
    EXPECT_EQ(result.out, "") << bad.label;
    EXPECT_EQ(result.err.rfind(bad.err, 0), 0u) << bad.label << ": " << result.err;
  }
}

}  // namespace
}  // namespace kesh::testing
