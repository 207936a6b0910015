// What a careless user or a failing system does to the tool: data longer than
// its argument, an output that cannot be written, memory that runs out. Each
// ends the run at once and visibly, never in a quiet pass or a later crash.
#include <signal.h>
#include <sys/resource.h>

#include <string>
#include <vector>

#include "e2e_config.h"
#include "player_test.h"
#include "testing/child_process.h"
#include "testing/read_file.h"

namespace kesh::testing {
namespace {

using Args = std::vector<std::string>;

class HardeningTest : public PlayerTest {
 protected:
  void SetUp() override {
    const rlimit noCore = {0, 0};  // the deliberate faults below leave no core files
    setrlimit(RLIMIT_CORE, &noCore);
  }

  // Runs `script` with sh in the scratch folder, "$@" standing for the tool
  // with `args`; its exit status.
  int shell(const std::string& script, const Args& args) {
    ChildTask task{{"sh", "-c", script, "sh"}, {}, dir_, {{"KESH_EMU_TRACE", "trace.log"}, {"KESH_EMU_FAIL", {}}}, ""};
    for (const char* word : kLauncher) {
      if (word != nullptr) task.argv.emplace_back(word);
    }
    task.argv.emplace_back(KESH_PLAYER_PATH);
    task.argv.insert(task.argv.end(), args.begin(), args.end());
    return runChild(task).status;
  }

  std::string file(const std::string& name) { return readFile(dir_ + "/" + name); }
};

constexpr uint32_t kArgSize = 11235;
constexpr int kKilledBySegv = 128 + SIGSEGV;

struct OversizeRow {
  const char* name;
  size_t inputExcess;   ///< bytes past the argument's size in in.bin
  size_t goldenExcess;  ///< the same for the golden out.bin
};

class OversizedDataTest : public HardeningTest, public ::testing::WithParamInterface<OversizeRow> {};

// A device faults at the end of a mapping; the run must die there, by
// SIGSEGV, not corrupt the heap and abort later in the allocator.
TEST_P(OversizedDataTest, DiesBySegvAtTheEndOfTheMapping) {
  if (kSanitized) GTEST_SKIP() << "the sanitizers report the fault themselves";
  writeCopyCase(kArgSize);
  std::vector<uint8_t> input(kArgSize + GetParam().inputExcess, 0x21);
  writeFile("in.bin", input);
  std::vector<uint8_t> golden(kArgSize + GetParam().goldenExcess, 0);
  for (uint32_t i = 0; i < kArgSize; ++i) golden[i] = input[i];
  writeFile("out.bin", golden);
  const PlayerRun result = run({"-f", "copy.bin", "-i", "in.bin", "-o", "out.bin"});
  EXPECT_EQ(result.status, kKilledBySegv) << result.err;
  EXPECT_EQ(result.err.find("malloc"), std::string::npos) << result.err;
}

const OversizeRow kOversized[] = {
    {"InputOneByteLonger", 1, 0},
    {"InputOneMebibyteLonger", 1 << 20, 0},
    {"GoldenOneByteLonger", 0, 1},
    {"GoldenOneMebibyteLonger", 0, 1 << 20},
};
INSTANTIATE_TEST_SUITE_P(Oversized, OversizedDataTest, ::testing::ValuesIn(kOversized),
                         [](const ::testing::TestParamInfo<OversizeRow>& row) { return std::string(row.param.name); });

// A log that could not be written is a failed run, named on standard error.
TEST_F(HardeningTest, FullDeviceEndsTheRunWithAWriteError) {
  const int status = shell("\"$@\" >/dev/full 2>stderr.log", {"-t", "5"});
  EXPECT_EQ(status, 1);
  EXPECT_EQ(file("stderr.log"), "kesh_player: write error: No space left on device\n");
}

TEST_F(HardeningTest, ClosedPipeStopsTheRunsEarly) {
  // SIGPIPE ignored, as under some farm launchers: the write fails with EPIPE instead.
  // Enough runs that a reader slow to exit on a loaded machine still closes the pipe long before the end.
  const int status = shell("trap '' PIPE; { \"$@\" 2>stderr.log; echo $? >status.log; } | head -1 >stdout.log",
                           {"-t", "0", "-l", "500"});
  EXPECT_EQ(status, 0);
  EXPECT_EQ(file("stdout.log"), "Test default case: 0\n");
  EXPECT_EQ(file("status.log"), "1\n");
  EXPECT_EQ(file("stderr.log"), "kesh_player: write error: Broken pipe\n");
  EXPECT_LT(countLines(file("trace.log"), "keshCreatePlayer"), 500u) << "every run ran into a closed pipe";
}

struct HungryRow {
  const char* name;
  Args args;  ///< arguments whose data never ends
};

class OutOfMemoryTest : public HardeningTest, public ::testing::WithParamInterface<HungryRow> {};

TEST_P(OutOfMemoryTest, EndsWithOneLineAndStatusOne) {
  if (kSanitized) GTEST_SKIP() << "the sanitizers' shadow memory does not fit under a small limit";
  if (kLauncher[0] != nullptr) GTEST_SKIP() << "an emulating launcher reserves the guest's address space up front";
  writeCopyCase(64);
  const int status = shell("ulimit -v 393216 && \"$@\" >stdout.log 2>stderr.log", GetParam().args);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(file("stderr.log"), "kesh_player: out of memory\n");
}

const HungryRow kHungry[] = {
    {"EndlessCommandFile", {"--command", "/dev/zero"}},
    {"EndlessInput", {"-f", "copy.bin", "-i", "/dev/zero"}},
};
INSTANTIATE_TEST_SUITE_P(EndlessData, OutOfMemoryTest, ::testing::ValuesIn(kHungry),
                         [](const ::testing::TestParamInfo<HungryRow>& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace kesh::testing
