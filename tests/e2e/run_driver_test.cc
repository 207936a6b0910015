// Runs, groups, players and verdicts of the tool, seen from outside.
#include <string>
#include <vector>

#include "player_test.h"
#include "test_patterns.h"

namespace kesh::testing {
namespace {

using Lines = std::vector<std::string>;

const char kTiming[] =
    "    IP time of sub-command 0: # us\n"
    "    Driver time of sub-command 0: # us\n"
    "    Timestamp start of sub-command 0: #\n"
    "    Timestamp end of sub-command 0: #\n";

const char kCopyEcho[] =
    "Pattern binary: copy.bin\n"
    "Pattern input 0: in.bin\n"
    "Pattern golden 0: out.bin\n";

const std::vector<std::string> kCopyArgs = {"-f", "copy.bin", "-i", "in.bin", "-o", "out.bin"};

std::vector<std::string> with(std::vector<std::string> args, const std::vector<std::string>& more) {
  args.insert(args.end(), more.begin(), more.end());
  return args;
}

// The lines that show the order of set-ups, waits and comparisons.
Lines progressLines(const std::string& out) {
  Lines found;
  for (const std::string& line : linesStartingWith(out, "")) {
    if (line.rfind("Running command: ", 0) == 0 || line.rfind("Execution info", 0) == 0 ||
        line.rfind("Test ", 0) == 0) {
      found.push_back(line);
    }
  }
  return found;
}

class RunDriverTest : public PlayerTest {};

TEST_F(RunDriverTest, FlippedGoldenBytesFailWithTheExactListing) {
  writeCopyCase(20, {5, 17});
  // 12 runs: the run prefix after the listing must still be decimal.
  const PlayerResult result = run(with(kCopyArgs, {"-l", "12"}));
  EXPECT_EQ(result.status, 255);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(maskTimes(result.out), std::string(kCopyEcho) +
                                       "[1/12] Test pattern start...\n"
                                       "Running command:  -f copy.bin -i in.bin -o out.bin\n"
                                       "Execution info of command:  -f copy.bin -i in.bin -o out.bin\n" +
                                       kTiming +
                                       "Golden data not found for argument in\n"
                                       "Skip compare golden of argument in\n"
                                       "Result does not match golden data.\n"
                                       "Diff:\n"
                                       "0 0 0 0  0 5a 0 0  0 0 0 0  0 0 0 0 \n"
                                       "0 5a 0 0  Test failed for argument out\n"
                                       "[1/12] Test pattern failed!!!\n");
}

TEST_F(RunDriverTest, RunPrefixesCountRunsAndAFailedRunEndsTheLoop) {
  writeCopyCase(8);
  PlayerResult result = run(with(kCopyArgs, {"-l", "3"}));
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(linesStartingWith(result.out, "["),
            (Lines{"[1/3] Test pattern start...", "[1/3] Test pattern passed!!!", "[2/3] Test pattern start...",
                   "[2/3] Test pattern passed!!!", "[3/3] Test pattern start...", "[3/3] Test pattern passed!!!"}));

  writeCopyCase(8, {0});
  result = run(with(kCopyArgs, {"-l", "3"}));
  EXPECT_EQ(result.status, 255);
  EXPECT_EQ(linesStartingWith(result.out, "["), (Lines{"[1/3] Test pattern start...", "[1/3] Test pattern failed!!!"}));

  // Endless runs stop at the first failure.
  result = run(with(kCopyArgs, {"-l", "-1"}));
  EXPECT_EQ(result.status, 255);
  EXPECT_EQ(linesStartingWith(result.out, "["), (Lines{"[1] Test pattern start...", "[1] Test pattern failed!!!"}));
}

TEST_F(RunDriverTest, NoRunDueOrNothingToRunStillEndsWell) {
  writeCopyCase(8, {0});
  std::vector<TraceCall> calls;
  for (const char* count : {"0", "-5"}) {
    const PlayerResult result = runTraced(with(kCopyArgs, {"-l", count}), calls);
    EXPECT_EQ(result.status, 0) << count;
    EXPECT_EQ(result.out, kCopyEcho) << count;
    EXPECT_EQ(countCalls(calls, "keshCreatePlayer"), 0u) << count;
  }
  // No command at all: each run passes without ever creating a player.
  const PlayerResult result = runTraced({"-l", "2"}, calls);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out,
            "[1/2] Test pattern start...\n[1/2] Test pattern passed!!!\n"
            "[2/2] Test pattern start...\n[2/2] Test pattern passed!!!\n");
  EXPECT_EQ(countCalls(calls, "keshCreatePlayer"), 0u);
}

TEST_F(RunDriverTest, HelpRunsNothing) {
  writeCopyCase(8);
  std::vector<TraceCall> calls;
  const PlayerResult result = runTraced(with(kCopyArgs, {"-h"}), calls);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out.find("Test pattern start..."), std::string::npos);
  EXPECT_NE(result.out.find("This is KESH pattern player. Usage: \n"), std::string::npos);
  EXPECT_TRUE(calls.empty());
}

