// kesh_pattern_asm: pattern text <-> pattern binary, and argument listings.
#include <iostream>
#include <string>
#include <vector>

#include "pattern_asm/asm_cli.h"

int main(int argc, char** argv) {
  const std::vector<std::string> args(argv + 1, argv + argc);
  return kesh::pattern_text::runPatternAsm(args, std::cout, std::cerr);
}
