// Device memory: the host mapping and the device buffer are distinct, and
// only flush and invalidate bridge them; what a job sees is what was applied.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "test_patterns.h"

namespace kesh::runtime::testing {
namespace {

constexpr uint32_t kSize = 64;
using Bytes = std::vector<uint8_t>;

Bytes hostBytes(_kesh_mem* mem) {
  const auto* host = static_cast<const uint8_t*>(keshMapMem(mem));
  return host == nullptr ? Bytes() : Bytes(host, host + kSize);
}

// A copy graph whose memories "in" and "out" are bound and applied.
class MemoryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(graph_ = singleNodeGraph(player_, loadPattern(player_, copyPattern(kSize, 7, 3)), &node_), nullptr);
    ASSERT_NE(inHost_ = static_cast<uint8_t*>(keshMapMem(in_)), nullptr);
    ASSERT_NE(keshMapMem(out_), nullptr);  // invalidate needs a mapping
    ASSERT_EQ(keshSetPatternNodeArg(node_, 7, in_, kSize) | keshSetPatternNodeArg(node_, 3, out_, kSize) |
                  keshUpdatePatternNode(node_), 0);
  }
  void play() {
    _pattern_job* job = nullptr;
    ASSERT_EQ(playAndWait(player_, graph_, &job), 0);
    ASSERT_EQ(keshDestroyPatternJob(job), 0);
  }

  _kesh_player* player_ = keshCreatePlayer("KESH pattern tester");
  _pattern_graph* graph_ = nullptr;
  _pattern_node_handle* node_ = nullptr;
  _kesh_mem* in_ = keshCreateMem(player_, kSize, "in");
  _kesh_mem* out_ = keshCreateMem(player_, kSize, "out");
  uint8_t* inHost_ = nullptr;
};

TEST_F(MemoryTest, FreshMemoryIsZeroAndOnlyFlushAndInvalidateMoveData) {
  EXPECT_EQ(hostBytes(out_), Bytes(kSize, 0));
  std::memset(inHost_, 0x42, kSize);
  std::memset(keshMapMem(out_), 0x33, kSize);
  play();
  ASSERT_EQ(keshInvalidateMem(out_), 0);
  EXPECT_EQ(hostBytes(out_), Bytes(kSize, 0)) << "the device saw its own zeros, not the unflushed input";
  ASSERT_EQ(keshFlushMem(in_), 0);
  play();
  EXPECT_EQ(hostBytes(out_), Bytes(kSize, 0)) << "the host sees device writes only after invalidate";
  ASSERT_EQ(keshInvalidateMem(out_), 0);
  EXPECT_EQ(hostBytes(out_), Bytes(kSize, 0x42));
  ASSERT_EQ(keshUnmapMem(out_), 0);
  EXPECT_NE(keshInvalidateMem(out_), 0) << "nothing to copy into once unmapped";
}

TEST_F(MemoryTest, UpdateAppliesNewArgumentsToLaterPlays) {
  _kesh_mem* other = bindFilled(player_, node_, 3, kSize, 0);
  ASSERT_NE(other, nullptr);
  std::memset(inHost_, 0x11, kSize);
  ASSERT_EQ(keshFlushMem(in_), 0);
  ASSERT_EQ(keshSetPatternNodeArg(node_, 3, out_, kSize), 0);  // staged only: `other` stays applied
  play();
  ASSERT_EQ(keshInvalidateMem(out_) | keshInvalidateMem(other), 0);
  EXPECT_EQ(hostBytes(out_), Bytes(kSize, 0));
  EXPECT_EQ(hostBytes(other), Bytes(kSize, 0x11));
  ASSERT_EQ(keshUpdatePatternNode(node_), 0);
  play();
  ASSERT_EQ(keshInvalidateMem(out_), 0);
  EXPECT_EQ(hostBytes(out_), Bytes(kSize, 0x11));
}

TEST(NoAllocTest, NoAllocArgumentsStartZeroedOnEveryRun) {
  _kesh_player* player = keshCreatePlayer("KESH pattern tester");
  _pattern_node_handle* node = nullptr;
  _pattern_graph* graph = singleNodeGraph(player, loadPattern(player, scratchPattern(kSize)), &node);
  ASSERT_NE(graph, nullptr);
  ASSERT_NE(bindFilled(player, node, 0, kSize, 5), nullptr);
  _kesh_mem* out = bindFilled(player, node, 2, kSize, 0);
  EXPECT_NE(keshSetPatternNodeArg(node, 9, out, kSize), 0) << "the library owns no-alloc arguments";
  for (int run = 0; run < 2; ++run) {
    _pattern_job* job = nullptr;
    ASSERT_EQ(playAndWait(player, graph, &job), 0);
    ASSERT_EQ(keshInvalidateMem(out), 0);
    EXPECT_EQ(hostBytes(out), Bytes(kSize, 5)) << "run " << run;
  }
}

}  // namespace
}  // namespace kesh::runtime::testing
