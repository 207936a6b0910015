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

/// Runs `body` in a child with `trace` and `fail` as KESH_EMU_TRACE and
/// KESH_EMU_FAIL; returns the child's exit status (body's result).
int runInChild(const std::string& trace, const char* fail, const std::function<int()>& body) {
  pid_t pid = fork();
  if (pid == 0) {
    setenv("KESH_EMU_TRACE", trace.c_str(), 1);
    if (fail != nullptr) setenv("KESH_EMU_FAIL", fail, 1);
    _exit(body());
  }
  int status = 0;
  waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string tracePath(const char* name) {
  std::string path = ::testing::TempDir() + "kesh_trace_" + std::to_string(getpid()) + "_" + name;
  std::remove(path.c_str());
  return path;
}

std::vector<std::string> readLines(const std::string& path) {
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

#define CHILD_CHECK(condition) \
  if (!(condition)) return __LINE__ % 250 + 1

TEST(TraceTest, OneLinePerCallWithArgumentsOutputsAndResults) {
  std::string path = tracePath("calls");
  int status = runInChild(path, "keshCreateMem@2,keshFlushMem@*", [] {
    _kesh_player* player = keshCreatePlayer("KESH pattern tester");
    _pattern* pattern = loadPattern(player, copyPattern(16));
    _pattern_graph* graph = keshCreatePatternGraph(player, "tester_graph");
    _pattern_node_handle* node = nullptr;
    keshAddPattern(graph, pattern, 0, 0, &node, "tester_pattern");
    keshSetPatternPack(graph, 1, &node);
    keshBuildPatternGraph(graph);
    uint32_t value = 0;
    keshGetPatternArgInfo(pattern, PATTERN_ARG_INFO_NUM, &value, 1);
    keshGetPatternArgInfoSize(pattern, PATTERN_ARG_INFO_NAME, &value);
    _kesh_mem* in = keshCreateMem(player, 16, "in");
    keshCreateMem(player, 16, "o\"ut\n");
    _kesh_mem* out = keshCreateMem(player, 16, "out");
    keshMapMem(in);
    keshFlushMem(in);
    keshSetPatternNodeArg(node, 7, in, 16);
    keshSetPatternNodeArg(node, 3, out, 16);
    keshSetPatternNodeOption(node, PATTERN_NODE_OPTION_BOOST, 50);
    keshUpdatePatternNode(node);
    _pattern_job* job = nullptr;
    keshPlayPatternGraph(player, graph, 0, &job);
    keshWaitPatternJob(job);
    int64_t time = 0;
    keshGetPatternNodeExecInfo(job, node, PATTERN_NODE_EXEC_INFO_IP_TIME, &time);
    keshDestroyPatternNode(nullptr);
    keshAddPattern(graph, pattern, 0, 0, &node, nullptr);
    keshDestroyPatternJob(job);
    uint8_t garbage[64] = {};
    keshCreatePattern(player, garbage, sizeof garbage, "bad");
    return 0;
  });
  ASSERT_EQ(status, 0);
  const std::vector<std::string> expected = {
      R"(keshCreatePlayer\(name="KESH pattern tester"\) = P1)",
      R"(keshCreatePattern\(player=P1, size=192, name="tester_pattern"\) = T2)",
      R"(keshCreatePatternGraph\(player=P1, name="tester_graph"\) = G3)",
      R"(keshAddPattern\(graph=G3, pattern=T2, reserved0=0, reserved1=0, name="tester_pattern", node=N4\) = 0)",
      R"(keshSetPatternPack\(graph=G3, count=1, nodes=\[N4\]\) = 0)",
      R"(keshBuildPatternGraph\(graph=G3\) = 0)",
      R"(keshGetPatternArgInfo\(pattern=T2, type=0, size=1\) = 0)",
      R"(keshGetPatternArgInfoSize\(pattern=T2, type=2, size=7\) = 0)",
      R"(keshCreateMem\(player=P1, size=16, name="in"\) = M5)",
      R"(keshCreateMem\(player=P1, size=16, name="o\\"ut\\x0a"\) = null \(injected\))",
      R"(keshCreateMem\(player=P1, size=16, name="out"\) = M6)",
      R"(keshMapMem\(mem=M5\) = mapped)",
      R"(keshFlushMem\(mem=M5\) = -1 \(injected\))",
      R"(keshSetPatternNodeArg\(node=N4, index=7, mem=M5, size=16\) = 0)",
      R"(keshSetPatternNodeArg\(node=N4, index=3, mem=M6, size=16\) = 0)",
      R"(keshSetPatternNodeOption\(node=N4, option=0, value=50\) = 0)",
      R"(keshUpdatePatternNode\(node=N4\) = 0)",
      R"(keshPlayPatternGraph\(player=P1, graph=G3, flags=0, job=J7\) = 0)",
      R"(keshWaitPatternJob\(job=J7\) = 0)",
      R"(keshGetPatternNodeExecInfo\(job=J7, node=N4, kind=1, value=\d+\) = 0)",
      R"(keshDestroyPatternNode\(node=null\) = -1)",
      R"(keshAddPattern\(graph=G3, pattern=T2, reserved0=0, reserved1=0, name=null, node=-\) = -1)",
      R"(keshDestroyPatternJob\(job=J7\) = 0)",
      R"(keshCreatePattern\(player=P1, size=64, name="bad"\) = null \(refused: .+\))",
  };
  std::vector<std::string> lines = readLines(path);
  ASSERT_EQ(lines.size(), expected.size());
  for (size_t i = 0; i < lines.size(); ++i) {
    EXPECT_TRUE(std::regex_match(lines[i], std::regex(expected[i]))) << lines[i];
  }
}

