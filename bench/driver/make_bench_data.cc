// Writes to standard output the pattern of the end-to-end benchmark: an int8
// matrix product of two 192x192 operands, heavy enough to keep one core busy.
#include <cstdio>
#include <vector>

#include "testing/sample_patterns.h"

int main() {
  const std::vector<uint8_t> pattern = kesh::testing::matMulPattern(192, 192, 192);
  return std::fwrite(pattern.data(), 1, pattern.size(), stdout) == pattern.size() ? 0 : 1;
}
