// The library calls the tool makes, with their arguments and handles, read
// from the host library's call trace.
#include <string>
#include <vector>

#include "player_test.h"
#include "testing/sample_patterns.h"

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
    calls += "keshGetPatternNodeExecInfo(job=J1, node=" + node + ", kind=" + kind + ", value=#) = 0\n";
  }
  return calls;
}

// Binding node `node`'s input "zeta" to memory `in` (flushed) and output "alpha" to `out`.
std::string binds(const std::string& node, const std::string& in, const std::string& out) {
  return "keshCreateMem(player=P1, size=8, name=\"zeta\") = " + in + "\nkeshMapMem(mem=" + in +
         ") = mapped\nkeshFlushMem(mem=" + in + ") = 0\nkeshSetPatternNodeArg(node=" + node + ", index=0, mem=" + in +
         ", size=8) = 0\nkeshCreateMem(player=P1, size=8, name=\"alpha\") = " + out + "\nkeshMapMem(mem=" + out +
         ") = mapped\nkeshSetPatternNodeArg(node=" + node + ", index=1, mem=" + out + ", size=8) = 0\n";
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
keshCreatePattern(player=P1, size=192, name="tester_pattern") = T1
keshCreatePattern(player=P1, size=192, name="tester_pattern") = T2
keshCreatePatternGraph(player=P1, name="tester_graph") = G1
keshSetPatternGraphOption(graph=G1, option=0, value=100000000) = 0
keshSetPatternGraphOption(graph=G1, option=1, value=50000000) = 0
keshAddPattern(graph=G1, pattern=T1, reserved0=0, reserved1=0, name="tester_pattern", node=N1) = 0
keshAddPattern(graph=G1, pattern=T2, reserved0=0, reserved1=0, name="tester_pattern", node=N2) = 0
keshSetPatternPack(graph=G1, count=2, nodes=[N1, N2]) = 0
keshBuildPatternGraph(graph=G1) = 0
)" + argQueries("T1") + binds("N1", "M1", "M2") + R"(keshSetPatternNodeOption(node=N1, option=0, value=5) = 0
keshSetPatternNodeOption(node=N1, option=1, value=0) = 0
keshUpdatePatternNode(node=N1) = 0
)" + argQueries("T2") + binds("N2", "M3", "M4") + R"(keshUpdatePatternNode(node=N2) = 0
keshPlayPatternGraph(player=P1, graph=G1, flags=0, job=J1) = 0
keshWaitPatternJob(job=J1) = 0
)" + execInfo("N1") + execInfo("N2") + R"(keshUnmapMem(mem=M1) = 0
keshInvalidateMem(mem=M2) = 0
keshUnmapMem(mem=M2) = 0
keshUnmapMem(mem=M3) = 0
keshInvalidateMem(mem=M4) = 0
keshUnmapMem(mem=M4) = 0
keshDestroyMem(mem=M2) = 0
keshDestroyMem(mem=M1) = 0
keshDestroyPatternNode(node=N1) = 0
keshDestroyMem(mem=M4) = 0
keshDestroyMem(mem=M3) = 0
keshDestroyPatternNode(node=N2) = 0
keshDestroyPatternJob(job=J1) = 0
keshDestroyPatternGraph(graph=G1) = 0
keshDestroyPattern(pattern=T1) = 0
keshDestroyPattern(pattern=T2) = 0
keshDestroyPlayer(player=P1) = 0
)");
}

}  // namespace
}  // namespace kesh::testing
