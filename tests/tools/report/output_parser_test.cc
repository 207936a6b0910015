// The output reader on crafted output: attribution of verdicts to executions
// and patterns across groups and shuffled runs, diff listings boiled down,
// both streams' lines sorted into notices, fatal lines and unknown lines.
#include "report/output_parser.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kesh::report {
namespace {

// Two ungrouped sets, each a group of its own: A (patterns a.bin with "in","out"
// and b.bin with "out"), B (a.bin) run twice per group.
Plan twoSets() {
  Plan plan;
  const PlannedPattern a{"a.bin", {{"in", 16, ""}, {"out", 16, "gold/a.bin"}}, true};
  const PlannedPattern b{"b.bin", {{"out", 20, ""}}, true};
  plan.sets = {{"sets.txt:1", " -f a.bin -f b.bin", {a, b}}, {"sets.txt:2", " -f a.bin -l 2", {a}}};
  plan.groups = {{0}, {1, 1}};
  return plan;
}

const char kGroupA[] =
    "Running command:  -f a.bin -f b.bin\n"
    "Execution info of command:  -f a.bin -f b.bin\n"
    "    IP time of sub-command 0: 10 us\n"
    "    Driver time of sub-command 0: 12 us\n"
    "    Timestamp start of sub-command 0: 100\n"
    "    Timestamp end of sub-command 0: 112\n"
    "    IP time of sub-command 1: 20 us\n"
    "    Driver time of sub-command 1: 22 us\n"
    "    Timestamp start of sub-command 1: 112\n"
    "    Timestamp end of sub-command 1: 134\n"
    "Golden data not found for argument in\n"
    "Skip compare golden of argument in\n"
    "Test passed for argument out\n"
    "Result does not match golden data.\n"
    "Diff:\n"
    "0 0 5a 0  0 0 0 0  0 0 0 0  0 0 0 0 \n"
    "0 0 0 ff Test failed for argument out\n";

const char kGroupB[] =
    "Running command:  -f a.bin -l 2\n"
    "Running command:  -f a.bin -l 2\n"
    "Execution info of command:  -f a.bin -l 2\n"
    "    IP time of sub-command 0: 30 us\n"
    "Execution info of command:  -f a.bin -l 2\n"
    "    IP time of sub-command 0: 40 us\n"
    "Golden data not found for argument in\n"
    "Skip compare golden of argument in\n"
    "Test passed for argument out\n"
    "Golden data not found for argument in\n"
    "Skip compare golden of argument in\n"
    "Test passed for argument out\n";

Results parse(const Plan& plan, const std::string& out, size_t chunk = 0) {
  OutputParser parser(plan);
  if (chunk == 0) chunk = out.size();
  for (size_t at = 0; at < out.size(); at += chunk)
    parser.feedStdout(out.data() + at, std::min(chunk, out.size() - at));
  parser.finish(0, 0);
  return parser.results();
}

std::string unknownLines(const Results& results) {
  std::string all;
  for (const UnknownLine& line : results.unknown) all += line.text + "\n";
  return all;
}

// Fed whole or in pieces of any size, the same attribution.
TEST(OutputParser, AttributesVerdictsToExecutionsAndPatterns) {
  const Plan plan = twoSets();
  const std::string out =
      std::string("[1/1] Test pattern start...\n") + kGroupA + kGroupB + "[1/1] Test pattern failed!!!";
  for (size_t chunk : {0u, 1u, 7u, 64u}) {
    SCOPED_TRACE("chunk " + std::to_string(chunk));
    const Results results = parse(plan, out, chunk);
    EXPECT_EQ(unknownLines(results), "");
    ASSERT_EQ(results.runs.size(), 1u);
    const report::Run& run = results.runs[0];
    EXPECT_EQ(run.end, RunEnd::kFailed);
    EXPECT_EQ(run.groupOrder, (std::vector<size_t>{0, 1}));
    EXPECT_EQ(run.groupStarts, (std::vector<size_t>{0, 1}));
    ASSERT_EQ(run.executions.size(), 3u);
    const Execution& first = run.executions[0];
    ASSERT_EQ(first.verdicts.size(), 3u);
    // "out" of a.bin passed, "out" of b.bin failed: the same name, told apart by order.
    EXPECT_EQ(first.verdicts[1].pattern, 0u);
    EXPECT_EQ(first.verdicts[1].outcome, Outcome::kPassed);
    EXPECT_EQ(first.verdicts[2].pattern, 1u);
    EXPECT_EQ(first.verdicts[2].outcome, Outcome::kFailed);
    EXPECT_EQ(first.verdicts[2].diff.differing, 2u);
    EXPECT_EQ(first.times[1].end, 134);
    EXPECT_EQ(run.executions[1].verdicts.size(), 2u);
    EXPECT_EQ(run.executions[2].verdicts.size(), 2u);
    EXPECT_EQ(run.executions[2].times[0].ipMicros, 40);
    EXPECT_EQ(results.failedVerdicts, 1u);
  }
}

TEST(OutputParser, FindsShuffledGroupsByTheirFirstCommand) {
  const Plan plan = twoSets();
  const std::string out = std::string("[1/2] Test pattern start...\n") + kGroupA + kGroupB +
                          "[1/2] Test pattern passed!!!\n[2/2] Test pattern start...\n" + kGroupB + kGroupA +
                          "[2/2] Test pattern failed!!!\n";
  const Results results = parse(plan, out);
  ASSERT_EQ(results.runs.size(), 2u);
  EXPECT_EQ(results.runs[1].number, 2);
  EXPECT_EQ(results.runs[1].groupOrder, (std::vector<size_t>{1, 0}));
  EXPECT_EQ(results.runs[1].groupStarts, (std::vector<size_t>{0, 2}));
  EXPECT_EQ(results.runs[1].executions[2].verdicts[2].outcome, Outcome::kFailed);
  EXPECT_EQ(results.runs[1].executions[2].verdicts[2].pattern, 1u);
}

std::string sixteen(const char* value) {
  std::string line;
  for (int k = 0; k < 16; ++k) line += std::string(value) + (k % 4 == 3 && k < 15 ? "  " : " ");
  return line + "\n";
}

// A listing, from the line after "Diff:" to the verdict that ends its last line, boiled down.
TEST(OutputParser, SummarisesDiffListings) {
  const struct {
    std::string listing;
    uint64_t listed, differing, first, last;
    size_t valuesKept;
  } kRows[] = {
      {sixteen("0") + sixteen("ff") + "Test failed for argument out\n", 32, 16, 16, 31, 8},
      {"0 1 0 0  0 0 0 0  0 0 0 0  0 0 0 0 \n0 0 0 80 Test failed for argument out\n", 20, 2, 1, 19, 2},
      {"7 Test failed for argument out\n", 1, 1, 0, 0, 1},
  };
  Plan plan;
  plan.sets = {{"<command line>", " -f a.bin", {{"a.bin", {{"out", 64, ""}}, true}}}};
  plan.groups = {{0}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.listing);
    const Results results = parse(plan,
                                  "Test pattern start...\nRunning command:  -f a.bin\n"
                                  "Execution info of command:  -f a.bin\nResult does not match golden data.\nDiff:\n" +
                                      row.listing);
    EXPECT_EQ(unknownLines(results), "");
    ASSERT_EQ(results.runs.at(0).executions.at(0).verdicts.size(), 1u);
    const Verdict& verdict = results.runs[0].executions[0].verdicts[0];
    EXPECT_EQ(verdict.outcome, Outcome::kFailed);
    EXPECT_EQ(verdict.arg, "out");
    EXPECT_EQ(verdict.diff.listedBytes, row.listed);
    EXPECT_EQ(verdict.diff.differing, row.differing);
    EXPECT_EQ(verdict.diff.firstOffset, row.first);
    EXPECT_EQ(verdict.diff.lastOffset, row.last);
    EXPECT_EQ(verdict.diff.firstValues.size(), row.valuesKept);
  }
}

