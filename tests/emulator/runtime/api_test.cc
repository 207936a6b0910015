// The C entry points: argument introspection, handle checking, the order
// rules of graphs and nodes, and the ranges of options.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <thread>

#include "test_patterns.h"

namespace kesh::runtime::testing {
namespace {

class ApiTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(player_ = keshCreatePlayer("KESH pattern tester"), nullptr); }
  _kesh_player* player_ = nullptr;
};

TEST_F(ApiTest, ArgumentInfoHasTheLayoutsTheToolReads) {
  _pattern* pattern = loadPattern(player_, scratchPattern(40));
  ASSERT_NE(pattern, nullptr);
  uint32_t count = 0xFFFFFFFFu;  // a size of 1 must still write all four bytes
  ASSERT_EQ(keshGetPatternArgInfo(pattern, PATTERN_ARG_INFO_NUM, &count, 1), 0);
  EXPECT_EQ(count, 3u);
  EXPECT_NE(keshGetPatternArgInfo(pattern, PATTERN_ARG_INFO_NUM, &count, 0), 0);
  const std::pair<pattern_arg_info_type, std::string> tables[] = {
      {PATTERN_ARG_INFO_INDEX, std::string("\0\0\0\0\x09\0\0\0\x02\0\0\0", 12)},
      {PATTERN_ARG_INFO_NO_ALLOC, std::string("\0\0\0\0\x01\0\0\0\0\0\0\0", 12)},
      {PATTERN_ARG_INFO_SIZE, std::string("\x28\0\0\0\x28\0\0\0\x28\0\0\0", 12)},
      {PATTERN_ARG_INFO_NAME, std::string("in;scratch;out\0", 15)}};
  for (const auto& [type, expected] : tables) {
    uint32_t size = 0;
    ASSERT_EQ(keshGetPatternArgInfoSize(pattern, type, &size), 0);
    ASSERT_EQ(size, expected.size()) << type;
    std::string buffer(size, '\xAA');
    EXPECT_NE(keshGetPatternArgInfo(pattern, type, buffer.data(), size - 1), 0);
    ASSERT_EQ(keshGetPatternArgInfo(pattern, type, buffer.data(), size), 0);
    EXPECT_EQ(buffer, expected) << type;
  }
  EXPECT_NE(keshGetPatternArgInfoSize(pattern, static_cast<pattern_arg_info_type>(5), &count), 0);
}

TEST_F(ApiTest, BadBinariesAndNullForeignMistypedOrDestroyedHandlesFail) {
  std::vector<uint8_t> good = copyPattern(16);
  EXPECT_EQ(keshCreatePattern(player_, good.data(), static_cast<uint32_t>(good.size() - 1), "p"), nullptr);
  EXPECT_EQ(keshCreatePattern(player_, nullptr, 64, "p"), nullptr);
  EXPECT_EQ(keshCreatePattern(nullptr, good.data(), static_cast<uint32_t>(good.size()), "p"), nullptr);
  // Every handle goes through one table lookup: one call per kind, plus the
  // null output parameters, which each call checks on its own.
  _pattern* pattern = loadPattern(player_, good);
  _pattern_node_handle* node = nullptr;
  _pattern_graph* graph = singleNodeGraph(player_, pattern, &node);
  int64_t value = 0;
  uint32_t size = 0;
  EXPECT_NE(keshDestroyPlayer(nullptr), 0);
  EXPECT_NE(keshGetPatternArgInfoSize(nullptr, PATTERN_ARG_INFO_NUM, &size), 0);
  EXPECT_NE(keshBuildPatternGraph(nullptr), 0);
  EXPECT_NE(keshUpdatePatternNode(nullptr), 0);
  EXPECT_NE(keshWaitPatternJob(nullptr), 0);
  EXPECT_NE(keshFlushMem(nullptr), 0);
  EXPECT_NE(keshGetPatternArgInfoSize(pattern, PATTERN_ARG_INFO_NUM, nullptr), 0);
  EXPECT_NE(keshPlayPatternGraph(player_, graph, 0, nullptr), 0);
  EXPECT_NE(keshSetPatternNodeArg(node, 7, nullptr, 16), 0);
  EXPECT_NE(keshGetPatternNodeExecInfo(nullptr, node, 0, &value), 0);
  int notAHandle = 0;  // a foreign pointer is looked up, never dereferenced
  EXPECT_EQ(keshMapMem(reinterpret_cast<_kesh_mem*>(&notAHandle)), nullptr);
  EXPECT_EQ(keshMapMem(reinterpret_cast<_kesh_mem*>(player_)), nullptr);
  _kesh_mem* mem = keshCreateMem(player_, 8, "m");
  ASSERT_EQ(keshDestroyMem(mem), 0);
  EXPECT_NE(keshDestroyMem(mem), 0);
  EXPECT_EQ(keshMapMem(mem), nullptr);
  EXPECT_NE(keshCreateMem(player_, 8, "m"), mem);  // ids are never reused
}

