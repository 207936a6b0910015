// Groups at and over the limit of 63 concurrent jobs. Many library worker
// threads run at once here, so this suite also runs under the thread checker.
#include <string>
#include <vector>

#include "player_test.h"

namespace kesh::testing {
namespace {

const char kLimitMessage[] =
    "Exceed maximum number of commands in one command group, make sure the command group size is less than 64\n";

class GroupLimitTest : public PlayerTest {};

TEST_F(GroupLimitTest, SixtyThreeJobsRunTogetherAndAllPass) {
  writeCopyCase(4096);
  writeText("sets.txt",
            "-f copy.bin -i in.bin -o out.bin -l 31 -g 0\n"
            "-f copy.bin -i in.bin -o out.bin -l 32 -g 0\n");
  std::vector<TraceCall> calls;
  const PlayerResult result = runTraced({"--command", "sets.txt"}, calls);
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(linesStartingWith(result.out, "Running command: ").size(), 63u);
  EXPECT_EQ(linesStartingWith(result.out, "Test passed for argument out").size(), 63u);
  EXPECT_EQ(countCalls(calls, "keshCreatePlayer"), 1u);
  // Every job is started before the first wait.
  size_t plays = 0;
  for (const TraceCall& call : calls) {
    if (call.name == "keshWaitPatternJob") break;
    if (call.name == "keshPlayPatternGraph") ++plays;
  }
  EXPECT_EQ(plays, 63u);
}

TEST_F(GroupLimitTest, TheSixtyFourthSetUpEndsTheProcessBeforeItsPlay) {
  writeCopyCase(64);
  writeText("sets.txt",
            "-f copy.bin -i in.bin -o out.bin -l 32 -g 0\n"
            "-f copy.bin -i in.bin -o out.bin -l 32 -g 0\n");
  std::vector<TraceCall> calls;
  const PlayerResult result = runTraced({"--command", "sets.txt"}, calls);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, kLimitMessage);
  EXPECT_EQ(linesStartingWith(result.out, "Running command: ").size(), 64u);
  EXPECT_EQ(countCalls(calls, "keshBuildPatternGraph"), 64u);
  EXPECT_EQ(countCalls(calls, "keshUpdatePatternNode"), 64u);
  EXPECT_EQ(countCalls(calls, "keshPlayPatternGraph"), 63u);
  EXPECT_EQ(countCalls(calls, "keshWaitPatternJob"), 0u);
}

TEST_F(GroupLimitTest, EndlessRepetitionStopsAtTheLimit) {
  writeCopyCase(64);
  writeText("sets.txt", "-f copy.bin -i in.bin -o out.bin -l -1\n");
  const PlayerResult result = run({"--command", "sets.txt"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, kLimitMessage);
  EXPECT_EQ(linesStartingWith(result.out, "Running command: ").size(), 64u);
  EXPECT_EQ(result.out.find("Execution info"), std::string::npos);
}

}  // namespace
}  // namespace kesh::testing
