// Many jobs in flight at once, and the API used from several host threads.
#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "test_patterns.h"

namespace kesh::runtime::testing {
namespace {

constexpr uint32_t kSize = 4096;

struct Played {
  _pattern_graph* graph = nullptr;
  _pattern_node_handle* node = nullptr;
  _kesh_mem* out = nullptr;
  _pattern_job* job = nullptr;
};

/// Builds and plays one copy job whose input is `fill`.
Played playCopy(_kesh_player* player, _pattern* pattern, uint8_t fill) {
  Played played;
  played.graph = singleNodeGraph(player, pattern, &played.node);
  if (played.graph == nullptr || bindFilled(player, played.node, 7, kSize, fill) == nullptr) return played;
  played.out = bindFilled(player, played.node, 3, kSize, 0);
  if (played.out != nullptr && keshPlayPatternGraph(player, played.graph, 0, &played.job) != 0) played.job = nullptr;
  return played;
}

bool outputIs(const Played& played, uint8_t fill) {
  if (keshInvalidateMem(played.out) != 0) return false;
  std::vector<uint8_t> expected(kSize, fill);
  return std::memcmp(keshMapMem(played.out), expected.data(), kSize) == 0;
}

TEST(JobsInFlightTest, SeventyJobsStartedBeforeTheFirstWaitAllComplete) {
  _kesh_player* player = keshCreatePlayer("KESH pattern tester");
  _pattern* pattern = loadPattern(player, copyPattern(kSize));
  std::vector<Played> jobs;
  for (int i = 0; i < 70; ++i) {
    jobs.push_back(playCopy(player, pattern, static_cast<uint8_t>(i + 1)));
    ASSERT_NE(jobs.back().job, nullptr) << "job " << i;
  }
  for (size_t i = 0; i < jobs.size(); ++i) {
    ASSERT_EQ(keshWaitPatternJob(jobs[i].job), 0);
    EXPECT_TRUE(outputIs(jobs[i], static_cast<uint8_t>(i + 1))) << "job " << i;
    EXPECT_EQ(keshDestroyPatternJob(jobs[i].job), 0);
  }
  EXPECT_EQ(keshDestroyPlayer(player), 0);
}

TEST(JobsInFlightTest, HostThreadsShareOnePlayer) {
  _kesh_player* player = keshCreatePlayer("KESH pattern tester");
  _pattern* pattern = loadPattern(player, copyPattern(kSize));
  std::vector<int> failures(4, 0);
  std::vector<std::thread> threads;
  for (size_t t = 0; t < failures.size(); ++t) {
    threads.emplace_back([&, t] {
      for (int round = 0; round < 10; ++round) {
        uint8_t fill = static_cast<uint8_t>(t * 16 + static_cast<size_t>(round));
        Played played = playCopy(player, pattern, fill);
        bool ok = played.job != nullptr && keshWaitPatternJob(played.job) == 0 && outputIs(played, fill);
        ok = ok && keshDestroyPatternJob(played.job) == 0 && keshDestroyPatternGraph(played.graph) == 0;
        if (!ok) ++failures[t];
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(failures, std::vector<int>(failures.size(), 0));
}

}  // namespace
}  // namespace kesh::runtime::testing
