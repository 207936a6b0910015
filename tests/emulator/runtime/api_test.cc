// The C entry points where the tool never goes: argument-information buffers
// of the wrong size, bad handles, calls out of order; and jobs on the cores:
// node order, limits and the job lifecycle (run with KESH_EMU_CORES=2).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "testing/pattern_calls.h"
#include "testing/sample_patterns.h"

namespace kesh::runtime {
namespace {

using namespace kesh::testing;  // NOLINT: the sample patterns and API helpers

class ApiTest : public ::testing::Test {
 protected:
  /// A graph of `count` nodes of a conv long enough to still run when queried.
  _pattern_graph* convGraph(size_t count, std::vector<_pattern_node_handle*>* nodes) {
    constexpr uint32_t kWidth = 3840, kHeight = 2160;
    _pattern_graph* graph = buildGraph(player_, loadPattern(player_, convPattern(kWidth, kHeight)), nodes, count);
    for (auto* node : *nodes) {
      if (!bindFilled(player_, node, 0, kWidth * kHeight, 9) || !bindFilled(player_, node, 1, kWidth * kHeight, 0)) {
        return nullptr;
      }
    }
    return graph;
  }

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
  EXPECT_EQ(keshCreatePattern(player_, nullptr, 64, "p"), nullptr);
  EXPECT_NE(keshDestroyPlayer(nullptr), 0);
  EXPECT_NE(keshPlayPatternGraph(player_, graph, 0, nullptr), 0);
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

// Values past the ends are refused in the checker's findings, run through the tool.
TEST_F(ApiTest, OptionsAcceptTheEndsOfTheirRanges) {
  _pattern_node_handle* node = nullptr;
  _pattern_graph* graph = singleNodeGraph(player_, loadPattern(player_, copyPattern(16, 7, 3)), &node);
  EXPECT_EQ(keshSetPatternNodeOption(node, PATTERN_NODE_OPTION_BOOST, 100), 0);
  EXPECT_EQ(keshSetPatternNodeOption(node, PATTERN_NODE_OPTION_CORE_AFFINITY, 1), 0) << "the last of two cores";
  EXPECT_EQ(keshSetPatternGraphOption(graph, PATTERN_GRAPH_OPTION_SOFT_LIMIT, 0), 0);
}

TEST_F(ApiTest, UnpackedNodesRunInOrderAndHardLimitFailsTheJobWhereSoftOnlyRecords) {
  std::vector<_pattern_node_handle*> nodes;
  _pattern_graph* graph = convGraph(3, &nodes);
  ASSERT_NE(graph, nullptr);
  _pattern_job* job = nullptr;
  const auto start = [&](size_t i) { return execInfo(job, nodes[i], PATTERN_NODE_EXEC_INFO_START_TIMESTAMP); };
  ASSERT_EQ(keshSetPatternGraphOption(graph, PATTERN_GRAPH_OPTION_SOFT_LIMIT, 1), 0);
  ASSERT_EQ(playAndWait(player_, graph, &job), 0);
  for (size_t i = 1; i < nodes.size(); ++i) {
    EXPECT_GE(start(i), execInfo(job, nodes[i - 1], PATTERN_NODE_EXEC_INFO_END_TIMESTAMP)) << i;
  }
  ASSERT_EQ(keshSetPatternGraphOption(graph, PATTERN_GRAPH_OPTION_HARD_LIMIT, 1), 0);
  EXPECT_NE(playAndWait(player_, graph, &job), 0);
  EXPECT_NE(keshWaitPatternJob(job), 0) << "waiting again gives the same answer";
  EXPECT_EQ(start(1), 0) << "the job stops at the limit";
  ASSERT_EQ(keshSetPatternGraphOption(graph, PATTERN_GRAPH_OPTION_HARD_LIMIT, 60 * 1000000), 0);
  EXPECT_EQ(playAndWait(player_, graph, &job), 0);
}

TEST_F(ApiTest, UnfinishedJobsCannotBeQueriedOrReleased) {
  std::vector<_pattern_node_handle*> nodes;
  _pattern_graph* graph = convGraph(4, &nodes);
  ASSERT_NE(graph, nullptr);
  _pattern_job* job = nullptr;
  ASSERT_EQ(keshPlayPatternGraph(player_, graph, 0, &job), 0);
  int64_t value = 0;
  EXPECT_NE(keshGetPatternNodeExecInfo(job, nodes[3], PATTERN_NODE_EXEC_INFO_IP_TIME, &value), 0);
  EXPECT_NE(keshDestroyPatternJob(job), 0);
  EXPECT_NE(keshDestroyPlayer(player_), 0);
  ASSERT_EQ(keshWaitPatternJob(job), 0);
  EXPECT_EQ(keshDestroyPatternJob(job), 0);
  EXPECT_EQ(keshDestroyPlayer(player_), 0);
}

}  // namespace
}  // namespace kesh::runtime