TEST(TraceTest, ConcurrentCallsNeverInterleaveLines) {
  std::string path = tracePath("threads");
  ASSERT_EQ(runInChild(path, nullptr, [] {
              std::string name(300, 'x');
              std::vector<std::thread> threads;
              for (int t = 0; t < 4; ++t) {
                threads.emplace_back([&name] {
                  for (int i = 0; i < 100; ++i) keshDestroyPlayer(keshCreatePlayer(name.c_str()));
                });
              }
              for (auto& thread : threads) thread.join();
              return 0;
            }),
            0);
  std::regex line(R"(keshCreatePlayer\(name="x{300}"\) = P\d+|keshDestroyPlayer\(player=P\d+\) = 0)");
  std::vector<std::string> lines = readLines(path);
  EXPECT_EQ(lines.size(), 800u);
  for (const auto& text : lines) ASSERT_TRUE(std::regex_match(text, line)) << text;
}

TEST(FaultTest, NamedCallsFailAndDoNothing) {
  int status = runInChild("", "keshCreatePlayer@1,keshCreateMem@2,keshAddPattern@*,bogus@1,keshMapMem@x,keshMapMem@0",
                          [] {
                            CHILD_CHECK(keshCreatePlayer("p") == nullptr);
                            _kesh_player* player = keshCreatePlayer("p");
                            CHILD_CHECK(player != nullptr);
                            _kesh_mem* mems[3] = {keshCreateMem(player, 8, "a"), keshCreateMem(player, 8, "b"),
                                                  keshCreateMem(player, 8, "c")};
                            CHILD_CHECK(mems[0] != nullptr && mems[1] == nullptr && mems[2] != nullptr);
                            CHILD_CHECK(keshMapMem(mems[0]) != nullptr);
                            _pattern* pattern = loadPattern(player, copyPattern(8));
                            _pattern_graph* graph = keshCreatePatternGraph(player, "g");
                            auto* sentinel = reinterpret_cast<_pattern_node_handle*>(&player);
                            _pattern_node_handle* node = sentinel;
                            CHILD_CHECK(keshAddPattern(graph, pattern, 0, 0, &node, "n") != 0 && node == sentinel);
                            CHILD_CHECK(keshAddPattern(graph, pattern, 0, 0, &node, "n") != 0);
                            CHILD_CHECK(keshBuildPatternGraph(graph) == 0);
                            return 0;
                          });
  EXPECT_EQ(status, 0) << "a check failed near line " << status - 1 << " (mod 250)";
}

}  // namespace
}  // namespace kesh::runtime::testing
