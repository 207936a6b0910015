// Small pattern binaries for the driver's tests, built with the format writer.
// Stateless; safe from any thread.
#ifndef KESH_TESTS_DRIVER_TEST_PATTERNS_H_
#define KESH_TESTS_DRIVER_TEST_PATTERNS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "format/program.h"

namespace kesh::testing {

/// An argument of a test pattern.
struct TestArg {
  std::string name;      ///< name the library reports
  uint32_t index = 0;    ///< binding index
  uint32_t size = 0;     ///< bytes
  bool noAlloc = false;  ///< the library provides the buffer
};

/// The binary of a pattern with `args` and `ops` and no internal buffers.
std::vector<uint8_t> patternBinary(const std::vector<TestArg>& args, const std::vector<format::Op>& ops);

/// A copy of `length` bytes from argument position `src` to position `dst`.
format::Op copyOp(uint32_t dst, uint32_t src, uint32_t length);

/// Two arguments "in" (index 0) and "out" (index 1) of `size` bytes; out = in.
std::vector<uint8_t> copyPattern(uint32_t size);

/// An int8 product c[m][n] of a[m][k] and b[k][n] (all arguments named so,
/// indices 0, 1, 2), heavy enough to keep a core busy for a while.
std::vector<uint8_t> matMulPattern(uint32_t m, uint32_t k, uint32_t n);

}  // namespace kesh::testing

#endif  // KESH_TESTS_DRIVER_TEST_PATTERNS_H_
