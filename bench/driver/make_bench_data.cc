// Writes to standard output a pattern of the end-to-end benchmark: by default
// an int8 matrix product of two 192x192 operands, heavy enough to keep one
// core busy; with "copy SIZE" a copy of SIZE bytes from argument "in" to "out".
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "testing/sample_patterns.h"

int main(int argc, char** argv) {
  const bool copy = argc == 3 && std::strcmp(argv[1], "copy") == 0;
  const std::vector<uint8_t> pattern =
      copy ? kesh::testing::copyPattern(static_cast<uint32_t>(std::strtoul(argv[2], nullptr, 10)))
           : kesh::testing::matMulPattern(192, 192, 192);
  return std::fwrite(pattern.data(), 1, pattern.size(), stdout) == pattern.size() ? 0 : 1;
}
