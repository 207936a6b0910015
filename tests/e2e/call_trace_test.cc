// The library calls the tool makes, with their arguments and handles, read
// from the host library's call trace.
#include <string>
#include <vector>

#include "player_test.h"
#include "sample_patterns.h"

namespace kesh::testing {
namespace {

// The argument table queries made for `pattern`: the count, then size and
// table of names, indices, sizes and no-alloc flags of its two arguments.
std::string argQueries(const std::string& pattern) {
  std::string calls = "keshGetPatternArgInfo(pattern=" + pattern + ", type=0, size=1) = 0\n";
  for (const char* type : {"1, size=8", "4, size=8", "3, size=8", "2, size=11"}) {
    for (const char* name : {"keshGetPatternArgInfoSize", "keshGetPatternArgInfo"}) {
      calls += std::string(name) + "(pattern=" + pattern + ", type=" + type + ") = 0\n";
    }
  }
  return calls;
}

std::string execInfo(const std::string& node) {
  std::string calls;
  for (const char* kind : {"1", "0", "65535", "65534"}) {
    calls += "keshGetPatternNodeExecInfo(job=J11, node=" + node + ", kind=" + kind + ", value=#) = 0\n";
  }
  return calls;
}

class CallTraceTest : public PlayerTest {};

TEST_F(CallTraceTest, SetUpWaitCompareAndReleaseFollowTheContract) {
  // Arguments declared out of name order, so name order and creation order differ.
  writeFile("two.bin", patternBinary({{"zeta", 0, 8}, {"alpha", 1, 8}}, {copyOp(1, 0, 8)}));
  writeFile("zeta.bin", std::vector<uint8_t>(8, 1));
  writeFile("alpha.bin", std::vector<uint8_t>(8, 1));
  writeText("sets.txt",
            "-f two.bin -i zeta.bin -o alpha.bin -c 0 -b 5 -f two.bin -i zeta.bin -o alpha.bin "
            "-s 50000000 -a 100000000 --pack\n");
  const PlayerRun result = run({"--command", "sets.txt"});
  ASSERT_EQ(result.status, 0) << result.err;
  // Memory goes in name order, before its node; patterns go last, in order.
  EXPECT_EQ(result.trace, R"(keshCreatePlayer(name="KESH pattern tester") = P1
keshCreatePattern(player=P1, size=192, name="tester_pattern") = T2
keshCreatePattern(player=P1, size=192, name="tester_pattern") = T3
keshCreatePatternGraph(player=P1, name="tester_graph") = G4
keshSetPatternGraphOption(graph=G4, option=0, value=100000000) = 0
keshSetPatternGraphOption(graph=G4, option=1, value=50000000) = 0
keshAddPattern(graph=G4, pattern=T2, reserved0=0, reserved1=0, name="tester_pattern", node=N5) = 0
keshAddPattern(graph=G4, pattern=T3, reserved0=0, reserved1=0, name="tester_pattern", node=N6) = 0
keshSetPatternPack(graph=G4, count=2, nodes=[N5, N6]) = 0
keshBuildPatternGraph(graph=G4) = 0
)" + argQueries("T2") + R"(keshCreateMem(player=P1, size=8, name="zeta") = M7
keshMapMem(mem=M7) = mapped
keshFlushMem(mem=M7) = 0
keshSetPatternNodeArg(node=N5, index=0, mem=M7, size=8) = 0
keshCreateMem(player=P1, size=8, name="alpha") = M8
keshMapMem(mem=M8) = mapped
keshSetPatternNodeArg(node=N5, index=1, mem=M8, size=8) = 0
keshSetPatternNodeOption(node=N5, option=0, value=5) = 0
keshSetPatternNodeOption(node=N5, option=1, value=0) = 0
keshUpdatePatternNode(node=N5) = 0
)" + argQueries("T3") + R"(keshCreateMem(player=P1, size=8, name="zeta") = M9
keshMapMem(mem=M9) = mapped
keshFlushMem(mem=M9) = 0
keshSetPatternNodeArg(node=N6, index=0, mem=M9, size=8) = 0
keshCreateMem(player=P1, size=8, name="alpha") = M10
keshMapMem(mem=M10) = mapped
keshSetPatternNodeArg(node=N6, index=1, mem=M10, size=8) = 0
keshUpdatePatternNode(node=N6) = 0
keshPlayPatternGraph(player=P1, graph=G4, flags=0, job=J11) = 0
keshWaitPatternJob(job=J11) = 0
)" + execInfo("N5") + execInfo("N6") + R"(keshUnmapMem(mem=M7) = 0
keshInvalidateMem(mem=M8) = 0
keshUnmapMem(mem=M8) = 0
keshUnmapMem(mem=M9) = 0
keshInvalidateMem(mem=M10) = 0
keshUnmapMem(mem=M10) = 0
keshDestroyMem(mem=M8) = 0
keshDestroyMem(mem=M7) = 0
keshDestroyPatternNode(node=N5) = 0
keshDestroyMem(mem=M10) = 0
keshDestroyMem(mem=M9) = 0
keshDestroyPatternNode(node=N6) = 0
keshDestroyPatternJob(job=J11) = 0
keshDestroyPatternGraph(graph=G4) = 0
keshDestroyPattern(pattern=T2) = 0
keshDestroyPattern(pattern=T3) = 0
keshDestroyPlayer(player=P1) = 0
)");
}

}  // namespace
}  // namespace kesh::testing