TEST(OutputParser, SortsStandardErrorAndFlagsUnknownLines) {
  const Plan plan = twoSets();
  OutputParser parser(plan);
  const std::string err =
      "Pattern argument in not set\nFailed to add pattern to graph\nFailed to play pattern\nsomething else\n";
  parser.feedStderr(err.data(), err.size());
  const std::string out = "Pattern binary: a.bin\nTest default case: 7\nnot a line of the tool\n";
  parser.feedStdout(out.data(), out.size());
  parser.finish(1, 0);
  const Results& results = parser.results();
  EXPECT_EQ(results.notices,
            (std::vector<std::string>{"Pattern argument in not set", "Failed to add pattern to graph"}));
  EXPECT_EQ(results.fatal, (std::vector<std::string>{"Failed to play pattern"}));
  ASSERT_EQ(results.unknown.size(), 2u);
  EXPECT_TRUE(results.unknown[0].onStderr);
  EXPECT_EQ(results.unknown[1].text, "not a line of the tool");
}

TEST(OutputParser, ReadsAMergedLogCutOffByACrash) {
  const Plan plan = twoSets();
  OutputParser parser(plan);
  const std::string log = std::string("Test pattern start...\n") + kGroupA + "Running command:  -f a.bin -l 2\n";
  parser.feedLog(log.data(), log.size());
  parser.finish(139, 11);
  const Results& results = parser.results();
  EXPECT_EQ(unknownLines(results), "");
  ASSERT_EQ(results.runs.size(), 1u);
  EXPECT_EQ(results.runs[0].end, RunEnd::kIncomplete);
  ASSERT_EQ(results.runs[0].executions.size(), 2u);
  EXPECT_FALSE(results.runs[0].executions[1].completed);
  EXPECT_EQ(results.signal, 11);
}

}  // namespace
}  // namespace kesh::report
