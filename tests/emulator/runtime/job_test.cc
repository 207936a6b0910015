// Jobs on the cores: node order, packing, boost, limits and execution
// information. Run with KESH_EMU_CORES=2 (set by the test's properties).
#include <gtest/gtest.h>
#include <time.h>

#include <vector>

#include "test_patterns.h"

namespace kesh::runtime::testing {
namespace {

constexpr uint32_t kWidth = 640, kHeight = 480;

struct Timing {
  int64_t start, end, ip, driver;
};

class JobTest : public ::testing::Test {
 protected:
  void SetUp() override {
    player_ = keshCreatePlayer("KESH pattern tester");
    conv_ = loadPattern(player_, convPattern(kWidth, kHeight));
    ASSERT_NE(conv_, nullptr);
  }

  /// A graph of `count` conv nodes, each with its own memory.
  _pattern_graph* convGraph(size_t count, std::vector<_pattern_node_handle*>* nodes, bool pack = false) {
    _pattern_graph* graph = keshCreatePatternGraph(player_, "tester_graph");
    nodes->assign(count, nullptr);
    for (auto& node : *nodes) {
      if (keshAddPattern(graph, conv_, 0, 0, &node, "tester_pattern") != 0) return nullptr;
    }
    if (pack && keshSetPatternPack(graph, static_cast<uint32_t>(count), nodes->data()) != 0) return nullptr;
    if (keshBuildPatternGraph(graph) != 0) return nullptr;
    for (auto* node : *nodes) {
      if (bindFilled(player_, node, 0, kWidth * kHeight, 9) == nullptr ||
          bindFilled(player_, node, 1, kWidth * kHeight, 0) == nullptr) {
        return nullptr;
      }
    }
    return graph;
  }

  static Timing timing(_pattern_job* job, _pattern_node_handle* node) {
    return Timing{execInfo(job, node, PATTERN_NODE_EXEC_INFO_START_TIMESTAMP),
                  execInfo(job, node, PATTERN_NODE_EXEC_INFO_END_TIMESTAMP),
                  execInfo(job, node, PATTERN_NODE_EXEC_INFO_IP_TIME),
                  execInfo(job, node, PATTERN_NODE_EXEC_INFO_DRIVER_TIME)};
  }

  _kesh_player* player_ = nullptr;
  _pattern* conv_ = nullptr;
};

TEST_F(JobTest, ExecInfoIsMeasuredOnTheMonotonicClock) {
  std::vector<_pattern_node_handle*> nodes;
  _pattern_graph* graph = convGraph(1, &nodes);
  ASSERT_NE(graph, nullptr);
  _pattern_job* job = nullptr;
  ASSERT_EQ(playAndWait(player_, graph, &job), 0);
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  int64_t nowUs = static_cast<int64_t>(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
  Timing t = timing(job, nodes[0]);
  EXPECT_GT(t.ip, 0);
  EXPECT_GE(t.driver, 0);
  EXPECT_LE(t.start, t.end);
  EXPECT_LE(t.ip + t.driver, t.end - t.start + 2);  // the parts fit in the whole, up to rounding
  EXPECT_LE(t.end, nowUs);
  EXPECT_GT(t.start, nowUs - 10 * 1000000);

  int64_t value = 0;
  EXPECT_NE(keshGetPatternNodeExecInfo(job, nodes[0], 2, &value), 0) << "unknown kind";
  _pattern_node_handle* stranger = nullptr;
  ASSERT_NE(singleNodeGraph(player_, conv_, &stranger), nullptr);
  EXPECT_NE(keshGetPatternNodeExecInfo(job, stranger, 0, &value), 0) << "not a node of the job";
}

TEST_F(JobTest, UnpackedNodesRunInOrderAndPackedNodesTogether) {
  std::vector<_pattern_node_handle*> nodes;
  _pattern_graph* serial = convGraph(3, &nodes);
  ASSERT_NE(serial, nullptr);
  _pattern_job* job = nullptr;
  ASSERT_EQ(playAndWait(player_, serial, &job), 0);
  for (size_t i = 1; i < nodes.size(); ++i) {
    EXPECT_GE(timing(job, nodes[i]).start, timing(job, nodes[i - 1]).end) << "node " << i;
  }

  _pattern_graph* packed = convGraph(2, &nodes, true);
  ASSERT_NE(packed, nullptr);
  ASSERT_EQ(playAndWait(player_, packed, &job), 0);
  Timing a = timing(job, nodes[0]), b = timing(job, nodes[1]);
  EXPECT_LT(a.start, b.end);
  EXPECT_LT(b.start, a.end);
}

TEST_F(JobTest, HigherBoostRunsFirstOnABusyCore) {
  std::vector<_pattern_node_handle*> blocker, low, high;
  _pattern_graph* graphs[] = {convGraph(1, &blocker), convGraph(1, &low), convGraph(1, &high)};
  // The blocker goes first either way: it is running already, or it waits
  // with the same boost as `high` and was queued earlier.
  ASSERT_EQ(keshSetPatternNodeOption(blocker[0], PATTERN_NODE_OPTION_BOOST, 100), 0);
  ASSERT_EQ(keshSetPatternNodeOption(low[0], PATTERN_NODE_OPTION_BOOST, 0), 0);
  ASSERT_EQ(keshSetPatternNodeOption(high[0], PATTERN_NODE_OPTION_BOOST, 100), 0);
  _pattern_job* jobs[3] = {};
  for (int i = 0; i < 3; ++i) {
    ASSERT_NE(graphs[i], nullptr);
    _pattern_node_handle* node = i == 0 ? blocker[0] : i == 1 ? low[0] : high[0];
    ASSERT_EQ(keshSetPatternNodeOption(node, PATTERN_NODE_OPTION_CORE_AFFINITY, 0), 0);
    ASSERT_EQ(keshUpdatePatternNode(node), 0);
  }
  for (int i = 0; i < 3; ++i) ASSERT_EQ(keshPlayPatternGraph(player_, graphs[i], 0, &jobs[i]), 0);
  for (auto* job : jobs) ASSERT_EQ(keshWaitPatternJob(job), 0);
  EXPECT_LE(timing(jobs[2], high[0]).end, timing(jobs[1], low[0]).start);
  EXPECT_GE(timing(jobs[2], high[0]).start, timing(jobs[0], blocker[0]).end) << "both were pinned to core 0";
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
  EXPECT_NE(keshWaitPatternJob(job), 0);
  EXPECT_EQ(timing(job, nodes[1]).start, 0) << "the job stops at the limit";
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
