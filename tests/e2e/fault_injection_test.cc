// Every failure message of the driver, reached through the host library's
// fault injection: exact text, on standard error, status 1.
#include <string>
#include <vector>

#include "player_test.h"
#include "test_patterns.h"

namespace kesh::testing {
namespace {

struct Fault {
  std::string failing;   // KESH_EMU_FAIL value
  std::string messages;  // the whole standard error expected
};

std::ostream& operator<<(std::ostream& out, const Fault& fault) { return out << fault.failing; }

// Two patterns with node and graph options and packing; "in" has an input
// only and "out" a golden only, in both sub-commands.
const char kFullSet[] =
    "-f copy.bin -i in.bin -o out.bin -c 0 -b 5 -f copy.bin -i in.bin -o out.bin "
    "-s 50000000 -a 100000000 --pack\n";

class FaultInjectionTest : public PlayerTest, public ::testing::WithParamInterface<Fault> {};

TEST_P(FaultInjectionTest, EndsWithItsMessageAndStatusOne) {
  writeCopyCase(24);
  writeText("sets.txt", kFullSet);
  const PlayerResult result =
      run({"--command", "sets.txt", "--session_reused"}, {{"KESH_EMU_FAIL", GetParam().failing}});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, GetParam().messages);
  EXPECT_EQ(result.out.find("Failed"), std::string::npos);
  EXPECT_EQ(result.out.find("Test pattern passed"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(
    SetUp, FaultInjectionTest,
    ::testing::Values(Fault{"keshCreatePlayer@1", "Failed to create player\n"},
                      Fault{"keshCreatePattern@2", "Failed to create pattern\n"},
                      Fault{"keshCreatePatternGraph@1", "Failed to create pattern graph\n"},
                      Fault{"keshSetPatternGraphOption@1", "Failed to set graph option 0\n"},
                      Fault{"keshSetPatternGraphOption@2", "Failed to set graph option 1\n"},
                      Fault{"keshSetPatternPack@1", "Failed to set pattern packed\n"},
                      Fault{"keshBuildPatternGraph@1", "Failed to build pattern graph\n"},
                      Fault{"keshCreateMem@2", "Failed to create memory for pattern argument out\n"},
                      Fault{"keshMapMem@3", "Failed to map memory for pattern argument in\n"},
                      Fault{"keshFlushMem@1", "Failed to flush memory for pattern argument in\n"},
                      Fault{"keshSetPatternNodeArg@4", "Failed to set pattern argument out\n"},
                      Fault{"keshSetPatternNodeOption@1", "Failed to set pattern option 0\n"},
                      Fault{"keshSetPatternNodeOption@2", "Failed to set pattern option 1\n"},
                      Fault{"keshUpdatePatternNode@2", "Failed to update pattern\n"},
                      Fault{"keshPlayPatternGraph@1", "Failed to play pattern\n"}));

INSTANTIATE_TEST_SUITE_P(
    ArgumentQueries, FaultInjectionTest,
    ::testing::Values(Fault{"keshGetPatternArgInfo@1", "Failed to get pattern argument number\n"},
                      Fault{"keshGetPatternArgInfoSize@1", "Failed to get pattern argument info size of type 1\n"},
                      Fault{"keshGetPatternArgInfoSize@2", "Failed to get pattern argument info size of type 4\n"},
                      Fault{"keshGetPatternArgInfoSize@3", "Failed to get pattern argument info size of type 3\n"},
                      Fault{"keshGetPatternArgInfoSize@8", "Failed to get pattern argument info size of type 2\n"},
                      Fault{"keshGetPatternArgInfo@2", "Failed to get pattern argument info of type 1\n"},
                      Fault{"keshGetPatternArgInfo@3", "Failed to get pattern argument info of type 4\n"},
                      Fault{"keshGetPatternArgInfo@4", "Failed to get pattern argument info of type 3\n"},
                      Fault{"keshGetPatternArgInfo@5", "Failed to get pattern argument info of type 2\n"}));

INSTANTIATE_TEST_SUITE_P(
    Completion, FaultInjectionTest,
    ::testing::Values(Fault{"keshWaitPatternJob@1", "Failed to wait for pattern job completion\n"},
                      Fault{"keshGetPatternNodeExecInfo@1", "Failed to get IP time of sub-command 0\n"},
                      Fault{"keshGetPatternNodeExecInfo@2", "Failed to get driver time of sub-command 0\n"},
                      Fault{"keshGetPatternNodeExecInfo@3", "Failed to get start timestamp of sub-command 0\n"},
                      Fault{"keshGetPatternNodeExecInfo@4", "Failed to get end timestamp of sub-command 0\n"},
                      Fault{"keshGetPatternNodeExecInfo@5", "Failed to get IP time of sub-command 1\n"},
                      Fault{"keshInvalidateMem@2", "Failed to invalidate memory for argument out\n"},
                      Fault{"keshUnmapMem@3", "Failed to unmap memory\n"}));

INSTANTIATE_TEST_SUITE_P(
    TearDown, FaultInjectionTest,
    ::testing::Values(Fault{"keshDestroyMem@3", "Failed to destroy memory\n"},
                      Fault{"keshDestroyPatternNode@2", "Failed to destroy pattern node\n"},
                      Fault{"keshDestroyPatternJob@1", "Failed to destroy pattern job\n"},
                      Fault{"keshDestroyPatternGraph@1", "Failed to destroy pattern graph\n"},
                      Fault{"keshDestroyPattern@2", "Failed to destroy pattern\n"},
                      Fault{"keshDestroyPlayer@1", "Failed to destroy player\n"}));

class FailureTest : public PlayerTest {};

TEST_F(FailureTest, ANodeThatCannotBeAddedIsReportedAndItsLaterCallsFail) {
  writeCopyCase(8);
  const PlayerResult result =
      run({"-f", "copy.bin", "-i", "in.bin", "-o", "out.bin"}, {{"KESH_EMU_FAIL", "keshAddPattern@1"}});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "Failed to add pattern to graph\nFailed to set pattern argument in\n");
}

TEST_F(FailureTest, PlayerOfEveryGroupIsDestroyedAndChecked) {
  writeCopyCase(8);
  writeText("sets.txt", "-f copy.bin -i in.bin -o out.bin -g 0\n-f copy.bin -i in.bin -o out.bin -g 1\n");
  const PlayerResult result = run({"--command", "sets.txt"}, {{"KESH_EMU_FAIL", "keshDestroyPlayer@2"}});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "Failed to destroy player\n");
  // The first group completed; the second group's results are printed before its player goes.
  EXPECT_EQ(linesStartingWith(result.out, "Test passed for argument out").size(), 2u);
}

TEST_F(FailureTest, PatternWithoutArgumentsHasNoTableToQuery) {
  writeFile("empty.bin", patternBinary({}, {}));
  const PlayerResult result = run({"-f", "empty.bin"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "Pattern argument info size is zero for type 1\n");
}

}  // namespace
}  // namespace kesh::testing
