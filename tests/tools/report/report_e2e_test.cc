// kesh_report around the real tool on real command files: the tool's output
// passes through unchanged (times aside), its status is returned, the JUnit XML
// is valid against the format's schema and counts what happened, the JSON parses
// and names the library that ran, and the same run read back from a log agrees.
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

// `first`, then `text` split at spaces.
std::vector<std::string> with(std::vector<std::string> first, const std::string& text) {
  std::istringstream stream(text);
  for (std::string word; stream >> word;) first.push_back(word);
  return first;
}

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
    const std::string line = std::string(kCopy) + " -g 1\n";
    writeText("grouped.txt", line + line);
    writeText("single.txt", std::string(kCopy) + "\n");
  }

  // kesh_report with `args`, "kesh_player" standing for the tool; 128 + signal when killed.
  ChildResult report(const std::string& args, const std::string& failing = "") {
    std::vector<std::string> argv = with({KESH_REPORT_PATH}, args);
    std::replace(argv.begin(), argv.end(), std::string("kesh_player"), std::string(KESH_PLAYER_PATH));
    ChildTask task{argv, {}, dir_, {{"KESH_EMU_FAIL", std::nullopt}}, ""};
    if (!failing.empty()) task.env.emplace_back("KESH_EMU_FAIL", failing);
    ChildResult result = runChild(task);
    if (result.signal != 0) result.status = 128 + result.signal;
    return result;
  }
};

struct Case {
  const char* label;
  std::string args;     // kesh_player's
  std::string failing;  // KESH_EMU_FAIL
  int status;           // the tool's own
  int runs, tests, failures, errors, skipped;  // JUnit's counts over all suites
  std::vector<std::string> caseNames;          // some test case names that must be there
  std::string message = "";                    // what a failure or error says
  bool shuffled = false;                       // -r: groups print in a random order
};

// Per execution: one case for it, one skipped ("in" has no golden), one compared ("out").
const Case kCases[] = {
    {"Passing", std::string(kCopy) + " -b -1 -c 0 -a 100000 -s 50000 --session_reused", "", 0, 1, 3, 0, 0, 1,
     {"&lt;command line&gt;", "&lt;command line&gt; copy.bin out"}},
    {"FailingWithDiff", "-f copy.bin -i in.bin -o flipped/out.bin", "", 255, 1, 3, 1, 0, 1,
     {"&lt;command line&gt; copy.bin out"}, "2 of 16 bytes differ (offsets 3..9): at 3 expected 0x42 actual 0x18"},
    {"FatalLibraryFailure", kCopy, "keshPlayPatternGraph@1", 1, 1, 2, 0, 2, 0, {"run 1 end"},
     "message=\"Failed to play pattern\""},
    {"Crash", "-f copy.bin -i long/in.bin -o out.bin", "", 139, 1, 2, 0, 2, 0, {"run 1 end"},
     "message=\"killed by signal 11 (Segmentation fault)\""},
    {"Loops", std::string(kCopy) + " -l 3", "", 0, 3, 9, 0, 0, 3, {}},
    {"Groups", "--command grouped.txt", "", 0, 1, 6, 0, 0, 2, {"grouped.txt:1", "grouped.txt:2 copy.bin out"}},
    {"ShuffledGroups", "--command grouped.txt --command single.txt -r -l 2", "", 0, 2, 18, 0, 0, 6,
     {"single.txt:1", "grouped.txt:2"}, "", true},
    {"SetUpFault", "-i in.bin", "", 1, 0, 1, 0, 1, 0, {"set-up"}},
    {"MissingValue", "-f", "", 1, 0, 1, 0, 1, 0, {"set-up"}},
    {"Help", "-h", "", 0, 0, 0, 0, 0, 0, {}},
};

