// Many jobs in flight at once: more than the tool ever starts before its first wait.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "test_patterns.h"

namespace kesh::runtime::testing {
namespace {

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
    ASSERT_EQ(keshWaitPatternJob(jobs[i]), 0);
    ASSERT_EQ(keshInvalidateMem(outs[i]), 0);
    const std::vector<uint8_t> expected(kSize, static_cast<uint8_t>(i + 1));
    EXPECT_EQ(std::memcmp(keshMapMem(outs[i]), expected.data(), kSize), 0) << "job " << i;
    EXPECT_EQ(keshDestroyPatternJob(jobs[i]), 0);
  }
  EXPECT_EQ(keshDestroyPlayer(player), 0);
}

}  // namespace
}  // namespace kesh::runtime::testing
