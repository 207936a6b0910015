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
  static Timing timing(_pattern_job* job, _pattern_node_handle* node) {
    return Timing{execInfo(job, node, PATTERN_NODE_EXEC_INFO_START_TIMESTAMP),
                  execInfo(job, node, PATTERN_NODE_EXEC_INFO_END_TIMESTAMP),
                  execInfo(job, node, PATTERN_NODE_EXEC_INFO_IP_TIME),
                  execInfo(job, node, PATTERN_NODE_EXEC_INFO_DRIVER_TIME)};
  }

  _kesh_player* player_ = keshCreatePlayer("KESH pattern tester");
  _pattern* conv_ = loadPattern(player_, convPattern(kWidth, kHeight));
};

TEST_F(JobTest, ExecInfoIsMeasuredOnTheMonotonicClock) {
  std::vector<_pattern_node_handle*> nodes;
  _pattern_job* job = played(1, &nodes);
  ASSERT_NE(job, nullptr);
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  const int64_t nowUs = static_cast<int64_t>(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
  const Timing t = timing(job, nodes[0]);
  EXPECT_TRUE(t.ip > 0 && t.driver >= 0 && t.start <= t.end);
  EXPECT_LE(t.ip + t.driver, t.end - t.start + 2);  // the parts fit in the whole, up to rounding
  EXPECT_TRUE(t.end <= nowUs && t.start > nowUs - 10 * 1000000);
  int64_t value = 0;
  EXPECT_NE(keshGetPatternNodeExecInfo(job, nodes[0], 2, &value), 0) << "unknown kind";
  _pattern_node_handle* stranger = nullptr;
  ASSERT_NE(singleNodeGraph(player_, conv_, &stranger), nullptr);
  EXPECT_NE(keshGetPatternNodeExecInfo(job, stranger, 0, &value), 0) << "not a node of the job";
}

TEST_F(JobTest, UnpackedNodesRunInOrderAndPackedNodesTogether) {
  std::vector<_pattern_node_handle*> nodes;
  _pattern_job* job = played(3, &nodes);
  ASSERT_NE(job, nullptr);
  for (size_t i = 1; i < nodes.size(); ++i) EXPECT_GE(timing(job, nodes[i]).start, timing(job, nodes[i - 1]).end) << i;
  // Packed nodes are released together, so on two cores they overlap unless the
  // host starves a worker; a loaded machine may do that once, never every time.
  bool overlapped = false;
  for (int attempt = 0; attempt < 10 && !overlapped; ++attempt) {
    ASSERT_NE(job = played(2, &nodes, true), nullptr);
    const Timing a = timing(job, nodes[0]), b = timing(job, nodes[1]);
    overlapped = a.start < b.end && b.start < a.end;
  }
  EXPECT_TRUE(overlapped);
}

TEST_F(JobTest, HigherBoostRunsFirstOnABusyCore) {
  // The blocker goes first either way: it is running already, or it waits
  // with the same boost as `high` and was queued earlier.
  std::vector<_pattern_node_handle*> nodes[3];  // blocker, low, high
  _pattern_job* jobs[3] = {};
  _pattern_graph* graphs[3];
  for (int i = 0; i < 3; ++i) {
    ASSERT_NE(graphs[i] = convGraph(1, &nodes[i]), nullptr);
    ASSERT_EQ(keshSetPatternNodeOption(nodes[i][0], PATTERN_NODE_OPTION_BOOST, i == 1 ? 0 : 100), 0);
    ASSERT_EQ(keshSetPatternNodeOption(nodes[i][0], PATTERN_NODE_OPTION_CORE_AFFINITY, 0), 0);
    ASSERT_EQ(keshUpdatePatternNode(nodes[i][0]), 0);
  }
  for (int i = 0; i < 3; ++i) ASSERT_EQ(keshPlayPatternGraph(player_, graphs[i], 0, &jobs[i]), 0);
  for (auto* job : jobs) ASSERT_EQ(keshWaitPatternJob(job), 0);
  EXPECT_LE(timing(jobs[2], nodes[2][0]).end, timing(jobs[1], nodes[1][0]).start);
  EXPECT_GE(timing(jobs[2], nodes[2][0]).start, timing(jobs[0], nodes[0][0]).end) << "both were pinned to core 0";
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
