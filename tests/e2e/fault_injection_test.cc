// Every failure message of the driver, reached through the host library's
// fault injection: exact standard error, nothing on standard output, status 1.
#include <algorithm>
#include <string>
#include <vector>

#include "player_test.h"
#include "testing/sample_patterns.h"

namespace kesh::testing {
namespace {

using Args = std::vector<std::string>;

// Two patterns with node and graph options and packing; "in" has an input
// only and "out" a golden only, in both sub-commands; one player for the run.
const Args kFull = {"--command", "full.txt", "--session_reused"};
const Args kOne = {"-f", "copy.bin", "-i", "in.bin", "-o", "out.bin"};
const Args kTwoGroups = {"--command", "groups.txt"};

struct Fault {
  Args args;
  std::string failing;  // KESH_EMU_FAIL
  std::string err;
};

// A message built from a value (type, option, sub-command) is checked for one value per code
// path; the call trace test pins the order of the calls, so one argument-information type stands for all four.
const Fault kFaults[] = {
    {kFull, "keshCreatePlayer@1", "Failed to create player\n"},
    {kFull, "keshCreatePattern@2", "Failed to create pattern\n"},
    {kFull, "keshCreatePatternGraph@1", "Failed to create pattern graph\n"},
    {kFull, "keshSetPatternGraphOption@1", "Failed to set graph option 0\n"},
    {kFull, "keshSetPatternPack@1", "Failed to set pattern packed\n"},
    {kFull, "keshBuildPatternGraph@1", "Failed to build pattern graph\n"},
    {kFull, "keshGetPatternArgInfo@1", "Failed to get pattern argument number\n"},
    {kFull, "keshGetPatternArgInfoSize@2", "Failed to get pattern argument info size of type 4\n"},
    {kFull, "keshGetPatternArgInfo@3", "Failed to get pattern argument info of type 4\n"},
    {kFull, "keshCreateMem@2", "Failed to create memory for pattern argument out\n"},
    {kFull, "keshMapMem@3", "Failed to map memory for pattern argument in\n"},
    {kFull, "keshFlushMem@1", "Failed to flush memory for pattern argument in\n"},
    {kFull, "keshSetPatternNodeArg@4", "Failed to set pattern argument out\n"},
    {kFull, "keshSetPatternNodeOption@1", "Failed to set pattern option 0\n"},
    {kFull, "keshUpdatePatternNode@2", "Failed to update pattern\n"},
    {kFull, "keshPlayPatternGraph@1", "Failed to play pattern\n"},
    {kFull, "keshWaitPatternJob@1", "Failed to wait for pattern job completion\n"},
    {kFull, "keshGetPatternNodeExecInfo@1", "Failed to get IP time of sub-command 0\n"},
    {kFull, "keshGetPatternNodeExecInfo@2", "Failed to get driver time of sub-command 0\n"},
    {kFull, "keshGetPatternNodeExecInfo@3", "Failed to get start timestamp of sub-command 0\n"},
    {kFull, "keshGetPatternNodeExecInfo@4", "Failed to get end timestamp of sub-command 0\n"},
    {kFull, "keshInvalidateMem@2", "Failed to invalidate memory for argument out\n"},
    {kFull, "keshUnmapMem@3", "Failed to unmap memory\n"},
    {kFull, "keshDestroyMem@3", "Failed to destroy memory\n"},
    {kFull, "keshDestroyPatternNode@2", "Failed to destroy pattern node\n"},
    {kFull, "keshDestroyPatternJob@1", "Failed to destroy pattern job\n"},
    {kFull, "keshDestroyPatternGraph@1", "Failed to destroy pattern graph\n"},
    {kFull, "keshDestroyPattern@2", "Failed to destroy pattern\n"},
    {kFull, "keshDestroyPlayer@1", "Failed to destroy player\n"},
    // The second group's player goes after that group's results are printed.
    {kTwoGroups, "keshDestroyPlayer@2", "Failed to destroy player\n"},
    // Not fatal itself: the node stays null and the first call made on it fails.
    {kOne, "keshAddPattern@1", "Failed to add pattern to graph\nFailed to set pattern argument in\n"},
    {{"-f", "empty.bin"}, "", "Pattern argument info size is zero for type 1\n"},
};

class FaultInjectionTest : public PlayerTest, public ::testing::WithParamInterface<Fault> {};

TEST_P(FaultInjectionTest, EndsWithItsMessageAndStatus) {
  writeCopyCase(24);
  writeText("full.txt",
            "-f copy.bin -i in.bin -o out.bin -c 0 -b 5 -f copy.bin -i in.bin -o out.bin "
            "-s 50000000 -a 100000000 --pack\n");
  writeText("groups.txt", "-f copy.bin -i in.bin -o out.bin -g 0\n-f copy.bin -i in.bin -o out.bin -g 1\n");
  writeFile("empty.bin", patternBinary({}, {}));
  const PlayerRun result = run(GetParam().args, GetParam().failing);
  EXPECT_EQ(result.err, GetParam().err);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(countLines(result.out, "Failed"), 0u);
  EXPECT_EQ(countLines(result.out, "Test pattern passed"), 0u);
  if (GetParam().args == kTwoGroups) {
    EXPECT_EQ(countLines(result.out, "Test passed for argument out"), 2u);
  }
}

// Named by the failing call ("keshMapMem_3").
std::string faultName(const ::testing::TestParamInfo<Fault>& row) {
  std::string name = row.param.failing.empty() ? "NothingFailsButThePatternHasNoArguments" : row.param.failing;
  std::replace(name.begin(), name.end(), '@', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(All, FaultInjectionTest, ::testing::ValuesIn(kFaults), faultName);

}  // namespace
}  // namespace kesh::testing
