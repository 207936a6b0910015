// Device memory: the host mapping and the device buffer are distinct, and
// only flush and invalidate bridge them; what a job sees is what was applied.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "test_patterns.h"

namespace kesh::runtime::testing {
namespace {

constexpr uint32_t kSize = 64;

class MemoryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    player_ = keshCreatePlayer("KESH pattern tester");
    graph_ = singleNodeGraph(player_, loadPattern(player_, copyPattern(kSize)), &node_);
    ASSERT_NE(graph_, nullptr);
    in_ = keshCreateMem(player_, kSize, "in");
    out_ = keshCreateMem(player_, kSize, "out");
    inHost_ = static_cast<uint8_t*>(keshMapMem(in_));
    outHost_ = static_cast<uint8_t*>(keshMapMem(out_));
    ASSERT_NE(inHost_, nullptr);
    ASSERT_NE(outHost_, nullptr);
    ASSERT_EQ(keshSetPatternNodeArg(node_, 7, in_, kSize), 0);
    ASSERT_EQ(keshSetPatternNodeArg(node_, 3, out_, kSize), 0);
    ASSERT_EQ(keshUpdatePatternNode(node_), 0);
  }

  void play() {
    _pattern_job* job = nullptr;
    ASSERT_EQ(playAndWait(player_, graph_, &job), 0);
    ASSERT_EQ(keshDestroyPatternJob(job), 0);
  }

  std::vector<uint8_t> outHost() const { return std::vector<uint8_t>(outHost_, outHost_ + kSize); }

  _kesh_player* player_ = nullptr;
  _pattern_graph* graph_ = nullptr;
  _pattern_node_handle* node_ = nullptr;
  _kesh_mem* in_ = nullptr;
  _kesh_mem* out_ = nullptr;
  uint8_t* inHost_ = nullptr;
  uint8_t* outHost_ = nullptr;
};

TEST_F(MemoryTest, FreshMemoryIsZeroAndOnlyFlushAndInvalidateMoveData) {
  EXPECT_EQ(outHost(), std::vector<uint8_t>(kSize, 0));
  std::memset(inHost_, 0x42, kSize);
  std::memset(outHost_, 0x33, kSize);
  play();
  ASSERT_EQ(keshInvalidateMem(out_), 0);
  EXPECT_EQ(outHost(), std::vector<uint8_t>(kSize, 0)) << "the device saw its own zeros, not the unflushed input";

  ASSERT_EQ(keshFlushMem(in_), 0);
  play();
  EXPECT_EQ(outHost(), std::vector<uint8_t>(kSize, 0)) << "the host sees device writes only after invalidate";
  ASSERT_EQ(keshInvalidateMem(out_), 0);
  EXPECT_EQ(outHost(), std::vector<uint8_t>(kSize, 0x42));
}

TEST_F(MemoryTest, MappingRulesAreChecked) {
  EXPECT_EQ(keshMapMem(in_), inHost_) << "mapping again gives the same address";
  ASSERT_EQ(keshUnmapMem(in_), 0);
  EXPECT_NE(keshUnmapMem(in_), 0);
  EXPECT_NE(keshFlushMem(in_), 0);
  EXPECT_NE(keshInvalidateMem(in_), 0);
  _kesh_mem* empty = keshCreateMem(player_, 0, "empty");
  EXPECT_NE(keshMapMem(empty), nullptr);
}

TEST_F(MemoryTest, UpdateAppliesNewArgumentsToLaterPlays) {
  _kesh_mem* other = bindFilled(player_, node_, 3, kSize, 0);
  ASSERT_NE(other, nullptr);
  std::memset(inHost_, 0x11, kSize);
  ASSERT_EQ(keshFlushMem(in_), 0);
  ASSERT_EQ(keshSetPatternNodeArg(node_, 3, out_, kSize), 0);  // staged only: `other` stays applied
  play();
  ASSERT_EQ(keshInvalidateMem(out_), 0);
  ASSERT_EQ(keshInvalidateMem(other), 0);
  EXPECT_EQ(outHost(), std::vector<uint8_t>(kSize, 0));
  EXPECT_EQ(static_cast<uint8_t*>(keshMapMem(other))[0], 0x11);
  ASSERT_EQ(keshUpdatePatternNode(node_), 0);
  play();
  ASSERT_EQ(keshInvalidateMem(out_), 0);
  EXPECT_EQ(outHost(), std::vector<uint8_t>(kSize, 0x11));
}

TEST(NoAllocTest, NoAllocArgumentsStartZeroedOnEveryRun) {
  _kesh_player* player = keshCreatePlayer("KESH pattern tester");
  _pattern_node_handle* node = nullptr;
  _pattern_graph* graph = singleNodeGraph(player, loadPattern(player, scratchPattern(kSize)), &node);
  ASSERT_NE(graph, nullptr);
  ASSERT_NE(bindFilled(player, node, 0, kSize, 5), nullptr);
  _kesh_mem* out = bindFilled(player, node, 2, kSize, 0);
  ASSERT_NE(out, nullptr);
  for (int run = 0; run < 2; ++run) {
    _pattern_job* job = nullptr;
    ASSERT_EQ(playAndWait(player, graph, &job), 0);
    ASSERT_EQ(keshInvalidateMem(out), 0);
    EXPECT_EQ(static_cast<uint8_t*>(keshMapMem(out))[kSize - 1], 5) << "run " << run;
  }
}

TEST(LifetimeTest, ReleasingHandlesInTheToolsOrderWhileAJobRunsIsSafe) {
  _kesh_player* player = keshCreatePlayer("KESH pattern tester");
  _pattern* pattern = loadPattern(player, convPattern(640, 480));
  _pattern_node_handle* node = nullptr;
  _pattern_graph* graph = singleNodeGraph(player, pattern, &node);
  ASSERT_NE(graph, nullptr);
  _kesh_mem* src = bindFilled(player, node, 0, 640 * 480, 200);
  _kesh_mem* dst = bindFilled(player, node, 1, 640 * 480, 0);
  _pattern_job* job = nullptr;
  ASSERT_EQ(keshPlayPatternGraph(player, graph, 0, &job), 0);
  EXPECT_EQ(keshDestroyMem(src), 0);
  EXPECT_EQ(keshDestroyMem(dst), 0);
  EXPECT_EQ(keshDestroyPatternNode(node), 0);
  EXPECT_EQ(keshDestroyPatternGraph(graph), 0);
  EXPECT_EQ(keshDestroyPattern(pattern), 0);
  EXPECT_EQ(keshWaitPatternJob(job), 0);
  EXPECT_GE(execInfo(job, node, PATTERN_NODE_EXEC_INFO_END_TIMESTAMP), 0) << "the job still knows its nodes";
  EXPECT_EQ(keshDestroyPatternJob(job), 0);
  EXPECT_EQ(keshDestroyPlayer(player), 0);
}

}  // namespace
}  // namespace kesh::runtime::testing
