// kesh_report around the real tool on real command files: the tool's output
// passes through unchanged (times aside, which differ between any two runs),
// its status is returned, the JUnit XML is valid against the format's schema
// and counts what happened, the JSON parses and names the library that ran;
// and every line the tool printed is one the output grammar knows.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
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

const char kCopy[] = "-f copy.bin -i in.bin -o out.bin";

// `text` split at spaces.
std::vector<std::string> words(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> all;
  for (std::string word; stream >> word;) all.push_back(word);
  return all;
}

std::vector<std::string> with(std::vector<std::string> args, const std::vector<std::string>& more) {
  args.insert(args.end(), more.begin(), more.end());
  return args;
}

ChildResult runProgram(const std::vector<std::string>& argv) { return runChild({argv, {}, "", {}, ""}); }

int statusOf(const ChildResult& result) { return result.signal != 0 ? 128 + result.signal : result.status; }

// A scratch folder with copy.bin, its data, and the command files the rows name.
class ReportTest : public PlayerTest {
 protected:
  void SetUp() override {
    // A launcher (an emulator for a cross build) would have to stand between the
    // report and the tool it starts as well; these tests run where programs start natively.
    if (kLauncher[0] != nullptr) GTEST_SKIP() << "programs start through a launcher";
    writeCopyCase(16, {3, 9}, "flipped/out.bin");
    writeCopyCase(16);
    writeFile("long/in.bin", std::vector<uint8_t>(4 << 20));  // far past the buffer: the tool crashes
    const std::string line = std::string(kCopy) + " -g 1";
    writeText("grouped.txt", line + "\n" + line + "\n");
    writeText("single.txt", std::string(kCopy) + "\n");
    writeText("unknown.txt", "-f copy.bin -x\n");
    writeText("loop64.txt", line + " -l 64\n");
    writeText("big.txt", line + " -l 40\n" + line + " -l 40\n");
  }

  ChildResult start(const std::vector<std::string>& argv, const std::string& failing) {
    ChildTask task{argv, {}, dir_, {{"KESH_EMU_FAIL", std::nullopt}, {"KESH_EMU_CORES", "4"}}, ""};
    if (!failing.empty()) task.env.emplace_back("KESH_EMU_FAIL", failing);
    return runChild(task);
  }

  // The JSON of kesh_report reading `log` back as the output of kesh_player `args`.
  nlohmann::json readBack(const std::string& log, int status, const std::vector<std::string>& args) {
    writeText("direct.log", log);
    start(with({KESH_REPORT_PATH, "--log", "direct.log", "--status", std::to_string(status), "--json", "log.json",
                "--", KESH_PLAYER_PATH},
               args),
          "");
    return nlohmann::json::parse(readFile(dir_ + "/log.json"));
  }
};

struct Case {
  const char* label;
  std::vector<std::string> args;  // kesh_player's
  std::string failing;            // KESH_EMU_FAIL
  int status;                     // the tool's own
  int suites, tests, failures, errors, skipped;  // JUnit's counts over all suites
  std::vector<std::string> caseNames;            // some test case names that must be there
  bool shuffled = false;                         // -r: groups print in a random order
};

// Per execution: one case for it, one skipped ("in" has no golden), one compared ("out").
const Case kCases[] = {
    {"Passing", words(kCopy), "", 0, 1, 3, 0, 0, 1, {"&lt;command line&gt;", "&lt;command line&gt; copy.bin out"}},
    {"FailingWithDiff", words("-f copy.bin -i in.bin -o flipped/out.bin"), "", 255, 1, 3, 1, 0, 1,
     {"&lt;command line&gt; copy.bin out"}},
    {"FatalLibraryFailure", words(kCopy), "keshPlayPatternGraph@1", 1, 1, 2, 0, 2, 0, {"run 1 end"}},
    {"Crash", words("-f copy.bin -i long/in.bin -o out.bin"), "", 139, 1, 2, 0, 2, 0, {"run 1 end"}},
    {"Loops", words(kCopy + std::string(" -l 3")), "", 0, 3, 9, 0, 0, 3, {}},
    {"Groups", words("--command grouped.txt"), "", 0, 1, 6, 0, 0, 2, {"grouped.txt:1", "grouped.txt:2 copy.bin out"}},
    {"ShuffledGroups", words("--command grouped.txt --command single.txt -r -l 2"), "", 0, 2, 18, 0, 0, 6,
     {"single.txt:1", "grouped.txt:2"}, true},
    {"SetUpFault", words("-f missing.bin"), "", 1, 1, 1, 0, 1, 0, {"set-up"}},
    {"Help", words("-h"), "", 0, 0, 0, 0, 0, 0, {}},
};