TEST_F(RunDriverTest, AFailingGroupDoesNotStopLaterGroupsAndSkippedSetsStillGetAPlayer) {
  writeCopyCase(16);  // a whole listing line, so the verdict starts its own line
  writeFile("bad/out.bin", std::vector<uint8_t>(16, 0xee));
  writeText("sets.txt",
            "-f copy.bin -i in.bin -o bad/out.bin -g 0\n"
            "-f copy.bin -i in.bin -o out.bin -l 2 -g 0\n"
            "-f copy.bin -i in.bin -o out.bin -g 1\n"
            "-f copy.bin -i in.bin -o out.bin -l 0");
  std::vector<TraceCall> calls;
  const PlayerResult result = runTraced({"--command", "sets.txt"}, calls);
  EXPECT_EQ(result.status, 255);
  const std::string bad = "-f copy.bin -i in.bin -o bad/out.bin -g 0";
  const std::string twice = "-f copy.bin -i in.bin -o out.bin -l 2 -g 0";
  const std::string later = "-f copy.bin -i in.bin -o out.bin -g 1";
  const std::string passed = "Test passed for argument out";
  EXPECT_EQ(progressLines(result.out),
            (Lines{"Test pattern start...", "Running command: " + bad, "Running command: " + twice,
                   "Running command: " + twice, "Execution info of command: " + bad,
                   "Execution info of command: " + twice, "Execution info of command: " + twice,
                   "Test failed for argument out", passed, passed, "Running command: " + later,
                   "Execution info of command: " + later, passed, "Test pattern failed!!!"}));
  // One player per group, the group of the skipped set included.
  EXPECT_EQ(countCalls(calls, "keshCreatePlayer"), 3u);
  EXPECT_EQ(countCalls(calls, "keshDestroyPlayer"), 3u);
}

TEST_F(RunDriverTest, SessionReuseKeepsOnePlayerPerRun) {
  writeCopyCase(8);
  writeText("sets.txt",
            "-f copy.bin -i in.bin -o out.bin -g 0\n"
            "-f copy.bin -i in.bin -o out.bin -g 1\n"
            "-f copy.bin -i in.bin -o out.bin -g 2\n");
  std::vector<TraceCall> calls;
  PlayerResult result = runTraced({"--command", "sets.txt", "-l", "2", "--session_reused"}, calls);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(countCalls(calls, "keshCreatePlayer"), 2u);
  EXPECT_EQ(countCalls(calls, "keshDestroyPlayer"), 2u);
  // Every graph of a run is made on that run's one player.
  const std::vector<TraceCall> players = callsOf(calls, "keshCreatePlayer");
  const std::vector<TraceCall> graphs = callsOf(calls, "keshCreatePatternGraph");
  ASSERT_EQ(graphs.size(), 6u);
  for (size_t i = 0; i < graphs.size(); ++i) {
    ASSERT_FALSE(graphs[i].args.empty());
    EXPECT_EQ(graphs[i].args[0], players[i / 3].result) << i;
  }

  result = runTraced({"--command", "sets.txt", "-l", "2"}, calls);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(countCalls(calls, "keshCreatePlayer"), 6u);
  EXPECT_EQ(countCalls(calls, "keshDestroyPlayer"), 6u);
}

TEST_F(RunDriverTest, RandomOrderShufflesWholeGroupsEveryRun) {
  writeCopyCase(8);
  writeText("sets.txt",
            "-f copy.bin -i in.bin -o out.bin -g 1 -l 2\n"
            "-f copy.bin -i in.bin -o out.bin -g 2\n");
  const PlayerResult result = run({"--command", "sets.txt", "-r", "-l", "40"});
  ASSERT_EQ(result.status, 0);
  const Lines running = linesStartingWith(result.out, "Running command: ");
  ASSERT_EQ(running.size(), 120u);
  const std::string first = "Running command: -f copy.bin -i in.bin -o out.bin -g 1 -l 2";
  const std::string second = "Running command: -f copy.bin -i in.bin -o out.bin -g 2";
  int firstLeads = 0;
  for (size_t run = 0; run < 40; ++run) {
    const Lines one(running.begin() + static_cast<long>(run * 3), running.begin() + static_cast<long>(run * 3 + 3));
    const bool leads = one[0] == first;
    EXPECT_EQ(one, leads ? (Lines{first, first, second}) : (Lines{second, first, first})) << run;
    firstLeads += leads ? 1 : 0;
  }
  // Each order shows up; all 40 runs alike would happen once in 2^39.
  EXPECT_GT(firstLeads, 0);
  EXPECT_LT(firstLeads, 40);
}

TEST_F(RunDriverTest, ArgumentsWithoutDataOrMemoryAreHandledQuietly) {
  // "in" has neither input nor golden; "scratch" is the library's own buffer.
  writeFile("noalloc.bin", patternBinary({{"in", 0, 16}, {"scratch", 1, 16, true}, {"out", 2, 16}},
                                         {copyOp(2, 0, 16)}));
  writeFile("out.bin", std::vector<uint8_t>(16, 0));
  std::vector<TraceCall> calls;
  const PlayerResult result = runTraced({"-f", "noalloc.bin", "-o", "out.bin"}, calls);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "Pattern argument in not set\n");
  EXPECT_EQ(linesStartingWith(result.out, "Test passed for argument "), (Lines{"Test passed for argument out"}));
  EXPECT_EQ(countCalls(calls, "keshCreateMem"), 2u);
  EXPECT_EQ(countCalls(calls, "keshFlushMem"), 0u);
}

}  // namespace
}  // namespace kesh::testing