// Numbers that differ from one run to the next; with `sorted`, the lines in order.
std::vector<std::string> comparable(const std::string& out, bool sorted) {
  static const std::regex kVarying(
      "((time|Timestamp start|Timestamp end) of sub-command [0-9]+: |Random boost value: )-?[0-9]+");
  std::istringstream stream(std::regex_replace(out, kVarying, "$1#"));
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  if (sorted) std::sort(lines.begin(), lines.end());
  return lines;
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
  const PlayerRun direct = run(with({}, row.args), row.failing);  // also reads every line against the grammar
  ASSERT_EQ(direct.status, row.status) << direct.err;
  const ChildResult live =
      report("--junit r.xml --json r.json --csv r.csv --html r.html -- kesh_player " + row.args, row.failing);

  EXPECT_EQ(live.status, row.status) << live.err;
  // Shuffled groups print in an order of their own on every run: then only the lines must agree.
  EXPECT_EQ(comparable(live.out, row.shuffled), comparable(direct.out, row.shuffled));
  // The tool's standard error, then (when anything was timed) the report's table.
  ASSERT_EQ(live.err.substr(0, direct.err.size()), direct.err);
  const std::string added = live.err.substr(direct.err.size());
  EXPECT_TRUE(added.empty() || added.rfind("kesh_report: times per pattern", 0) == 0) << added;

  const std::string xml = readFile(dir_ + "/r.xml");
  const ChildResult lint =
      runChild({{"xmllint", "--noout", "--schema", KESH_JUNIT_XSD, dir_ + "/r.xml"}, {}, "", {}, ""});
  EXPECT_EQ(lint.status, 0) << lint.err << xml;
  EXPECT_EQ(attribute(xml, "tests"), row.tests) << xml;
  EXPECT_EQ(attribute(xml, "failures"), row.failures) << xml;
  EXPECT_EQ(attribute(xml, "errors"), row.errors) << xml;
  EXPECT_EQ(attribute(xml, "skipped"), row.skipped) << xml;
  for (const std::string& name : row.caseNames)
    EXPECT_NE(xml.find("name=\"" + name + "\""), std::string::npos) << name << "\n" << xml;
  EXPECT_NE(xml.find(row.message), std::string::npos) << xml;

  const nlohmann::json json = nlohmann::json::parse(readFile(dir_ + "/r.json"));
  EXPECT_EQ(json["exit_status"], row.status);
  EXPECT_EQ(json["runs"].size(), static_cast<size_t>(row.runs));
  EXPECT_EQ(json["unknown_lines"].size(), 0u) << json["unknown_lines"].dump();
  const std::string library = json["provenance"]["library"]["path"];
  EXPECT_NE(library.find("libkesh_pattern_25.so"), std::string::npos) << library;
  EXPECT_EQ(json["provenance"]["library"]["host_library"], true);
  EXPECT_EQ(json["provenance"]["library"]["build_id"].get<std::string>().size(), 40u);
  EXPECT_NE(readFile(dir_ + "/r.html").find("</html>"), std::string::npos);
  EXPECT_EQ(readFile(dir_ + "/r.csv").rfind("pattern,time,count,", 0), 0u);

  // The same run, both streams in one log, read back as a device's log would be.
  writeText("direct.log", direct.out + direct.err);
  report("--log direct.log --status " + std::to_string(row.status) + " --junit log.xml -- kesh_player " + row.args);
  EXPECT_EQ(attribute(readFile(dir_ + "/log.xml"), "tests"), row.tests);
}

INSTANTIATE_TEST_SUITE_P(Rows, Report, ::testing::ValuesIn(kCases), [](const ::testing::TestParamInfo<Case>& rowInfo) {
  return std::string(rowInfo.param.label);
});

// The page of a group of 8 jobs, opened in a real browser: it renders without
// script errors, its pictures are in the document, and a screenshot is kept.
TEST_F(Report, HtmlOpensInAHeadlessBrowser) {
  const std::string browser =
      runChild({{"sh", "-c", "command -v chromium chromium-browser google-chrome"}, {}, "", {}, ""}).out;
  if (browser.empty()) GTEST_SKIP() << "no headless browser installed";
  std::string eight;
  for (int k = 0; k < 8; ++k) eight += std::string(kCopy) + " -g 1\n";
  writeText("eight.txt", eight);
  const ChildResult live = report("--html r.html -- kesh_player --command eight.txt -l 3");
  ASSERT_EQ(live.status, 0) << live.err;
  const std::vector<std::string> common = {browser.substr(0, browser.find('\n')), "--headless", "--no-sandbox",
                                           "--disable-gpu", "--user-data-dir=" + dir_ + "/profile",
                                           "--enable-logging=stderr"};
  const ChildResult page = runChild({with(common, "--dump-dom file://" + dir_ + "/r.html"), {}, "", {}, ""});
  ASSERT_EQ(page.status, 0) << page.err;
  EXPECT_NE(page.out.find("Run 3, group 1"), std::string::npos) << page.out;
  // A timeline per run (one group each) and the IP times of the one pattern.
  size_t pictures = 0;
  for (size_t at = page.out.find("<svg"); at != std::string::npos; at = page.out.find("<svg", at + 1)) ++pictures;
  EXPECT_EQ(pictures, 4u);
  for (const char* scriptError : {"Uncaught", "CONSOLE"})
    EXPECT_EQ(page.err.find(scriptError), std::string::npos) << page.err;
  const std::string shot = "--window-size=1100,1600 --screenshot=" KESH_REPORT_SCREENSHOT " file://" + dir_ + "/r.html";
  const ChildResult picture = runChild({with(common, shot), {}, "", {}, ""});
  ASSERT_EQ(picture.status, 0) << picture.err;
  EXPECT_EQ(readFile(KESH_REPORT_SCREENSHOT).substr(1, 3), "PNG");
}

// Bad input: a clear message and status 2, before the tool runs (no output of it).
TEST_F(ReportTest, RefusesBadInput) {
  writeText("not_a_log.txt", "hello\nworld\n");
  const struct {
    std::string args, err;  // kesh_report's arguments; what standard error begins with
  } kBad[] = {
      {"--junit no/such/dir/r.xml -- kesh_player", "kesh_report: cannot write 'no/such/dir/r.xml'"},
      {"--log not_a_log.txt --status 0 -- kesh_player", "kesh_report: 'not_a_log.txt' is not kesh_player's output"},
      {"--log not_a_log.txt -- kesh_player", "kesh_report: --log needs --status"},
      {"--junit a tool", "kesh_report: unknown option 'tool'"},
      {"--junit", "kesh_report: option '--junit' needs a value"},
  };
  for (const auto& bad : kBad) {
    const ChildResult result = report(bad.args);
    EXPECT_EQ(result.status, 2) << bad.args;
    EXPECT_EQ(result.out, "") << bad.args;
    EXPECT_EQ(result.err.rfind(bad.err, 0), 0u) << bad.args << ": " << result.err;
  }
}

}  // namespace
}  // namespace kesh::testing
