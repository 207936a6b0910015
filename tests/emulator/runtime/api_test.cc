// The C entry points: argument introspection, handle checking, the order
// rules of graphs and nodes, and the ranges of options.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <thread>

#include "test_patterns.h"

namespace kesh::runtime::testing {
namespace {

class ApiTest : public ::testing::Test {
 protected:
  void SetUp() override { player_ = keshCreatePlayer("KESH pattern tester"); ASSERT_NE(player_, nullptr); }
  _kesh_player* player_ = nullptr;
};

TEST_F(ApiTest, ArgumentInfoHasTheLayoutsTheToolReads) {
  _pattern* pattern = loadPattern(player_, scratchPattern(40));
  ASSERT_NE(pattern, nullptr);

  uint32_t count = 0xFFFFFFFFu;  // a size of 1 must still write all four bytes
  ASSERT_EQ(keshGetPatternArgInfo(pattern, PATTERN_ARG_INFO_NUM, &count, 1), 0);
  EXPECT_EQ(count, 3u);
  EXPECT_NE(keshGetPatternArgInfo(pattern, PATTERN_ARG_INFO_NUM, &count, 0), 0);

  const std::string names = "in;scratch;out";
  const struct {
    pattern_arg_info_type type;  // only valid values here
    uint32_t size;
    std::vector<uint32_t> values;
  } tables[] = {{PATTERN_ARG_INFO_INDEX, 12, {0, 9, 2}},
                {PATTERN_ARG_INFO_NO_ALLOC, 12, {0, 1, 0}},
                {PATTERN_ARG_INFO_SIZE, 12, {40, 40, 40}},
                {PATTERN_ARG_INFO_NAME, static_cast<uint32_t>(names.size() + 1), {}}};
  for (const auto& table : tables) {
    SCOPED_TRACE(table.type);
    uint32_t size = 0;
    ASSERT_EQ(keshGetPatternArgInfoSize(pattern, table.type, &size), 0);
    EXPECT_EQ(size, table.size);
    std::vector<uint8_t> buffer(size, 0xAA);
    EXPECT_NE(keshGetPatternArgInfo(pattern, table.type, buffer.data(), size - 1), 0);
    ASSERT_EQ(keshGetPatternArgInfo(pattern, table.type, buffer.data(), size), 0);
    if (table.type == PATTERN_ARG_INFO_NAME) {
      EXPECT_EQ(std::string(reinterpret_cast<const char*>(buffer.data()), size), names + '\0');
    } else {
      std::vector<uint32_t> values(3);
      std::memcpy(values.data(), buffer.data(), 12);
      EXPECT_EQ(values, table.values);
    }
  }
  uint32_t size = 0;
  EXPECT_NE(keshGetPatternArgInfoSize(pattern, static_cast<pattern_arg_info_type>(5), &size), 0);
}

TEST_F(ApiTest, MalformedOrMissingBinariesAreRefused) {
  std::vector<uint8_t> good = copyPattern(16);
  EXPECT_EQ(keshCreatePattern(player_, good.data(), static_cast<uint32_t>(good.size() - 1), "p"), nullptr);
  std::vector<uint8_t> garbage(good.size(), 0x5A);
  EXPECT_EQ(keshCreatePattern(player_, garbage.data(), static_cast<uint32_t>(garbage.size()), "p"), nullptr);
  EXPECT_EQ(keshCreatePattern(player_, nullptr, 64, "p"), nullptr);
  EXPECT_EQ(keshCreatePattern(player_, good.data(), 0, "p"), nullptr);
  EXPECT_EQ(keshCreatePattern(nullptr, good.data(), static_cast<uint32_t>(good.size()), "p"), nullptr);
}

TEST_F(ApiTest, NullForeignMistypedAndDestroyedHandlesFail) {
  // Every handle goes through one table lookup: one call per kind, plus the
  // null output parameters, which each call checks on its own.
  _pattern* pattern = loadPattern(player_, copyPattern(16));
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
  EXPECT_NE(keshGetPatternArgInfo(pattern, PATTERN_ARG_INFO_NUM, nullptr, 4), 0);
  EXPECT_NE(keshPlayPatternGraph(player_, graph, 0, nullptr), 0);
  EXPECT_NE(keshSetPatternPack(graph, 1, nullptr), 0);
  EXPECT_NE(keshSetPatternNodeArg(node, 7, nullptr, 16), 0);
  EXPECT_NE(keshGetPatternNodeExecInfo(nullptr, node, 0, &value), 0);

  int notAHandle = 0;  // a foreign pointer is looked up, never dereferenced
  EXPECT_EQ(keshMapMem(reinterpret_cast<_kesh_mem*>(&notAHandle)), nullptr);
  EXPECT_EQ(keshMapMem(reinterpret_cast<_kesh_mem*>(player_)), nullptr);

  _kesh_mem* mem = keshCreateMem(player_, 8, "m");
  ASSERT_EQ(keshDestroyMem(mem), 0);
  EXPECT_NE(keshDestroyMem(mem), 0);
  EXPECT_EQ(keshMapMem(mem), nullptr);
  _kesh_mem* next = keshCreateMem(player_, 8, "m");
  EXPECT_NE(next, mem);  // ids are never reused
}

TEST_F(ApiTest, GraphsFollowTheBuildOrder) {
  _pattern* pattern = loadPattern(player_, copyPattern(16));
  _pattern_graph* graph = keshCreatePatternGraph(player_, "tester_graph");
  _pattern_node_handle* node = nullptr;
  EXPECT_NE(keshAddPattern(graph, pattern, 1, 0, &node, "n"), 0);
  EXPECT_NE(keshAddPattern(graph, pattern, 0, 0, nullptr, "n"), 0);
  ASSERT_EQ(keshAddPattern(graph, pattern, 0, 0, &node, "n"), 0);
  ASSERT_NE(node, nullptr);

  _pattern_job* job = nullptr;
  EXPECT_NE(keshPlayPatternGraph(player_, graph, 0, &job), 0) << "not built";
  EXPECT_EQ(keshSetPatternPack(graph, 0, nullptr), 0);
  _pattern_node_handle* twice[] = {node, node};
  EXPECT_NE(keshSetPatternPack(graph, 2, twice), 0);
  ASSERT_EQ(keshBuildPatternGraph(graph), 0);
  EXPECT_NE(keshBuildPatternGraph(graph), 0);
  _pattern_node_handle* late = nullptr;
  EXPECT_NE(keshAddPattern(graph, pattern, 0, 0, &late, "n"), 0);
  EXPECT_EQ(late, nullptr) << "a failed call writes no output";
  EXPECT_NE(keshSetPatternPack(graph, 1, &node), 0);

  EXPECT_NE(keshPlayPatternGraph(player_, graph, 0, &job), 0) << "arguments not bound";
  _kesh_mem* in = bindFilled(player_, node, 7, 16, 1);
  ASSERT_NE(in, nullptr);
  _kesh_mem* out = keshCreateMem(player_, 16, "out");
  ASSERT_EQ(keshSetPatternNodeArg(node, 3, out, 16), 0);
  EXPECT_NE(keshPlayPatternGraph(player_, graph, 0, &job), 0) << "staged, not applied";
  ASSERT_EQ(keshUpdatePatternNode(node), 0);
  EXPECT_NE(keshPlayPatternGraph(player_, graph, 1, &job), 0) << "flags must be 0";
  _kesh_player* other = keshCreatePlayer("other");
  EXPECT_NE(keshPlayPatternGraph(other, graph, 0, &job), 0) << "another player";
  ASSERT_EQ(playAndWait(player_, graph, &job), 0);
  EXPECT_EQ(keshWaitPatternJob(job), 0) << "waiting again gives the same answer";

  _pattern_graph* empty = keshCreatePatternGraph(player_, "empty");
  ASSERT_EQ(keshBuildPatternGraph(empty), 0);
  _pattern_job* emptyJob = nullptr;
  EXPECT_EQ(playAndWait(player_, empty, &emptyJob), 0);

  ASSERT_EQ(keshDestroyPatternNode(node), 0);
  EXPECT_NE(keshPlayPatternGraph(player_, graph, 0, &job), 0) << "a node was destroyed";
}

TEST_F(ApiTest, NodeArgumentsAreChecked) {
  _pattern* pattern = loadPattern(player_, scratchPattern(32));
  _pattern_node_handle* node = nullptr;
  ASSERT_NE(singleNodeGraph(player_, pattern, &node), nullptr);
  _kesh_mem* mem = keshCreateMem(player_, 48, "m");
  _kesh_mem* small = keshCreateMem(player_, 16, "m");
  _kesh_player* other = keshCreatePlayer("other");
  _kesh_mem* foreign = keshCreateMem(other, 48, "m");
  EXPECT_EQ(keshSetPatternNodeArg(node, 0, mem, 32), 0);
  EXPECT_EQ(keshSetPatternNodeArg(node, 2, mem, 48), 0) << "up to the memory's size";
  EXPECT_NE(keshSetPatternNodeArg(node, 2, mem, 49), 0);
  EXPECT_NE(keshSetPatternNodeArg(node, 2, mem, 31), 0) << "below the argument's size";
  EXPECT_NE(keshSetPatternNodeArg(node, 2, small, 16), 0);
  EXPECT_NE(keshSetPatternNodeArg(node, 9, mem, 32), 0) << "no-alloc";
  EXPECT_NE(keshSetPatternNodeArg(node, 1, mem, 32), 0) << "a position, not an index";
  EXPECT_NE(keshSetPatternNodeArg(node, 0, foreign, 32), 0);
}

TEST_F(ApiTest, OptionsOutOfRangeFailTheSetter) {
  _pattern* pattern = loadPattern(player_, copyPattern(16));
  _pattern_node_handle* node = nullptr;
  _pattern_graph* graph = singleNodeGraph(player_, pattern, &node);
  ASSERT_NE(graph, nullptr);
  const int cores = static_cast<int>(std::thread::hardware_concurrency());  // KESH_EMU_CORES is unset here
  struct Case {
    int option;  // a plain int: the callers pass any integer
    int32_t value;
    bool ok;
  };
  const int boost = PATTERN_NODE_OPTION_BOOST, core = PATTERN_NODE_OPTION_CORE_AFFINITY;
  const Case nodeCases[] = {{boost, 0, true},  {boost, 100, true},       {boost, -1, false},  {boost, 101, false},
                            {core, -1, true},  {core, cores - 1, true},  {core, -2, false},   {core, cores, false},
                            {2, 0, false}};
  for (const auto& c : nodeCases) {
    int status = keshSetPatternNodeOption(node, static_cast<pattern_node_option_type>(c.option), c.value);
    EXPECT_EQ(status == 0, c.ok) << c.option << " = " << c.value;
  }
  const int hard = PATTERN_GRAPH_OPTION_HARD_LIMIT, soft = PATTERN_GRAPH_OPTION_SOFT_LIMIT;
  const Case graphCases[] = {{hard, 0, true}, {soft, INT32_MAX, true}, {hard, -1, false}, {soft, -5, false}, {2, 1, false}};
  for (const auto& c : graphCases) {
    int status = keshSetPatternGraphOption(graph, static_cast<pattern_graph_option_type>(c.option), c.value);
    EXPECT_EQ(status == 0, c.ok) << c.option << " = " << c.value;
  }
}

}  // namespace
}  // namespace kesh::runtime::testing
