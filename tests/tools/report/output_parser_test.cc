// The output reader on crafted output: attribution of verdicts to executions
// and patterns across groups and shuffled runs, diff listings boiled down,
// both streams' lines sorted into notices, fatal lines and unknown lines.
#include "report/output_parser.h"

#include <gtest/gtest.h>

#include <sstream>
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
    "ff ff ff ff  ff ff ff ff  ff ff ff ff  ff ff ff ff Test failed for argument out\n";

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
    "Result does not match golden data.\n"
    "Diff:\n"
    "7 Test failed for argument out\n";

// A line per standard error line kept, per unknown line, per run (its number,
// end, group order and each group's first execution) and per execution: its set,
// IP time@end timestamp per pattern, and verdicts as "out@1 failed 20:2:1..19:2"
// (argument@pattern, outcome, and for a listing: bytes:differing:range:values kept).
std::string sketch(const Results& results) {
  static const char* const kOutcomes[] = {"passed", "failed", "skipped"};
  static const char* const kEnds[] = {" incomplete", "", " failed"};
  std::ostringstream text;
  for (const std::string& line : results.notices) text << "notice: " << line << '\n';
  for (const std::string& line : results.fatal) text << "fatal: " << line << '\n';
  for (const UnknownLine& line : results.unknown)
    text << "unknown" << (line.onStderr ? " on stderr: " : ": ") << line.text << '\n';
  for (const report::Run& run : results.runs) {
    text << "run " << run.number << kEnds[static_cast<int>(run.end)] << " groups";
    for (size_t k = 0; k < run.groupOrder.size(); ++k) text << ' ' << run.groupOrder[k] << '@' << run.groupStarts[k];
    text << '\n';
    for (const Execution& execution : run.executions) {
      text << "  set " << execution.set << (execution.completed ? "" : " unfinished");
      for (const PatternTimes& times : execution.times) text << ' ' << times.ipMicros << '@' << times.end;
      for (const Verdict& verdict : execution.verdicts) {
        const DiffSummary& diff = verdict.diff;
        text << ", " << verdict.arg << '@' << verdict.pattern << ' ' << kOutcomes[static_cast<int>(verdict.outcome)];
        if (verdict.hasDiff)
          text << ' ' << diff.listedBytes << ':' << diff.differing << ':' << diff.firstOffset << ".." << diff.lastOffset
               << ':' << diff.firstValues.size();
      }
      text << '\n';
    }
  }
  return text.str();
}

// Fed whole or in pieces of any size, the same attribution: "out" of a.bin
// passed, "out" of b.bin failed, the same name told apart by order; a shuffled
// run's groups are found by their first command; listings of one byte and of
// whole lines boiled down; standard error sorted into notices and fatal lines,
// and lines of neither stream's grammar flagged.
TEST(OutputParser, AttributesVerdictsAndSortsLines) {
  const std::string out = std::string("Pattern binary: a.bin\nnot a line of the tool\n[1/2] Test pattern start...\n") +
                          kGroupA + kGroupB + "[1/2] Test pattern failed!!!\n[2/2] Test pattern start...\n" + kGroupB +
                          kGroupA + "[2/2] Test pattern failed!!!";
  const std::string err =
      "Pattern argument in not set\nFailed to add pattern to graph\nFailed to play pattern\nsomething else\n";
  const std::string groupA = "  set 0 10@112 20@134, in@0 skipped, out@0 passed, out@1 failed 32:17:2..31:8\n";
  const std::string groupB =
      "  set 1 30@-1, in@0 skipped, out@0 passed\n  set 1 40@-1, in@0 skipped, out@0 failed 1:1:0..0:1\n";
  const Plan plan = twoSets();
  for (size_t chunk : {1u, 7u, 64u, 100000u}) {
    OutputParser parser(plan);
    for (size_t at = 0; at < out.size(); at += chunk)
      parser.feedStdout(out.data() + at, std::min(chunk, out.size() - at));
    parser.feedStderr(err.data(), err.size());
    parser.finish(1, 0);
    EXPECT_EQ(sketch(parser.results()),
              "notice: Pattern argument in not set\nnotice: Failed to add pattern to graph\n"
              "fatal: Failed to play pattern\nunknown: not a line of the tool\nunknown on stderr: something else\n"
              "run 1 failed groups 0@0 1@1\n" + groupA + groupB + "run 2 failed groups 1@0 0@2\n" + groupB + groupA)
        << "chunk " << chunk;
    EXPECT_EQ(parser.results().failedVerdicts, 4u);
  }
}

}  // namespace
}  // namespace kesh::report
