// kesh_pattern_asm: pattern text <-> pattern binary, argument listings, and
// running a pattern on the pattern library to make its goldens.
#include <iostream>
#include <string>
#include <vector>

#include "pattern_asm/asm_cli.h"
#include "pattern_asm/run_command.h"

int main(int argc, char** argv) {
  const std::vector<std::string> args(argv + 1, argv + argc);
  if (!args.empty() && args[0] == "run") return kesh::pattern_text::runPatternCommand(args, std::cerr);
  return kesh::pattern_text::runPatternAsm(args, std::cout, std::cerr);
}
