// The C entry points where the tool never goes: argument-information buffers of the wrong size, bad
// handles, calls out of order; jobs on the cores: their lifecycle, node order, limits (KESH_EMU_CORES=2).
// Device memory: the host mapping and the device buffer are distinct, and only flush and invalidate
// bridge them; what a job sees is what was applied; an access past a mapping faults at once.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "testing/child_process.h"
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

// Option values past the ends are refused in the checker's findings, run through the tool.
TEST_F(ApiTest, OptionsTakeTheEndsOfTheirRangesAndBadHandlesFail) {
  _pattern_node_handle* node = nullptr;
  _pattern_graph* graph = singleNodeGraph(player_, loadPattern(player_, copyPattern(16, 7, 3)), &node);
  EXPECT_EQ(keshSetPatternNodeOption(node, PATTERN_NODE_OPTION_BOOST, 100), 0);
  EXPECT_EQ(keshSetPatternNodeOption(node, PATTERN_NODE_OPTION_CORE_AFFINITY, 1), 0) << "the last of two cores";
  EXPECT_EQ(keshSetPatternGraphOption(graph, PATTERN_GRAPH_OPTION_SOFT_LIMIT, 0), 0);
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

TEST_F(ApiTest, JobsStayUntilWaitedRunUnpackedNodesInOrderAndStopAtTheHardLimit) {
  std::vector<_pattern_node_handle*> nodes;
  _pattern_graph* graph = convGraph(3, &nodes);
  ASSERT_NE(graph, nullptr);
  _pattern_job* job = nullptr;
  ASSERT_EQ(keshPlayPatternGraph(player_, graph, 0, &job), 0);
  int64_t value = 0;
  EXPECT_NE(keshGetPatternNodeExecInfo(job, nodes[2], PATTERN_NODE_EXEC_INFO_IP_TIME, &value), 0) << "unfinished";
  EXPECT_NE(keshDestroyPatternJob(job), 0);
  EXPECT_NE(keshDestroyPlayer(player_), 0);
  ASSERT_EQ(keshWaitPatternJob(job), 0);
  EXPECT_EQ(keshDestroyPatternJob(job), 0);
  const auto start = [&](size_t i) { return execInfo(job, nodes[i], PATTERN_NODE_EXEC_INFO_START_TIMESTAMP); };
  ASSERT_EQ(keshSetPatternGraphOption(graph, PATTERN_GRAPH_OPTION_SOFT_LIMIT, 1), 0);
  ASSERT_EQ(playAndWait(player_, graph, &job), 0) << "the soft limit only records";
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

constexpr uint32_t kSize = 64;
using Bytes = std::vector<uint8_t>;

Bytes hostBytes(_kesh_mem* mem) {
  const auto* host = static_cast<const uint8_t*>(keshMapMem(mem));
  return host == nullptr ? Bytes() : Bytes(host, host + kSize);
}

// A copy graph whose memories "in" and "out" are bound and applied.
class MemoryTest : public ApiTest {
 protected:
  void SetUp() override {
    ASSERT_NE(graph_ = singleNodeGraph(player_, loadPattern(player_, copyPattern(kSize, 7, 3)), &node_), nullptr);
    ASSERT_NE(keshMapMem(in_), nullptr);
    ASSERT_NE(keshMapMem(out_), nullptr);  // invalidate needs a mapping
    ASSERT_EQ(keshSetPatternNodeArg(node_, 7, in_, kSize) | keshSetPatternNodeArg(node_, 3, out_, kSize) |
                  keshUpdatePatternNode(node_), 0);
  }
  void play() {
    _pattern_job* job = nullptr;
    ASSERT_EQ(playAndWait(player_, graph_, &job), 0);
    ASSERT_EQ(keshDestroyPatternJob(job), 0);
  }

  _pattern_graph* graph_ = nullptr;
  _pattern_node_handle* node_ = nullptr;
  _kesh_mem* in_ = keshCreateMem(player_, kSize, "in");
  _kesh_mem* out_ = keshCreateMem(player_, kSize, "out");
};

// Flush and invalidate without effect are caught end to end; here, that nothing else moves data.
TEST_F(MemoryTest, OnlyFlushAndInvalidateMoveData) {
  EXPECT_EQ(hostBytes(out_), Bytes(kSize, 0)) << "fresh memory is zero";
  std::memset(keshMapMem(in_), 0x42, kSize);
  std::memset(keshMapMem(out_), 0x33, kSize);
  play();
  EXPECT_EQ(hostBytes(out_), Bytes(kSize, 0x33)) << "the host sees device writes only after invalidate";
  ASSERT_EQ(keshInvalidateMem(out_), 0);
  EXPECT_EQ(hostBytes(out_), Bytes(kSize, 0)) << "the device saw its own zeros, not the unflushed input";
  ASSERT_EQ(keshFlushMem(in_), 0);
  _kesh_mem* other = bindFilled(player_, node_, 3, kSize, 0);
  play();
  ASSERT_EQ(keshInvalidateMem(other), 0);
  EXPECT_EQ(hostBytes(other), Bytes(kSize, 0x42)) << "a new binding applies to later plays";
  ASSERT_EQ(keshUnmapMem(other), 0);
  EXPECT_NE(keshInvalidateMem(other), 0) << "nothing to copy into once unmapped";
}

TEST_F(MemoryTest, NoAllocArgumentsStartZeroedOnEveryRun) {
  graph_ = singleNodeGraph(player_, loadPattern(player_, scratchPattern(kSize)), &node_);
  ASSERT_NE(bindFilled(player_, node_, 0, kSize, 5), nullptr);
  ASSERT_EQ(keshSetPatternNodeArg(node_, 2, out_, kSize) | keshUpdatePatternNode(node_), 0);
  EXPECT_NE(keshSetPatternNodeArg(node_, 9, out_, kSize), 0) << "the library owns no-alloc arguments";
  for (int run = 0; run < 2; ++run) {
    play();
    ASSERT_EQ(keshInvalidateMem(out_), 0);
    EXPECT_EQ(hostBytes(out_), Bytes(kSize, 5)) << "run " << run;
  }
}

// Copying more than an argument's size into its mapping, or reading more back,
// faults on the first byte past it, in the guard page, before it can corrupt anything.
struct OverrunRow {
  const char* name;
  bool write;     ///< copies an input in (else reads a golden's length back)
  size_t excess;  ///< bytes past the argument's size; 0 means one page
  uint32_t size;  ///< the argument's size: never a multiple of a page, small or huge
};

constexpr uint32_t kArgSize = 11235;                     // not a multiple of any page size
constexpr uint32_t kLargeArgSize = (2u << 20) + kArgSize;  // placed on huge pages
uintptr_t guardStart = 0, pageSize = 0;                   // of the child's mapping

void onFault(int, siginfo_t* info, void*) {
  const uintptr_t at = reinterpret_cast<uintptr_t>(info->si_addr);
  _exit(at < guardStart ? 5 : at >= guardStart + pageSize ? 6 : 0);
}

// In a child: overruns a mapping as the tool would. Its status: 0 for a fault in the guard page, 2 for
// none, 3 when the mapping does not end at a page boundary, 5 or 6 for a fault before or past the guard.
int overrun(const OverrunRow& row) {
  struct sigaction action = {};
  action.sa_sigaction = onFault;
  action.sa_flags = SA_SIGINFO;
  sigaction(SIGSEGV, &action, nullptr);
  pageSize = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
  _kesh_mem* mem = keshCreateMem(keshCreatePlayer("KESH pattern tester"), row.size, "in");
  auto* addr = static_cast<uint8_t*>(keshMapMem(mem));
  guardStart = reinterpret_cast<uintptr_t>(addr) + row.size;
  if (addr == nullptr || guardStart % pageSize != 0) return 3;
  std::vector<uint8_t> bytes(row.size + (row.excess == 0 ? pageSize : row.excess), 0x6b);
  if (row.write) {
    std::memmove(addr, bytes.data(), bytes.size());  // as the tool copies an input
    keshFlushMem(mem);
  } else {
    keshInvalidateMem(mem);
    std::memcpy(bytes.data(), addr, bytes.size());  // as the tool reads a golden's length back
  }
  return 2;
}

class GuardPageTest : public ::testing::TestWithParam<OverrunRow> {};

TEST_P(GuardPageTest, OverrunFaultsInTheGuardPageAfterTheMapping) {
  if (KESH_SANITIZED) GTEST_SKIP() << "the sanitizers report the overrun in their own way";
  ChildTask task;
  task.body = [&] { return overrun(GetParam()); };
  const ChildResult child = runChild(task);
  EXPECT_EQ(child.status, 0) << "signal " << child.signal;
}

const OverrunRow kOverruns[] = {
    {"InputOneByteLonger", true, 1, kArgSize},   {"InputOnePageLonger", true, 0, kArgSize},
    {"InputOneMebibyteLonger", true, 1 << 20, kArgSize},   {"GoldenOneByteLonger", false, 1, kArgSize},
    {"GoldenOnePageLonger", false, 0, kArgSize}, {"GoldenOneMebibyteLonger", false, 1 << 20, kArgSize},
    {"LargeInputOneByteLonger", true, 1, kLargeArgSize}, {"LargeGoldenOneByteLonger", false, 1, kLargeArgSize},
};
INSTANTIATE_TEST_SUITE_P(Overruns, GuardPageTest, ::testing::ValuesIn(kOverruns),
                         [](const ::testing::TestParamInfo<OverrunRow>& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace kesh::runtime
