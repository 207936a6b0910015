// The C entry points where the tool never goes: argument-information buffers
// of the wrong size, bad handles, calls out of order, options out of range.
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "testing/pattern_calls.h"
#include "testing/sample_patterns.h"

namespace kesh::runtime {
namespace {

using namespace kesh::testing;  // NOLINT: the sample patterns and API helpers

class ApiTest : public ::testing::Test {
 protected:
  _kesh_player* player_ = keshCreatePlayer("KESH pattern tester");
};

TEST_F(ApiTest, ArgumentInfoWritesWholeValuesOrNothing) {
  _pattern* pattern = loadPattern(player_, scratchPattern(40));
  uint32_t count = 0xFFFFFFFFu;  // a size of 1 must still write all four bytes
  ASSERT_EQ(keshGetPatternArgInfo(pattern, PATTERN_ARG_INFO_NUM, &count, 1), 0);
  EXPECT_EQ(count, 3u);
  EXPECT_NE(keshGetPatternArgInfo(pattern, PATTERN_ARG_INFO_NUM, &count, 0), 0);
  uint32_t size = 0;
  ASSERT_EQ(keshGetPatternArgInfoSize(pattern, PATTERN_ARG_INFO_NAME, &size), 0);
  std::string names(size, '\xAA');
  EXPECT_NE(keshGetPatternArgInfo(pattern, PATTERN_ARG_INFO_NAME, names.data(), size - 1), 0);
  EXPECT_EQ(names, std::string(size, '\xAA'));
  EXPECT_NE(keshGetPatternArgInfoSize(pattern, static_cast<pattern_arg_info_type>(5), &size), 0);
}

TEST_F(ApiTest, NullForeignMistypedOrDestroyedHandlesFail) {
  _pattern_node_handle* node = nullptr;
  _pattern_graph* graph = singleNodeGraph(player_, loadPattern(player_, copyPattern(16, 7, 3)), &node);
  int64_t value = 0;
  uint32_t size = 0;
  EXPECT_EQ(keshCreatePattern(player_, nullptr, 64, "p"), nullptr);
  EXPECT_NE(keshDestroyPlayer(nullptr), 0);
  EXPECT_NE(keshGetPatternArgInfoSize(nullptr, PATTERN_ARG_INFO_NUM, &size), 0);
  EXPECT_NE(keshPlayPatternGraph(player_, graph, 0, nullptr), 0);
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
  _pattern* pattern = loadPattern(player_, copyPattern(16, 7, 3));
  _pattern_graph* graph = keshCreatePatternGraph(player_, "tester_graph");
  _pattern_node_handle *node = nullptr, *late = nullptr;
  ASSERT_EQ(keshAddPattern(graph, pattern, 0, 0, &node, "n"), 0);
  _pattern_job* job = nullptr;
  EXPECT_NE(keshPlayPatternGraph(player_, graph, 0, &job), 0) << "not built";
  ASSERT_EQ(keshBuildPatternGraph(graph), 0);
  EXPECT_NE(keshBuildPatternGraph(graph), 0);
  EXPECT_NE(keshAddPattern(graph, pattern, 0, 0, &late, "n"), 0);
  EXPECT_EQ(late, nullptr) << "a failed call writes no output";
  EXPECT_NE(keshSetPatternPack(graph, 1, &node), 0);
  EXPECT_NE(keshPlayPatternGraph(player_, graph, 0, &job), 0) << "arguments not bound";
  ASSERT_NE(bindFilled(player_, node, 7, 16, 1), nullptr);
  _kesh_mem* out = keshCreateMem(player_, 24, "out");
  EXPECT_NE(keshSetPatternNodeArg(node, 3, out, 25), 0) << "over the memory's size";
  EXPECT_NE(keshSetPatternNodeArg(node, 3, out, 15), 0) << "below the argument's size";
  EXPECT_NE(keshSetPatternNodeArg(node, 1, out, 16), 0) << "a position, not an index";
  EXPECT_NE(keshSetPatternNodeArg(node, 3, keshCreateMem(keshCreatePlayer("other"), 16, "m"), 16), 0) << "foreign";
  ASSERT_EQ(keshSetPatternNodeArg(node, 3, out, 24), 0);
  EXPECT_NE(keshPlayPatternGraph(player_, graph, 0, &job), 0) << "staged, not applied";
  ASSERT_EQ(keshUpdatePatternNode(node), 0);
  ASSERT_EQ(playAndWait(player_, graph, &job), 0);
  ASSERT_EQ(keshDestroyPatternNode(node), 0);
  EXPECT_NE(keshPlayPatternGraph(player_, graph, 0, &job), 0) << "a node was destroyed";
}

TEST_F(ApiTest, OptionsOutOfRangeFailTheSetter) {
  _pattern_node_handle* node = nullptr;
  _pattern_graph* graph = singleNodeGraph(player_, loadPattern(player_, copyPattern(16, 7, 3)), &node);
  const int cores = static_cast<int>(std::thread::hardware_concurrency());  // KESH_EMU_CORES is unset here
  EXPECT_EQ(keshSetPatternNodeOption(node, PATTERN_NODE_OPTION_BOOST, 100), 0);
  EXPECT_EQ(keshSetPatternNodeOption(node, PATTERN_NODE_OPTION_CORE_AFFINITY, cores - 1), 0);
  EXPECT_EQ(keshSetPatternGraphOption(graph, PATTERN_GRAPH_OPTION_SOFT_LIMIT, 0), 0);
  EXPECT_NE(keshSetPatternNodeOption(node, PATTERN_NODE_OPTION_BOOST, 101), 0);
  EXPECT_NE(keshSetPatternNodeOption(node, PATTERN_NODE_OPTION_CORE_AFFINITY, cores), 0);
  EXPECT_NE(keshSetPatternNodeOption(node, PATTERN_NODE_OPTION_CORE_AFFINITY, -2), 0);
  EXPECT_NE(keshSetPatternGraphOption(graph, PATTERN_GRAPH_OPTION_HARD_LIMIT, -1), 0);
}

}  // namespace
}  // namespace kesh::runtime
