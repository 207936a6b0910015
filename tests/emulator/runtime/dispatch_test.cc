// The planner and the dispatcher seen from inside: how a built graph's nodes are grouped into steps, and
// that a pack's nodes go to different cores at once (no wall clock: a dispatch hook holds each core).
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <set>
#include <vector>

#include "format/reader.h"
#include "runtime/cores.h"
#include "runtime/graph.h"
#include "runtime/job.h"
#include "runtime/memory.h"
#include "testing/sample_patterns.h"

namespace kesh::runtime {
namespace {

constexpr HandleId kPlayerId = 1000, kGraphId = 1001;
constexpr uint32_t kSize = 64;

/// A built graph of `count` bound copy nodes (ids 1..count), packed as `packs`
/// lists (1-based positions).
struct TestGraph {
  TestGraph(size_t count, const std::vector<std::vector<HandleId>>& packs) : graph(kGraphId, kPlayerId) {
    const std::vector<uint8_t> binary = kesh::testing::copyPattern(kSize, 7, 3);
    auto program = std::make_shared<format::Program>();
    EXPECT_TRUE(format::decodePattern(binary.data(), binary.size(), program.get(), nullptr));
    std::vector<std::shared_ptr<Node>> nodes;
    for (HandleId id = 1; id <= count; ++id) {
      nodes.push_back(std::make_shared<Node>(id, kGraphId, kPlayerId, program));
      EXPECT_TRUE(graph.addNode(nodes.back()));
      for (uint32_t index : {7u, 3u}) {
        memories.push_back(Memory::create(kPlayerId, kSize));
        EXPECT_TRUE(nodes.back()->stageArg(index, *memories.back(), kSize));
      }
      nodes.back()->update();
    }
    for (const auto& pack : packs) EXPECT_TRUE(graph.pack(pack));
    EXPECT_TRUE(graph.build());
  }
  std::shared_ptr<const JobPlan> plan() {
    std::shared_ptr<const JobPlan> out;
    JobLimits limits;
    return graph.plan(&out, &limits) ? out : nullptr;
  }

  Graph graph;
  std::vector<std::shared_ptr<Memory>> memories;
};

TEST(PlanStepsTest, PacksBecomeOneStepAtTheirFirstNode) {
  const struct {
    const char* label;
    size_t nodes;
    std::vector<std::vector<HandleId>> packs;
    std::vector<std::vector<size_t>> steps;
  } rows[] = {
      {"unpacked", 3, {}, {{0}, {1}, {2}}},
      {"packed all", 3, {{1, 2, 3}}, {{0, 1, 2}}},
      {"pack with a gap", 4, {{4, 2}}, {{0}, {1, 3}, {2}}},
      {"two interleaved packs", 4, {{1, 3}, {2, 4}}, {{0, 2}, {1, 3}}},
      {"empty graph", 0, {}, {}},
  };
  for (const auto& row : rows) {
    TestGraph graph(row.nodes, row.packs);
    std::shared_ptr<const JobPlan> plan = graph.plan();
    ASSERT_NE(plan, nullptr) << row.label;
    EXPECT_EQ(plan->steps, row.steps) << row.label;
  }
}

/// Holds every core that takes a task until `expected` tasks are taken (or ten seconds passed, which only a
/// dispatcher that serialises them lets happen), and records who took what. Read it once the job has ended.
struct Rendezvous {
  void arrive(int core) {
    std::unique_lock<std::mutex> lock(mutex);
    cores.push_back(core);
    allArrived.notify_all();
    timedOut += !allArrived.wait_for(lock, std::chrono::seconds(10), [this] { return cores.size() >= expected; });
  }
  const size_t expected = 2;  // the nodes of the pack
  std::mutex mutex;
  std::condition_variable allArrived;
  std::vector<int> cores;
  int timedOut = 0;
};

TEST(DispatchTest, PackedNodesAreHandedToDifferentCoresAtOnce) {
  static Rendezvous* meeting = new Rendezvous;  // outlives the pool's threads
  static CorePool* pool = new CorePool(2);         // never destroyed, as the library's own
  pool->setDispatchHook([](int core) { meeting->arrive(core); });
  TestGraph graph(2, {{1, 2}});
  auto job = std::make_shared<Job>(std::make_shared<Player>(), graph.plan(), JobLimits{});
  job->start(*pool);
  EXPECT_EQ(job->wait(), 0);
  std::lock_guard<std::mutex> lock(meeting->mutex);
  EXPECT_EQ(meeting->timedOut, 0) << "a packed node waited for the other to finish";
  EXPECT_EQ(std::set<int>(meeting->cores.begin(), meeting->cores.end()).size(), 2u) << meeting->cores.size() << " tasks";
}

}  // namespace
}  // namespace kesh::runtime
