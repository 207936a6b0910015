// Jobs on the cores through the C API: node order, limits, the job lifecycle
// and many jobs in flight. Run with KESH_EMU_CORES=2 (set by the test's
// properties); how packs are planned and dispatched is checked in dispatch_test.cc.
#include <gtest/gtest.h>

#include <vector>

#include "testing/pattern_calls.h"
#include "testing/sample_patterns.h"

namespace kesh::runtime {
namespace {

using namespace kesh::testing;  // NOLINT: the sample patterns and API helpers
constexpr uint32_t kWidth = 3840, kHeight = 2160;  // long enough to still run when queried

class JobTest : public ::testing::Test {
 protected:
  /// A graph of `count` conv nodes, each with its own memory.
  _pattern_graph* convGraph(size_t count, std::vector<_pattern_node_handle*>* nodes) {
    _pattern_graph* graph = buildGraph(player_, conv_, nodes, count);
    for (auto* node : *nodes) {
      if (!bindFilled(player_, node, 0, kWidth * kHeight, 9) || !bindFilled(player_, node, 1, kWidth * kHeight, 0)) {
        return nullptr;
      }
    }
    return graph;
  }
  static int64_t start(_pattern_job* job, _pattern_node_handle* node) {
    return execInfo(job, node, PATTERN_NODE_EXEC_INFO_START_TIMESTAMP);
  }

  _kesh_player* player_ = keshCreatePlayer("KESH pattern tester");
  _pattern* conv_ = loadPattern(player_, convPattern(kWidth, kHeight));
};

TEST_F(JobTest, UnpackedNodesRunInOrderAndHardLimitFailsTheJobWhereSoftOnlyRecords) {
  std::vector<_pattern_node_handle*> nodes;
  _pattern_graph* graph = convGraph(3, &nodes);
  ASSERT_NE(graph, nullptr);
  _pattern_job* job = nullptr;
  ASSERT_EQ(keshSetPatternGraphOption(graph, PATTERN_GRAPH_OPTION_SOFT_LIMIT, 1), 0);
  ASSERT_EQ(playAndWait(player_, graph, &job), 0);
  for (size_t i = 1; i < nodes.size(); ++i) {
    EXPECT_GE(start(job, nodes[i]), execInfo(job, nodes[i - 1], PATTERN_NODE_EXEC_INFO_END_TIMESTAMP)) << i;
  }
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

// More jobs than the tool ever starts before its first wait.
TEST(JobsInFlightTest, SeventyJobsStartedBeforeTheFirstWaitAllComplete) {
  constexpr uint32_t kSize = 4096;
  _kesh_player* player = keshCreatePlayer("KESH pattern tester");
  _pattern* pattern = loadPattern(player, copyPattern(kSize, 7, 3));
  std::vector<_pattern_job*> jobs(70);
  std::vector<_kesh_mem*> outs(jobs.size());
  for (size_t i = 0; i < jobs.size(); ++i) {
    _pattern_node_handle* node = nullptr;
    _pattern_graph* graph = singleNodeGraph(player, pattern, &node);
    ASSERT_NE(bindFilled(player, node, 7, kSize, static_cast<uint8_t>(i + 1)), nullptr);
    ASSERT_NE(outs[i] = bindFilled(player, node, 3, kSize, 0), nullptr);
    ASSERT_EQ(keshPlayPatternGraph(player, graph, 0, &jobs[i]), 0) << "job " << i;
  }
  for (size_t i = 0; i < jobs.size(); ++i) {
    ASSERT_EQ(keshWaitPatternJob(jobs[i]) | keshInvalidateMem(outs[i]), 0);
    EXPECT_EQ(std::vector<uint8_t>(static_cast<uint8_t*>(keshMapMem(outs[i])), static_cast<uint8_t*>(keshMapMem(outs[i])) + kSize),
              std::vector<uint8_t>(kSize, static_cast<uint8_t>(i + 1))) << "job " << i;
    EXPECT_EQ(keshDestroyPatternJob(jobs[i]), 0);
  }
  EXPECT_EQ(keshDestroyPlayer(player), 0);
}

}  // namespace
}  // namespace kesh::runtime