// Numbers that differ from one run to the next; with `sorted`, the lines in order.
std::string comparable(const std::string& out, bool sorted) {
  static const std::regex kVarying(
      "((time|Timestamp start|Timestamp end) of sub-command [0-9]+: |Random boost value: )-?[0-9]+");
  std::istringstream stream(std::regex_replace(out, kVarying, "$1#"));
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  if (sorted) std::sort(lines.begin(), lines.end());
  std::string all;
  for (const std::string& line : lines) all += line + "\n";
  return all;
}

int attribute(const std::string& xml, const std::string& name) {
  std::smatch match;
  const std::regex pattern("<testsuites[^>]* " + name + "=\"([0-9]+)\"");
  return std::regex_search(xml, match, pattern) ? std::stoi(match[1]) : -1;
}

class Report : public ReportTest, public ::testing::WithParamInterface<Case> {};

TEST_P(Report, PassesThroughAndWritesResults) {
  const Case& row = GetParam();
  if (kSanitized && row.status == 128 + SIGSEGV) GTEST_SKIP() << "the sanitizers report the fault themselves";
  const ChildResult direct = start(with({KESH_PLAYER_PATH}, row.args), row.failing);
  ASSERT_EQ(statusOf(direct), row.status) << direct.err;
  const ChildResult report = start(with({KESH_REPORT_PATH, "--junit", "r.xml", "--json", "r.json", "--csv", "r.csv",
                                         "--html", "r.html", "--", KESH_PLAYER_PATH},
                                        row.args),
                                   row.failing);

  EXPECT_EQ(statusOf(report), row.status) << report.err;
  // Shuffled groups print in an order of their own on every run: then only the lines must agree.
  EXPECT_EQ(comparable(report.out, row.shuffled), comparable(direct.out, row.shuffled));
  // The tool's standard error, then (when anything was timed) the report's table.
  ASSERT_EQ(report.err.substr(0, direct.err.size()), direct.err);
  const std::string added = report.err.substr(direct.err.size());
  EXPECT_TRUE(added.empty() || added.rfind("kesh_report: times per pattern", 0) == 0) << added;

  const std::string xml = readFile(dir_ + "/r.xml");
  const ChildResult lint = runProgram({"xmllint", "--noout", "--schema", KESH_JUNIT_XSD, dir_ + "/r.xml"});
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
  // The same run, both streams in one log, read back: no line is outside the grammar.
  const nlohmann::json log = readBack(direct.out + direct.err, row.status, row.args);
  EXPECT_EQ(log["unknown_lines"].size(), 0u) << log["unknown_lines"].dump();
}

INSTANTIATE_TEST_SUITE_P(Rows, Report, ::testing::ValuesIn(kCases), [](const ::testing::TestParamInfo<Case>& rowInfo) {
  return std::string(rowInfo.param.label);
});

// More of the tool's lines: echoes of every setting, random boosts, packs, notices and
// each kind of fatal line, read back through the grammar.
struct LineCase {
  const char* label;
  std::vector<std::string> args;
  std::string failing;  // KESH_EMU_FAIL
  std::string printed;  // a line the row is there for
  size_t fatalLines;    // how many of them end the tool
};

const LineCase kLineCases[] = {
    {"EverySetting", words(kCopy + std::string(" -b -1 -c 0 -a 100000 -s 50000 --session_reused")), "",
     "Random boost value: ", 0},
    {"FixedBoost", words(kCopy + std::string(" -b 7")), "", "Set boost value to 7", 0},
    {"Pack", words(kCopy + std::string(" ") + kCopy + " --pack"), "", "Test pattern passed", 0},
    {"ArgumentNotSet", words("-f copy.bin"), "", "Pattern argument in not set", 0},
    {"NodeNotAdded", words(kCopy), "keshAddPattern@1", "Failed to add pattern to graph", 1},
    {"MissingArgumentOfCommandOption", words("-f"), "", "option requires an argument", 0},
    {"CommandFileMissing", words("--command x.txt"), "", "Error: cannot open file x.txt", 1},
    {"UnknownOption", words("--command unknown.txt"), "", "Unknown option: 63", 1},
    {"GroupLoopCountTooLarge", words("--command loop64.txt"), "", "Invalid group loop count: 64", 1},
    {"NoPatternBinary", words("-i in.bin"), "", "No pattern binary found", 1},
    {"InvalidCase", words("-t 9"), "", "Invalid mode: 9", 1},
    {"GroupTooLarge", words("--command big.txt"), "", "Exceed maximum number of commands", 1},
};

class Grammar : public ReportTest, public ::testing::WithParamInterface<LineCase> {};

