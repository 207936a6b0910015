// The checker's own options, which come before kesh_player's arguments.
// Plain value; stateless parsing, thread-safe.
#ifndef KESH_CHECK_CHECK_OPTIONS_H_
#define KESH_CHECK_CHECK_OPTIONS_H_

#include <string>
#include <vector>

namespace kesh::check {

/// What the checker was asked to do.
struct CheckOptions {
  bool werror = false;  ///< warnings fail the check too
  bool json = false;    ///< findings as one JSON document instead of lines
  bool help = false;    ///< print the usage text and stop
  int cores = 0;        ///< cores the library runs on; 0: as the host library counts them
  std::vector<std::string> playerArgs;  ///< kesh_player's arguments, in order
  std::string error;    ///< why the options could not be read; empty when they could
};

/// Reads the checker's options from the front of `argv` (after word 0); the first
/// other word, or whatever follows "--", starts kesh_player's arguments.
CheckOptions parseCheckOptions(int argc, const char* const* argv);

/// The checker's usage text, lines ended.
std::string checkUsage();

/// Cores of the host library: KESH_EMU_CORES when it is 1..256, else the hardware threads.
int hostLibraryCores();

}  // namespace kesh::check

#endif  // KESH_CHECK_CHECK_OPTIONS_H_
