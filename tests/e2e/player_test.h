// Fixture and helpers of the end-to-end tests: a scratch folder per test with
// pattern, data and command files, runs of the tool, its output with the
// timing values masked, and the host library's call trace. One fixture per
// test; not shared between threads.
#ifndef KESH_TESTS_E2E_PLAYER_TEST_H_
#define KESH_TESTS_E2E_PLAYER_TEST_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "player_process.h"

namespace kesh::testing {

/// One line of the host library's call trace: name(args) = result.
struct TraceCall {
  std::string name;               ///< the C function called
  std::vector<std::string> args;  ///< argument values in call order (quotes kept)
  std::string result;             ///< handle, status, "mapped" or "null"
};

/// Parses trace text, one call per line.
std::vector<TraceCall> parseTrace(const std::string& text);
/// The names of `calls`, in order.
std::vector<std::string> callNames(const std::vector<TraceCall>& calls);
/// How many of `calls` are calls of `name`.
size_t countCalls(const std::vector<TraceCall>& calls, const std::string& name);
/// The calls of `name`, in order.
std::vector<TraceCall> callsOf(const std::vector<TraceCall>& calls, const std::string& name);
/// `text` with every timing value replaced by "#".
std::string maskTimes(const std::string& text);
/// The lines of `text` that start with `prefix`.
std::vector<std::string> linesStartingWith(const std::string& text, const std::string& prefix);

/// A scratch folder per test and runs of the tool inside it.
class PlayerTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  /// Writes `bytes` to the file `name` of the scratch folder.
  void writeFile(const std::string& name, const std::vector<uint8_t>& bytes);
  /// Writes `text` to the file `name` of the scratch folder.
  void writeText(const std::string& name, const std::string& text);
  /// Writes copy.bin (out = in over `size` bytes), in.bin and out.bin, its
  /// golden; `flips` lists positions of out.bin to XOR with 0x5a.
  void writeCopyCase(uint32_t size, const std::vector<size_t>& flips = {});
  /// Runs the tool in the scratch folder.
  PlayerResult run(const std::vector<std::string>& args, const EnvVars& env = {});
  /// Runs the tool with the call trace on and parses the trace into `calls`.
  PlayerResult runTraced(const std::vector<std::string>& args, std::vector<TraceCall>& calls, EnvVars env = {});

  std::string dir_;  ///< the scratch folder
};

}  // namespace kesh::testing

#endif  // KESH_TESTS_E2E_PLAYER_TEST_H_
