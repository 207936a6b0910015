// Fixture of the end-to-end tests: a scratch folder per test for pattern, data and command files,
// and runs of the built tool in it with the host library's call trace on. Not shared between threads.
#ifndef KESH_TESTS_E2E_PLAYER_TEST_H_
#define KESH_TESTS_E2E_PLAYER_TEST_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "testing/temp_dir.h"

namespace kesh::testing {

/// What one run of the tool left behind.
struct PlayerRun {
  int status = -1;    ///< exit status (128 + signal number when killed)
  std::string out;    ///< standard output, timing values masked as "#"
  std::string err;    ///< standard error
  std::string trace;  ///< the library's call trace, timing values masked as "#", handles numbered per kind
};

/// The lines of `text`, each with its line end, that contain any of `needles`.
std::string linesWith(const std::string& text, const std::vector<std::string>& needles);
/// How many lines of `text` contain `needle`.
size_t countLines(const std::string& text, const std::string& needle);
/// `trace` with each kind of handle numbered on its own in order of appearance (P1, T1, M1, M2, ...).
std::string numberHandlesPerKind(const std::string& trace);
/// The words that start the tool with `args`, through the launcher if there is one.
std::vector<std::string> playerCommand(const std::vector<std::string>& args);

/// A scratch folder per test and runs of the tool inside it.
class PlayerTest : public ::testing::Test {
 protected:
  /// Writes `bytes` to the file `name` of the scratch folder, making its folder.
  void writeFile(const std::string& name, const std::vector<uint8_t>& bytes) { scratch_.write(name, bytes); }
  /// Writes `text` to the file `name` of the scratch folder.
  void writeText(const std::string& name, const std::string& text) { scratch_.write(name, text); }
  /// Writes copy.bin (out = in, `size` bytes), in.bin and `golden`, whose bytes at `flips` are XORed with 0x5a.
  void writeCopyCase(uint32_t size, const std::vector<size_t>& flips = {}, const std::string& golden = "out.bin");
  /// Runs the tool in the scratch folder; `failing` is the library's KESH_EMU_FAIL value, "" for none.
  PlayerRun run(const std::vector<std::string>& args, const std::string& failing = "");

  TempDir scratch_;                          ///< owns the scratch folder
  const std::string dir_ = scratch_.path();  ///< the scratch folder
};

}  // namespace kesh::testing

#endif  // KESH_TESTS_E2E_PLAYER_TEST_H_
