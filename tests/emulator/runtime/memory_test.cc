// Device memory: the host mapping and the device buffer are distinct, and
// only flush and invalidate bridge them; what a job sees is what was applied;
// an access past a mapping faults at once.
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

// Flush and invalidate without effect are caught end to end; here, that nothing else moves data.
TEST_F(MemoryTest, OnlyFlushAndInvalidateMoveData) {
  EXPECT_EQ(hostBytes(out_), Bytes(kSize, 0)) << "fresh memory is zero";
  std::memset(inHost_, 0x42, kSize);
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
