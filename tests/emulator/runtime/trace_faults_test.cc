// The trace and fault injection, configured by environment variables that the
// library reads once per process: every case runs in a forked child whose
// environment is set before its first call. This process never calls the
// library itself.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "test_patterns.h"

namespace kesh::runtime::testing {
namespace {

/// Runs `body` in a child with KESH_EMU_TRACE and KESH_EMU_FAIL set; the lines
/// it traced, or a single "exit N" line if the body returned N != 0.
std::vector<std::string> traceOfChild(const char* name, const char* fail, const std::function<int()>& body) {
  const std::string path = ::testing::TempDir() + "kesh_trace_" + std::to_string(getpid()) + "_" + name;
  std::remove(path.c_str());
  const pid_t pid = fork();
  if (pid == 0) {
    setenv("KESH_EMU_TRACE", path.c_str(), 1);
    setenv("KESH_EMU_FAIL", fail, 1);
    _exit(body());
  }
  int status = 0;
  waitpid(pid, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return {"exit " + std::to_string(status)};
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// `@2` fails only the second call of its function, `@*` every call; a failed
// call writes no output parameter. Unknown names and bad counts are ignored.
TEST(TraceTest, TracesHandlesStringsOutputsAndInjectedFailures) {
  const std::vector<std::string> lines = traceOfChild("calls", "keshCreateMem@2,keshAddPattern@*,bogus@1,keshMapMem@x", [] {
    _kesh_player* player = keshCreatePlayer("KESH pattern tester");
    _pattern_graph* graph = keshCreatePatternGraph(player, "g");
    _pattern* pattern = loadPattern(player, copyPattern(16, 7, 3));
    _pattern_node_handle* node = nullptr;
    const bool ok = keshAddPattern(graph, pattern, 0, 0, &node, nullptr) != 0 && node == nullptr &&
                    keshAddPattern(graph, pattern, 0, 0, &node, "n") != 0 && keshCreateMem(player, 16, "a") != nullptr &&
                    keshCreateMem(player, 16, "o\"ut\n") == nullptr && keshMapMem(keshCreateMem(player, 8, "c")) != nullptr;
    return ok ? 0 : 1;
  });
  EXPECT_EQ(lines, (std::vector<std::string>{
                       "keshCreatePlayer(name=\"KESH pattern tester\") = P1",
                       "keshCreatePatternGraph(player=P1, name=\"g\") = G2",
                       "keshCreatePattern(player=P1, size=192, name=\"tester_pattern\") = T3",
                       "keshAddPattern(graph=G2, pattern=T3, reserved0=0, reserved1=0, name=null, node=-) = -1 (injected)",
                       "keshAddPattern(graph=G2, pattern=T3, reserved0=0, reserved1=0, name=\"n\", node=-) = -1 (injected)",
                       "keshCreateMem(player=P1, size=16, name=\"a\") = M4",
                       "keshCreateMem(player=P1, size=16, name=\"o\\\"ut\\x0a\") = null (injected)",
                       "keshCreateMem(player=P1, size=8, name=\"c\") = M5",
                       "keshMapMem(mem=M5) = mapped",
                   }));
}

TEST(TraceTest, ConcurrentCallsNeverInterleaveLines) {
  const std::vector<std::string> lines = traceOfChild("threads", "", [] {
    std::vector<std::thread> threads(4);
    for (auto& thread : threads) {
      thread = std::thread([] {
        for (int i = 0; i < 100; ++i) keshDestroyPlayer(keshCreatePlayer(std::string(300, 'x').c_str()));
      });
    }
    for (auto& thread : threads) thread.join();
    return 0;
  });
  const std::regex line(R"(keshCreatePlayer\(name="x{300}"\) = P\d+|keshDestroyPlayer\(player=P\d+\) = 0)");
  EXPECT_EQ(lines.size(), 800u);
  for (const auto& text : lines) ASSERT_TRUE(std::regex_match(text, line)) << text;
}

}  // namespace
}  // namespace kesh::runtime::testing
