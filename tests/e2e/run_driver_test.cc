// Runs, groups, players, verdicts and exact output of the tool, seen from outside.
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "player_test.h"
#include "testing/read_file.h"
#include "testing/sample_patterns.h"

namespace kesh::testing {
namespace {

using Args = std::vector<std::string>;

class RunDriverTest : public PlayerTest {};

// The README's main-job command: the six built-in cases in one command set.
TEST_F(RunDriverTest, AllSixBuiltInCasesPassWithExactLines) {
  const PlayerRun result = run({"-t", "0", "-t", "1", "-t", "2", "-t", "3", "-t", "4", "-t", "5"});
  EXPECT_EQ(result.out, readFile(KESH_E2E_SOURCE_DIR "/all_six_cases.txt"));
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST_F(RunDriverTest, FlippedGoldenBytesFailWithTheExactListing) {
  writeCopyCase(20, {5, 17});
  // 12 runs: the run prefix after the listing must still be decimal.
  const PlayerRun result = run({"-f", "copy.bin", "-i", "in.bin", "-o", "out.bin", "-l", "12"});
  EXPECT_EQ(result.out,
            "Pattern binary: copy.bin\nPattern input 0: in.bin\nPattern golden 0: out.bin\n"
            "[1/12] Test pattern start...\n"
            "Running command:  -f copy.bin -i in.bin -o out.bin\n"
            "Execution info of command:  -f copy.bin -i in.bin -o out.bin\n"
            "    IP time of sub-command 0: # us\n"
            "    Driver time of sub-command 0: # us\n"
            "    Timestamp start of sub-command 0: #\n"
            "    Timestamp end of sub-command 0: #\n"
            "Golden data not found for argument in\n"
            "Skip compare golden of argument in\n"
            "Result does not match golden data.\n"
            "Diff:\n"
            "0 0 0 0  0 5a 0 0  0 0 0 0  0 0 0 0 \n"
            "0 5a 0 0  Test failed for argument out\n"
            "[1/12] Test pattern failed!!!\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 255);
}

struct Runs {
  const char* name;
  Args args;
  std::string verdicts;  // the lines with "Test pattern"
  int status;
  size_t players;
};

const Runs kRuns[] = {
    {"ThreeRunsAllPass", {"--command", "pass.txt", "-l", "3"},
     "[1/3] Test pattern start...\n[1/3] Test pattern passed!!!\n[2/3] Test pattern start...\n"
     "[2/3] Test pattern passed!!!\n[3/3] Test pattern start...\n[3/3] Test pattern passed!!!\n",
     0, 3},
    // A failed run ends the loop, an endless one too.
    {"AFailureEndsTheLoop", {"--command", "fail.txt", "-l", "3"},
     "[1/3] Test pattern start...\n[1/3] Test pattern failed!!!\n", 255, 1},
    {"AFailureEndsAnEndlessLoop", {"--command", "fail.txt", "-l", "-1"},
     "[1] Test pattern start...\n[1] Test pattern failed!!!\n", 255, 1},
    // No run due, help, or nothing to run: no player, and a good end.
    {"NoRunDue", {"--command", "fail.txt", "-l", "0"}, "", 0, 0},
    {"Help", {"--command", "fail.txt", "-h"}, "", 0, 0},
    // Three groups; with --session_reused one player per run serves them all.
    {"ReusedSessionOnePlayerPerRun", {"--command", "groups.txt", "-l", "2", "--session_reused"},
     "[1/2] Test pattern start...\n[1/2] Test pattern passed!!!\n[2/2] Test pattern start...\n"
     "[2/2] Test pattern passed!!!\n", 0, 2},
    {"NothingToRun", {"-l", "2"},
     "[1/2] Test pattern start...\n[1/2] Test pattern passed!!!\n"
     "[2/2] Test pattern start...\n[2/2] Test pattern passed!!!\n", 0, 0},
};

class RunLoopTest : public PlayerTest, public ::testing::WithParamInterface<Runs> {};

TEST_P(RunLoopTest, PrefixesVerdictsStatusAndPlayers) {
  writeCopyCase(8);
  writeCopyCase(8, {0}, "bad/out.bin");
  writeText("pass.txt", "-f copy.bin -i in.bin -o out.bin\n");
  writeText("fail.txt", "-f copy.bin -i in.bin -o bad/out.bin\n");
  writeText("groups.txt", "-f copy.bin -i in.bin -o out.bin -g 0\n-f copy.bin -i in.bin -o out.bin -g 1\n"
                          "-f copy.bin -i in.bin -o out.bin -g 2\n");
  const PlayerRun result = run(GetParam().args);
  EXPECT_EQ(linesWith(result.out, {"Test pattern"}), GetParam().verdicts);
  EXPECT_EQ(result.status, GetParam().status);
  EXPECT_EQ(countLines(result.trace, "keshCreatePlayer("), GetParam().players);
  EXPECT_EQ(result.err, "");
}

INSTANTIATE_TEST_SUITE_P(All, RunLoopTest, ::testing::ValuesIn(kRuns),
                         [](const ::testing::TestParamInfo<Runs>& row) { return std::string(row.param.name); });

TEST_F(RunDriverTest, AFailingGroupDoesNotStopLaterGroupsAndSkippedSetsStillGetAPlayer) {
  writeCopyCase(16);  // a whole listing line, so the verdict starts its own line
  writeCopyCase(16, {0}, "bad/out.bin");
  writeText("sets.txt",
            "-f copy.bin -i in.bin -o bad/out.bin -g 0\n"
            "-f copy.bin -i in.bin -o out.bin -l 2 -g 0\n"
            "-f copy.bin -i in.bin -o out.bin -g 1\n"
            "-f copy.bin -i in.bin -o out.bin -l 0");
  const PlayerRun result = run({"--command", "sets.txt"});
  // Every comparison of the failing group is made: the AND does not stop early.
  EXPECT_EQ(linesWith(result.out, {"Test "}),
            "Test pattern start...\nTest failed for argument out\nTest passed for argument out\n"
            "Test passed for argument out\nTest passed for argument out\nTest pattern failed!!!\n");
  EXPECT_EQ(result.status, 255);
  // Jobs are waited in creation order and released newest first; the skipped
  // set's group gets a player all the same.
  EXPECT_EQ(linesWith(result.trace, {"Player(", "keshWaitPatternJob(", "keshDestroyPatternJob("}),
            R"(keshCreatePlayer(name="KESH pattern tester") = P1
keshDestroyPlayer(player=P1) = 0
keshCreatePlayer(name="KESH pattern tester") = P2
keshWaitPatternJob(job=J1) = 0
keshWaitPatternJob(job=J2) = 0
keshWaitPatternJob(job=J3) = 0
keshDestroyPatternJob(job=J3) = 0
keshDestroyPatternJob(job=J2) = 0
keshDestroyPatternJob(job=J1) = 0
keshDestroyPlayer(player=P2) = 0
keshCreatePlayer(name="KESH pattern tester") = P3
keshWaitPatternJob(job=J4) = 0
keshDestroyPatternJob(job=J4) = 0
keshDestroyPlayer(player=P3) = 0
)");
}

TEST_F(RunDriverTest, RandomOrderShufflesWholeGroupsEveryRun) {
  writeCopyCase(8);
  writeText("sets.txt", "-f copy.bin -i in.bin -o out.bin -g 1 -l 2\n-f copy.bin -i in.bin -o out.bin -g 2\n");
  const PlayerRun result = run({"--command", "sets.txt", "-r", "-l", "40"});
  ASSERT_EQ(result.status, 0);
  // Each run as a string of group numbers, one per set-up.
  std::string order;
  std::istringstream running(linesWith(result.out, {"Running command: "}));
  for (std::string line; std::getline(running, line);) order += line.substr(line.find("-g ") + 3, 1);
  std::set<std::string> runs;
  for (size_t at = 0; at < order.size(); at += 3) runs.insert(order.substr(at, 3));
  // Every run keeps each group whole; each order shows up (all 40 alike would happen once in 2^39).
  EXPECT_EQ(order.size(), 120u);
  EXPECT_EQ(runs, (std::set<std::string>{"112", "211"}));
}

TEST_F(RunDriverTest, ArgumentsWithoutDataOrMemoryAreHandledQuietly) {
  // "in" has neither input nor golden; "scratch" is the library's own buffer.
  writeFile("noalloc.bin",
            patternBinary({{"in", 0, 16}, {"scratch", 1, 16, true}, {"out", 2, 16}}, {copyOp(2, 0, 16)}));
  writeFile("out.bin", std::vector<uint8_t>(16, 0));
  const PlayerRun result = run({"-f", "noalloc.bin", "-o", "out.bin"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "Pattern argument in not set\n");
  EXPECT_EQ(linesWith(result.out, {"argument"}),
            "Golden data not found for argument in\nSkip compare golden of argument in\nTest passed for argument out\n");
  EXPECT_EQ(countLines(result.trace, "keshCreateMem("), 2u);
  EXPECT_EQ(countLines(result.trace, "keshFlushMem("), 0u);
}

}  // namespace
}  // namespace kesh::testing
