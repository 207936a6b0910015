// Reading kesh_player's arguments with the tool's own parsers, with its data
// reading replaced (no file contents are read) and its process-ending errors
// caught, so that every line of every command file is looked at. Uses the
// parsers' process-wide state and hooks: one call at a time per process.
#ifndef KESH_CHECK_PLAYER_ARGS_H_
#define KESH_CHECK_PLAYER_ARGS_H_

#include <string>
#include <vector>

#include "check/diagnostics.h"
#include "check/pattern_catalog.h"
#include "check/run_findings.h"
#include "check/set_record.h"

namespace kesh::check {

/// What the arguments amount to.
struct PlayerArgs {
  RunFacts run;                ///< global settings
  std::vector<SetRecord> sets; ///< every command set, in the order the tool builds them
};

/// Parses `args` (kesh_player's arguments without word 0) as the tool would.
/// Built-in cases are learnt into `catalog`; findings about the program's own
/// arguments (an unopenable command file, a stop of the global parser) go to `out`.
PlayerArgs readPlayerArgs(const std::vector<std::string>& args, PatternCatalog& catalog, Diagnostics& out);

}  // namespace kesh::check

#endif  // KESH_CHECK_PLAYER_ARGS_H_
