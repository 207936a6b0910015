// Jobs on the cores through the C API: node order, limits and the job
// lifecycle. Run with KESH_EMU_CORES=2 (set by the test's properties); how
// packs are planned and dispatched is checked in dispatch_test.cc.
#include <gtest/gtest.h>

#include <vector>

#include "test_patterns.h"

namespace kesh::runtime::testing {
namespace {

constexpr uint32_t kWidth = 3840, kHeight = 2160;  // long enough to overlap on two cores

class JobTest : public ::testing::Test {
 protected:
  /// A graph of `count` conv nodes, each with its own memory.
  _pattern_graph* convGraph(size_t count, std::vector<_pattern_node_handle*>* nodes, bool pack = false) {
    _pattern_graph* graph = buildGraph(player_, conv_, nodes, count, pack);
    for (auto* node : *nodes) {
      if (bindFilled(player_, node, 0, kWidth * kHeight, 9) == nullptr ||
          bindFilled(player_, node, 1, kWidth * kHeight, 0) == nullptr) {
        return nullptr;
      }
    }
    return graph;
  }
  /// Plays a new graph of `count` conv nodes and waits for it.
  _pattern_job* played(size_t count, std::vector<_pattern_node_handle*>* nodes, bool pack = false) {
    _pattern_job* job = nullptr;
    _pattern_graph* graph = convGraph(count, nodes, pack);
    return graph != nullptr && playAndWait(player_, graph, &job) == 0 ? job : nullptr;
  }
  static int64_t start(_pattern_job* job, _pattern_node_handle* node) {
    return execInfo(job, node, PATTERN_NODE_EXEC_INFO_START_TIMESTAMP);
  }
  static int64_t end(_pattern_job* job, _pattern_node_handle* node) {
    return execInfo(job, node, PATTERN_NODE_EXEC_INFO_END_TIMESTAMP);
  }

  _kesh_player* player_ = keshCreatePlayer("KESH pattern tester");
  _pattern* conv_ = loadPattern(player_, convPattern(kWidth, kHeight));
};

TEST_F(JobTest, UnpackedNodesRunInOrder) {
  std::vector<_pattern_node_handle*> nodes;
  _pattern_job* job = played(3, &nodes);
  ASSERT_NE(job, nullptr);
  for (size_t i = 1; i < nodes.size(); ++i) EXPECT_GE(start(job, nodes[i]), end(job, nodes[i - 1])) << i;
}

TEST_F(JobTest, HardLimitFailsTheJobAndSoftLimitOnlyRecords) {
  std::vector<_pattern_node_handle*> nodes;
  _pattern_graph* graph = convGraph(2, &nodes);
  ASSERT_NE(graph, nullptr);
  _pattern_job* job = nullptr;
  ASSERT_EQ(keshSetPatternGraphOption(graph, PATTERN_GRAPH_OPTION_SOFT_LIMIT, 1), 0);
  EXPECT_EQ(playAndWait(player_, graph, &job), 0);
  ASSERT_EQ(keshSetPatternGraphOption(graph, PATTERN_GRAPH_OPTION_HARD_LIMIT, 1), 0);
  EXPECT_NE(playAndWait(player_, graph, &job), 0);
  EXPECT_NE(keshWaitPatternJob(job), 0) << "waiting again gives the same answer";
  EXPECT_EQ(start(job, nodes[1]), 0) << "the job stops at the limit";
  ASSERT_EQ(keshSetPatternGraphOption(graph, PATTERN_GRAPH_OPTION_HARD_LIMIT, 60 * 1000000), 0);
  EXPECT_EQ(playAndWait(player_, graph, &job), 0);
}

TEST_F(JobTest, UnfinishedJobsCannotBeQueriedOrReleased) {
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
}  // namespace kesh::runtime::testing
