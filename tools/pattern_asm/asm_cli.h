// The command line of the pattern assembler: assemble, disassemble, args.
// Stateless apart from the files it reads and writes; call from one thread.
#ifndef KESH_TOOLS_PATTERN_ASM_ASM_CLI_H_
#define KESH_TOOLS_PATTERN_ASM_ASM_CLI_H_

#include <ostream>
#include <string>
#include <vector>

namespace kesh::pattern_text {

/// Runs the tool on `args` (without the program name), writing results to
/// `out` and one-line errors to `err`; returns the exit status (0 or 1).
int runPatternAsm(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

}  // namespace kesh::pattern_text

#endif  // KESH_TOOLS_PATTERN_ASM_ASM_CLI_H_
