// Runs the built kesh_player as a separate process, as a user would, through
// the configured launcher. Stateless; call from one thread at a time.
#ifndef KESH_TESTS_E2E_PLAYER_PROCESS_H_
#define KESH_TESTS_E2E_PLAYER_PROCESS_H_

#include <string>
#include <utility>
#include <vector>

namespace kesh::testing {

/// What one run of the tool left behind.
struct PlayerResult {
  int status = -1;  ///< exit status, or 128 + signal number when killed
  std::string out;  ///< everything written to standard output
  std::string err;  ///< everything written to standard error
};

/// Environment variables set for the tool on top of the test's own
/// environment (from which every KESH_EMU_FAIL and KESH_EMU_TRACE is removed).
using EnvVars = std::vector<std::pair<std::string, std::string>>;

/// The tool's path, as its own messages show it in word 0.
const std::string& playerPath();

/// Runs the tool in `workDir` with `args`; its output goes through files in
/// `workDir` (stdout.log, stderr.log).
PlayerResult runPlayer(const std::string& workDir, const std::vector<std::string>& args, const EnvVars& env = {});

}  // namespace kesh::testing

#endif  // KESH_TESTS_E2E_PLAYER_PROCESS_H_