TEST_P(Grammar, EveryLineOfTheToolIsKnown) {
  const LineCase& row = GetParam();
  const ChildResult direct = start(with({KESH_PLAYER_PATH}, row.args), row.failing);
  const std::string both = direct.out + direct.err;
  EXPECT_NE(both.find(row.printed), std::string::npos) << both;
  const nlohmann::json json = readBack(both, statusOf(direct), row.args);
  EXPECT_EQ(json["unknown_lines"].size(), 0u) << json["unknown_lines"].dump();
  EXPECT_EQ(json["fatal"].size(), row.fatalLines) << json["fatal"].dump();
}

INSTANTIATE_TEST_SUITE_P(Rows, Grammar, ::testing::ValuesIn(kLineCases),
                         [](const ::testing::TestParamInfo<LineCase>& rowInfo) {
                           return std::string(rowInfo.param.label);
                         });

// The page of a group of 8 jobs, opened in a real browser: it renders without
// script errors, its pictures are in the document, and a screenshot is kept.
TEST_F(Report, HtmlOpensInAHeadlessBrowser) {
  const std::string browser = runProgram({"sh", "-c", "command -v chromium chromium-browser google-chrome"}).out;
  if (browser.empty()) GTEST_SKIP() << "no headless browser installed";
  std::string eight;
  for (int k = 0; k < 8; ++k) eight += std::string(kCopy) + " -g 1\n";
  writeText("eight.txt", eight);
  const ChildResult report =
      start({KESH_REPORT_PATH, "--html", "r.html", "--", KESH_PLAYER_PATH, "--command", "eight.txt", "-l", "3"}, "");
  ASSERT_EQ(statusOf(report), 0) << report.err;
  const std::vector<std::string> common = {browser.substr(0, browser.find('\n')), "--headless", "--no-sandbox",
                                           "--disable-gpu", "--user-data-dir=" + dir_ + "/profile",
                                           "--enable-logging=stderr"};
  const ChildResult page = runProgram(with(common, {"--dump-dom", "file://" + dir_ + "/r.html"}));
  ASSERT_EQ(page.status, 0) << page.err;
  EXPECT_NE(page.out.find("Run 3, group 1"), std::string::npos) << page.out;
  // A timeline per run (one group each) and the IP times of the one pattern.
  size_t pictures = 0;
  for (size_t at = page.out.find("<svg"); at != std::string::npos; at = page.out.find("<svg", at + 1)) ++pictures;
  EXPECT_EQ(pictures, 4u);
  for (const char* scriptError : {"Uncaught", "CONSOLE"})
    EXPECT_EQ(page.err.find(scriptError), std::string::npos) << page.err;
  const std::vector<std::string> shot = {"--window-size=1100,1600", "--screenshot=" KESH_REPORT_SCREENSHOT,
                                         "file://" + dir_ + "/r.html"};
  const ChildResult picture = runProgram(with(common, shot));
  ASSERT_EQ(picture.status, 0) << picture.err;
  EXPECT_EQ(readFile(KESH_REPORT_SCREENSHOT).substr(1, 3), "PNG");
}

class ReportRefuses : public ReportTest {};

// Bad input: a clear message and status 2, before the tool runs (no output of it).
TEST_F(ReportRefuses, BadInput) {
  writeText("not_a_log.txt", "hello\nworld\n");
  const struct {
    std::string args;  // kesh_report's; "kesh_player" stands for the tool
    std::string err;   // what standard error begins with
  } kBad[] = {
      {"--junit no/such/dir/r.xml -- kesh_player", "kesh_report: cannot write 'no/such/dir/r.xml'"},
      {"--log not_a_log.txt --status 0 -- kesh_player", "kesh_report: 'not_a_log.txt' is not kesh_player's output"},
      {"--log not_a_log.txt -- kesh_player", "kesh_report: --log needs --status"},
      {"--log l --status 256 -- kesh_player", "kesh_report: --status needs an exit status from 0 to 255, not '256'"},
      {"--status 1 -- kesh_player", "kesh_report: --status is only meaningful with --log"},
      {"--junit a tool", "kesh_report: unknown option 'tool'"},
      {"--junit a --", "kesh_report: no tool to run: give '--' and the kesh_player command"},
      {"--junit", "kesh_report: option '--junit' needs a value"},
  };
  for (const auto& bad : kBad) {
    std::vector<std::string> args = with({KESH_REPORT_PATH}, words(bad.args));
    std::replace(args.begin(), args.end(), std::string("kesh_player"), std::string(KESH_PLAYER_PATH));
    const ChildResult result = start(args, "");
    EXPECT_EQ(result.status, 2) << bad.args;
    EXPECT_EQ(result.out, "") << bad.args;
    EXPECT_EQ(result.err.rfind(bad.err, 0), 0u) << bad.args << ": " << result.err;
  }
}

}  // namespace
}  // namespace kesh::testing
