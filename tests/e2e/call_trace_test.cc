// The library calls the tool makes, in order, read from the host library's
// call trace.
#include <map>
#include <string>
#include <vector>

#include "player_test.h"
#include "test_patterns.h"

namespace kesh::testing {
namespace {

using Names = std::vector<std::string>;

Names repeat(const Names& names, size_t times) {
  Names out;
  for (size_t i = 0; i < times; ++i) out.insert(out.end(), names.begin(), names.end());
  return out;
}

Names concat(std::initializer_list<Names> parts) {
  Names out;
  for (const Names& part : parts) out.insert(out.end(), part.begin(), part.end());
  return out;
}

// The first argument value of `call` that names a handle of `letter`.
std::string handleArg(const TraceCall& call, char letter) {
  for (const std::string& value : call.args) {
    if (value.size() > 1 && value[0] == letter && value.find_first_not_of("0123456789", 1) == std::string::npos) {
      return value;
    }
  }
  return "";
}

std::vector<std::string> argColumn(const std::vector<TraceCall>& calls, size_t column) {
  std::vector<std::string> values;
  for (const TraceCall& call : calls) values.push_back(column < call.args.size() ? call.args[column] : "?");
  return values;
}

class CallTraceTest : public PlayerTest {};

TEST_F(CallTraceTest, SetUpWaitCompareAndReleaseFollowTheContract) {
  writeCopyCase(24);
  writeText("sets.txt",
            "-f copy.bin -i in.bin -o out.bin -c 0 -b 5 -f copy.bin -i in.bin -o out.bin "
            "-s 50000000 -a 100000000 --pack\n");
  std::vector<TraceCall> calls;
  const PlayerResult result = runTraced({"--command", "sets.txt"}, calls);
  ASSERT_EQ(result.status, 0) << result.err;

  const Names queries = concat({{"keshGetPatternArgInfo"},
                                repeat({"keshGetPatternArgInfoSize", "keshGetPatternArgInfo"}, 4)});
  const Names bindIn = {"keshCreateMem", "keshMapMem", "keshFlushMem", "keshSetPatternNodeArg"};
  const Names bindOut = {"keshCreateMem", "keshMapMem", "keshSetPatternNodeArg"};
  const Names compare = {"keshUnmapMem", "keshInvalidateMem", "keshUnmapMem"};
  const Names release = {"keshDestroyMem", "keshDestroyMem", "keshDestroyPatternNode"};
  EXPECT_EQ(callNames(calls),
            concat({{"keshCreatePlayer", "keshCreatePattern", "keshCreatePattern", "keshCreatePatternGraph",
                     "keshSetPatternGraphOption", "keshSetPatternGraphOption", "keshAddPattern", "keshAddPattern",
                     "keshSetPatternPack", "keshBuildPatternGraph"},
                    queries, bindIn, bindOut,
                    {"keshSetPatternNodeOption", "keshSetPatternNodeOption", "keshUpdatePatternNode"},
                    queries, bindIn, bindOut, {"keshUpdatePatternNode"},
                    {"keshPlayPatternGraph", "keshWaitPatternJob"}, repeat({"keshGetPatternNodeExecInfo"}, 8),
                    compare, compare, release, release,
                    {"keshDestroyPatternJob", "keshDestroyPatternGraph", "keshDestroyPattern", "keshDestroyPattern",
                     "keshDestroyPlayer"}}));

  // Fixed names, option keys in ascending order, fixed query and info orders.
  EXPECT_EQ(callsOf(calls, "keshCreatePlayer").at(0).args, (Names{"\"KESH pattern tester\""}));
  EXPECT_EQ(callsOf(calls, "keshCreatePatternGraph").at(0).args.at(1), "\"tester_graph\"");
  for (const TraceCall& call : callsOf(calls, "keshCreatePattern")) {
    EXPECT_EQ(call.args.at(1), std::to_string(copyPattern(24).size()));
    EXPECT_EQ(call.args.at(2), "\"tester_pattern\"");
  }
  for (const TraceCall& call : callsOf(calls, "keshAddPattern")) {
    EXPECT_EQ(call.args.at(2), "0");
    EXPECT_EQ(call.args.at(3), "0");
    EXPECT_EQ(call.args.at(4), "\"tester_pattern\"");
  }
  EXPECT_EQ(argColumn(callsOf(calls, "keshSetPatternGraphOption"), 1), (Names{"0", "1"}));
  EXPECT_EQ(argColumn(callsOf(calls, "keshSetPatternGraphOption"), 2), (Names{"100000000", "50000000"}));
  EXPECT_EQ(argColumn(callsOf(calls, "keshSetPatternNodeOption"), 1), (Names{"0", "1"}));
  EXPECT_EQ(argColumn(callsOf(calls, "keshSetPatternNodeOption"), 2), (Names{"5", "0"}));
  EXPECT_EQ(callsOf(calls, "keshSetPatternPack").at(0).args.at(1), "2");
  EXPECT_EQ(argColumn(callsOf(calls, "keshGetPatternArgInfoSize"), 1), repeat({"1", "4", "3", "2"}, 2));
  EXPECT_EQ(argColumn(callsOf(calls, "keshGetPatternArgInfo"), 1), repeat({"0", "1", "4", "3", "2"}, 2));
  EXPECT_EQ(callsOf(calls, "keshGetPatternArgInfo").at(0).args.at(2), "1");
  EXPECT_EQ(argColumn(callsOf(calls, "keshGetPatternNodeExecInfo"), 2),
            repeat({"1", "0", "65535", "65534"}, 2));
  EXPECT_EQ(argColumn(callsOf(calls, "keshCreateMem"), 2), repeat({"\"in\"", "\"out\""}, 2));
  EXPECT_EQ(callsOf(calls, "keshPlayPatternGraph").at(0).args.at(2), "0");
}

TEST_F(CallTraceTest, MemoryIsReleasedInNameOrderThenNodesJobGraphAndPatterns) {
  // Declared out of name order, so name order and creation order differ.
  writeFile("two.bin", patternBinary({{"zeta", 0, 8}, {"alpha", 1, 8}}, {copyOp(1, 0, 8)}));
  writeFile("zeta.bin", std::vector<uint8_t>(8, 1));
  writeFile("alpha.bin", std::vector<uint8_t>(8, 1));
  std::vector<TraceCall> calls;
  const PlayerResult result =
      runTraced({"-f", "two.bin", "-i", "zeta.bin", "-o", "alpha.bin", "-f", "two.bin", "-i", "zeta.bin"}, calls);
  ASSERT_EQ(result.status, 0) << result.err;

  std::map<std::string, std::string> memName;
  for (const TraceCall& call : callsOf(calls, "keshCreateMem")) memName[call.result] = call.args.at(2);
  Names destroyed;
  for (const TraceCall& call : callsOf(calls, "keshDestroyMem")) destroyed.push_back(memName[handleArg(call, 'M')]);
  EXPECT_EQ(destroyed, (Names{"\"alpha\"", "\"zeta\"", "\"alpha\"", "\"zeta\""}));

  // Each sub-command's memory goes before its node; patterns go last, in order.
  Names order;
  for (const TraceCall& call : calls) {
    if (call.name.rfind("keshDestroy", 0) == 0) order.push_back(call.name);
  }
  EXPECT_EQ(order, (Names{"keshDestroyMem", "keshDestroyMem", "keshDestroyPatternNode", "keshDestroyMem",
                          "keshDestroyMem", "keshDestroyPatternNode", "keshDestroyPatternJob",
                          "keshDestroyPatternGraph", "keshDestroyPattern", "keshDestroyPattern",
                          "keshDestroyPlayer"}));
  const std::vector<TraceCall> patterns = callsOf(calls, "keshCreatePattern");
  const std::vector<TraceCall> released = callsOf(calls, "keshDestroyPattern");
  ASSERT_EQ(released.size(), 2u);
  EXPECT_EQ(handleArg(released[0], 'T'), patterns.at(0).result);
  EXPECT_EQ(handleArg(released[1], 'T'), patterns.at(1).result);
  const std::vector<TraceCall> nodes = callsOf(calls, "keshDestroyPatternNode");
  ASSERT_EQ(nodes.size(), 2u);
  EXPECT_EQ(handleArg(nodes[0], 'N'), handleArg(callsOf(calls, "keshSetPatternNodeArg").at(0), 'N'));
}

TEST_F(CallTraceTest, AllJobsOfAGroupStartBeforeTheFirstWaitAndEndNewestFirst) {
  writeCopyCase(8);
  writeText("sets.txt",
            "-f copy.bin -i in.bin -o out.bin -l 2 -g 0\n"
            "-f copy.bin -i in.bin -o out.bin -b 7 -g 0\n");
  std::vector<TraceCall> calls;
  const PlayerResult result = runTraced({"--command", "sets.txt"}, calls);
  ASSERT_EQ(result.status, 0) << result.err;

  Names milestones;
  for (const TraceCall& call : calls) {
    if (call.name == "keshCreatePatternGraph" || call.name == "keshPlayPatternGraph" ||
        call.name == "keshWaitPatternJob" || call.name == "keshInvalidateMem" ||
        call.name == "keshDestroyPatternJob" || call.name == "keshCreatePlayer" ||
        call.name == "keshDestroyPlayer") {
      milestones.push_back(call.name);
    }
  }
  EXPECT_EQ(milestones,
            concat({{"keshCreatePlayer"}, repeat({"keshCreatePatternGraph", "keshPlayPatternGraph"}, 3),
                    repeat({"keshWaitPatternJob"}, 3), repeat({"keshInvalidateMem"}, 3),
                    repeat({"keshDestroyPatternJob"}, 3), {"keshDestroyPlayer"}}));

  Names played;
  for (const TraceCall& call : callsOf(calls, "keshPlayPatternGraph")) played.push_back(handleArg(call, 'J'));
  Names waited;
  for (const TraceCall& call : callsOf(calls, "keshWaitPatternJob")) waited.push_back(handleArg(call, 'J'));
  Names released;
  for (const TraceCall& call : callsOf(calls, "keshDestroyPatternJob")) released.push_back(handleArg(call, 'J'));
  ASSERT_EQ(played.size(), 3u);
  EXPECT_FALSE(played[0].empty());
  EXPECT_EQ(waited, played);
  EXPECT_EQ(released, (Names{played[2], played[1], played[0]}));
  EXPECT_EQ(argColumn(callsOf(calls, "keshSetPatternNodeOption"), 2), (Names{"7"}));
}

}  // namespace
}  // namespace kesh::testing
