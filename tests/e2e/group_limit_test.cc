// Groups at and over the limit of 63 concurrent jobs. Many library worker
// threads run at once here, so this suite also runs under the thread checker.
#include <string>

#include "player_test.h"

namespace kesh::testing {
namespace {

class GroupLimitTest : public PlayerTest {};

TEST_F(GroupLimitTest, SixtyThreeJobsAllStartBeforeTheFirstWaitAndPass) {
  writeCopyCase(4096);
  writeText("sets.txt", "-f copy.bin -i in.bin -o out.bin -l 31 -g 0\n-f copy.bin -i in.bin -o out.bin -l 32 -g 0\n");
  const PlayerRun result = run({"--command", "sets.txt"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(countLines(result.out, "Running command: "), 63u);
  EXPECT_EQ(countLines(result.out, "Test passed for argument out"), 63u);
  EXPECT_EQ(countLines(result.trace, "keshCreatePlayer("), 1u);
  const std::string beforeWait = result.trace.substr(0, result.trace.find("keshWaitPatternJob("));
  EXPECT_EQ(countLines(beforeWait, "keshPlayPatternGraph("), 63u);
}

TEST_F(GroupLimitTest, TheSixtyFourthSetUpEndsTheProcessBeforeItsPlay) {
  writeCopyCase(64);
  writeText("sets.txt", "-f copy.bin -i in.bin -o out.bin -l 32 -g 0\n-f copy.bin -i in.bin -o out.bin -l 32 -g 0\n");
  writeText("endless.txt", "-f copy.bin -i in.bin -o out.bin -l -1\n");
  for (const char* sets : {"sets.txt", "endless.txt"}) {
    const PlayerRun result = run({"--command", sets});
    EXPECT_EQ(result.status, 1) << sets;
    EXPECT_EQ(result.err, "Exceed maximum number of commands in one command group, make sure the command group "
                          "size is less than 64\n") << sets;
    EXPECT_EQ(countLines(result.out, "Running command: "), 64u) << sets;
    EXPECT_EQ(countLines(result.trace, "keshUpdatePatternNode("), 64u) << sets;
    EXPECT_EQ(countLines(result.trace, "keshPlayPatternGraph("), 63u) << sets;
    EXPECT_EQ(countLines(result.trace, "keshWaitPatternJob("), 0u) << sets;
  }
}

}  // namespace
}  // namespace kesh::testing