TEST_F(ApiTest, GraphsFollowTheBuildOrder) {
  _pattern* pattern = loadPattern(player_, copyPattern(16));
  _pattern_graph* graph = keshCreatePatternGraph(player_, "tester_graph");
  _pattern_node_handle *node = nullptr, *late = nullptr, *twice[2];
  EXPECT_NE(keshAddPattern(graph, pattern, 1, 0, &node, "n"), 0);
  EXPECT_NE(keshAddPattern(graph, pattern, 0, 0, nullptr, "n"), 0);
  ASSERT_EQ(keshAddPattern(graph, pattern, 0, 0, &node, "n"), 0);
  ASSERT_NE(node, nullptr);
  _pattern_job* job = nullptr;
  EXPECT_NE(keshPlayPatternGraph(player_, graph, 0, &job), 0) << "not built";
  EXPECT_EQ(keshSetPatternPack(graph, 0, nullptr), 0);
  twice[0] = twice[1] = node;
  EXPECT_NE(keshSetPatternPack(graph, 2, twice), 0);
  ASSERT_EQ(keshBuildPatternGraph(graph), 0);
  EXPECT_NE(keshBuildPatternGraph(graph), 0);
  EXPECT_NE(keshAddPattern(graph, pattern, 0, 0, &late, "n"), 0);
  EXPECT_EQ(late, nullptr) << "a failed call writes no output";
  EXPECT_NE(keshSetPatternPack(graph, 1, &node), 0);

  EXPECT_NE(keshPlayPatternGraph(player_, graph, 0, &job), 0) << "arguments not bound";
  ASSERT_NE(bindFilled(player_, node, 7, 16, 1), nullptr);
  ASSERT_EQ(keshSetPatternNodeArg(node, 3, keshCreateMem(player_, 16, "out"), 16), 0);
  EXPECT_NE(keshPlayPatternGraph(player_, graph, 0, &job), 0) << "staged, not applied";
  ASSERT_EQ(keshUpdatePatternNode(node), 0);
  EXPECT_NE(keshPlayPatternGraph(player_, graph, 1, &job), 0) << "flags must be 0";
  EXPECT_NE(keshPlayPatternGraph(keshCreatePlayer("other"), graph, 0, &job), 0) << "another player";
  ASSERT_EQ(playAndWait(player_, graph, &job), 0);
  EXPECT_EQ(keshWaitPatternJob(job), 0) << "waiting again gives the same answer";
  std::vector<_pattern_node_handle*> none;
  EXPECT_EQ(playAndWait(player_, buildGraph(player_, pattern, &none, 0), &job), 0) << "an empty graph";
  ASSERT_EQ(keshDestroyPatternNode(node), 0);
  EXPECT_NE(keshPlayPatternGraph(player_, graph, 0, &job), 0) << "a node was destroyed";
}

TEST_F(ApiTest, NodeArgumentsAreChecked) {
  _pattern_node_handle* node = nullptr;
  ASSERT_NE(singleNodeGraph(player_, loadPattern(player_, scratchPattern(32)), &node), nullptr);
  _kesh_mem* mem = keshCreateMem(player_, 48, "m");
  EXPECT_EQ(keshSetPatternNodeArg(node, 0, mem, 32), 0);
  EXPECT_EQ(keshSetPatternNodeArg(node, 2, mem, 48), 0) << "up to the memory's size";
  EXPECT_NE(keshSetPatternNodeArg(node, 2, mem, 49), 0);
  EXPECT_NE(keshSetPatternNodeArg(node, 2, mem, 31), 0) << "below the argument's size";
  EXPECT_NE(keshSetPatternNodeArg(node, 2, keshCreateMem(player_, 16, "m"), 16), 0);
  EXPECT_NE(keshSetPatternNodeArg(node, 9, mem, 32), 0) << "no-alloc";
  EXPECT_NE(keshSetPatternNodeArg(node, 1, mem, 32), 0) << "a position, not an index";
  EXPECT_NE(keshSetPatternNodeArg(node, 0, keshCreateMem(keshCreatePlayer("other"), 48, "m"), 32), 0) << "foreign";
}

TEST_F(ApiTest, OptionsOutOfRangeFailTheSetter) {
  _pattern_node_handle* node = nullptr;
  _pattern_graph* graph = singleNodeGraph(player_, loadPattern(player_, copyPattern(16)), &node);
  ASSERT_NE(graph, nullptr);
  const int cores = static_cast<int>(std::thread::hardware_concurrency());  // KESH_EMU_CORES is unset here
  const int boost = PATTERN_NODE_OPTION_BOOST, core = PATTERN_NODE_OPTION_CORE_AFFINITY;
  const int hard = PATTERN_GRAPH_OPTION_HARD_LIMIT, soft = PATTERN_GRAPH_OPTION_SOFT_LIMIT;
  const struct {
    bool onNode;
    int option;  // a plain int: the callers pass any integer
    int32_t value;
    bool ok;
  } cases[] = {{true, boost, 0, true},   {true, boost, 100, true},       {true, boost, -1, false},
               {true, boost, 101, false}, {true, core, -1, true},         {true, core, cores - 1, true},
               {true, core, -2, false},   {true, core, cores, false},     {true, 2, 0, false},
               {false, hard, 0, true},    {false, soft, INT32_MAX, true}, {false, hard, -1, false},
               {false, soft, -5, false},  {false, 2, 1, false}};
  for (const auto& c : cases) {
    const int status = c.onNode ? keshSetPatternNodeOption(node, static_cast<pattern_node_option_type>(c.option), c.value)
                                : keshSetPatternGraphOption(graph, static_cast<pattern_graph_option_type>(c.option), c.value);
    EXPECT_EQ(status == 0, c.ok) << c.onNode << " " << c.option << " = " << c.value;
  }
}

}  // namespace
}  // namespace kesh::runtime::testing
