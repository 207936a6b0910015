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

  // Runs `script` with sh in the scratch folder, "$@" standing for the tool with `args`; its exit status.
  int shell(const std::string& script, const Args& args) {
    ChildTask task{{"sh", "-c", script, "sh"}, {}, dir_, {{"KESH_EMU_TRACE", "trace.log"}, {"KESH_EMU_FAIL", {}}}, ""};
    for (const std::string& word : playerCommand(args)) task.argv.push_back(word);
    return runChild(task).status;
  }

  std::string file(const std::string& name) { return readFile(dir_ + "/" + name); }
};

constexpr uint32_t kArgSize = 11235;
constexpr int kKilledBySegv = 128 + SIGSEGV;

// A device faults at the end of a mapping; the run must die there, by SIGSEGV,
// not corrupt the heap and abort later in the allocator. The library's own
// tests place the fault in the guard page for every size.
TEST_F(HardeningTest, OversizedDataDiesBySegvAtTheEndOfTheMapping) {
  if (kSanitized) GTEST_SKIP() << "the sanitizers report the fault themselves";
  writeCopyCase(kArgSize);
  for (const char* name : {"in.bin", "out.bin"}) writeFile(name, std::vector<uint8_t>(kArgSize, 0x21));
  writeFile("long/in.bin", std::vector<uint8_t>(kArgSize + 1, 0x21));
  writeFile("long/out.bin", std::vector<uint8_t>(kArgSize + (1 << 20), 0x21));
  for (const Args& args : {Args{"-f", "copy.bin", "-i", "long/in.bin", "-o", "out.bin"},
                           Args{"-f", "copy.bin", "-i", "in.bin", "-o", "long/out.bin"}}) {
    const PlayerRun result = run(args);
    EXPECT_EQ(result.status, kKilledBySegv) << args[3] << " " << args[5] << ": " << result.err;
    EXPECT_EQ(result.err.find("malloc"), std::string::npos) << result.err;
  }
}

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

// Every allocation fails through one handler: an input that never ends stands for all.
TEST_F(HardeningTest, EndlessInputRunsOutOfMemoryWithOneLineAndStatusOne) {
  if (kSanitized) GTEST_SKIP() << "the sanitizers' shadow memory does not fit under a small limit";
  if (kLauncher[0] != nullptr) GTEST_SKIP() << "an emulating launcher reserves the guest's address space up front";
  writeCopyCase(64);
  EXPECT_EQ(shell("ulimit -v 393216 && \"$@\" >stdout.log 2>stderr.log", {"-f", "copy.bin", "-i", "/dev/zero"}), 1);
  EXPECT_EQ(file("stderr.log"), "kesh_player: out of memory\n");
}

}  // namespace
}  // namespace kesh::testing
