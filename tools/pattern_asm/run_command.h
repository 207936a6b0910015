// `kesh_pattern_asm run`: plays one pattern on the pattern library through its
// C entry points, with inputs bound by file name as kesh_player binds them,
// and writes every argument the caller allocates to OUTDIR/NAME.bin. This is
// how goldens are made from the host library. Call from one thread at a time.
#ifndef KESH_TOOLS_PATTERN_ASM_RUN_COMMAND_H_
#define KESH_TOOLS_PATTERN_ASM_RUN_COMMAND_H_

#include <ostream>
#include <string>
#include <vector>

namespace kesh::pattern_text {

/// Runs `args` ("run", PATTERN.bin, then -i FILE... and -d OUTDIR in any
/// order); writes one-line errors to `err`; returns the exit status (0 or 1).
int runPatternCommand(const std::vector<std::string>& args, std::ostream& err);

}  // namespace kesh::pattern_text

#endif  // KESH_TOOLS_PATTERN_ASM_RUN_COMMAND_H_
