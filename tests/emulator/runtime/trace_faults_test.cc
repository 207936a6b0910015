// The trace and fault injection, configured by environment variables that the
// library reads once per process: every case runs in a forked child.
#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "testing/pattern_calls.h"
#include "testing/sample_patterns.h"
#include "testing/child_process.h"
#include "testing/read_file.h"
#include "testing/temp_dir.h"

namespace kesh::runtime {
namespace {

using namespace kesh::testing;  // NOLINT: the sample patterns and API helpers

/// What a child with KESH_EMU_TRACE and KESH_EMU_FAIL set printed and traced.
struct Traced {
  std::string out;                 ///< standard output, or how the child ended if not with status 0
  std::vector<std::string> lines;  ///< the trace
};

Traced traceOfChild(const char* fail, const std::function<void()>& body) {
  const TempDir dir;
  ChildTask task;
  task.body = [&] {
    body();
    return 0;
  };
  task.env = {{"KESH_EMU_TRACE", dir.path() + "/trace.log"}, {"KESH_EMU_FAIL", fail}};
  const ChildResult child = runChild(task);
  const std::string ended = "status " + std::to_string(child.status) + " signal " + std::to_string(child.signal);
  Traced traced{child.status == 0 ? child.out : ended, {}};
  std::istringstream in(readFile(dir.path() + "/trace.log"));
  for (std::string line; std::getline(in, line);) traced.lines.push_back(line);
  return traced;
}

// `@2` fails only the second call of its function, `@*` every call; a failed
// call writes no output parameter. Unknown names and bad counts are ignored.
TEST(TraceTest, TracesEscapedStringsAndInjectedFailures) {
  const Traced traced = traceOfChild("keshCreateMem@2,keshAddPattern@*,bogus@1,keshMapMem@x", [] {
    _kesh_player* player = keshCreatePlayer("KESH pattern tester");
    _pattern_graph* graph = keshCreatePatternGraph(player, "g");
    _pattern* pattern = loadPattern(player, copyPattern(16, 7, 3));
    _pattern_node_handle* node = nullptr;
    std::cout << keshAddPattern(graph, pattern, 0, 0, &node, nullptr) << (node == nullptr ? " null " : " set ");
    std::cout << keshAddPattern(graph, pattern, 0, 0, &node, "n") << (keshCreateMem(player, 16, "a") ? " mem" : " null")
              << (keshCreateMem(player, 16, "o\"ut\n") ? " mem" : " null")
              << (keshMapMem(keshCreateMem(player, 8, "c")) ? " mapped" : " null");
  });
  EXPECT_EQ(traced.out, "-1 null -1 mem null mapped");
  ASSERT_EQ(traced.lines.size(), 9u);
  EXPECT_EQ(traced.lines[3],
            "keshAddPattern(graph=G2, pattern=T3, reserved0=0, reserved1=0, name=null, node=-) = -1 (injected)");
  EXPECT_EQ(traced.lines[6], "keshCreateMem(player=P1, size=16, name=\"o\\\"ut\\x0a\") = null (injected)");
}

TEST(TraceTest, ConcurrentCallsNeverInterleaveLines) {
  const Traced traced = traceOfChild("", [] {
    std::vector<std::thread> threads(4);
    for (auto& thread : threads) {
      thread = std::thread([] {
        for (int i = 0; i < 100; ++i) keshDestroyPlayer(keshCreatePlayer(std::string(300, 'x').c_str()));
      });
    }
    for (auto& thread : threads) thread.join();
  });
  const std::regex line(R"(keshCreatePlayer\(name="x{300}"\) = P\d+|keshDestroyPlayer\(player=P\d+\) = 0)");
  EXPECT_EQ(traced.out, "");
  EXPECT_EQ(traced.lines.size(), 800u);
  for (const auto& text : traced.lines) ASSERT_TRUE(std::regex_match(text, line)) << text;
}

}  // namespace
}  // namespace kesh::runtime
