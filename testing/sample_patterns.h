// The sample patterns of the tests, benchmarks and fuzz seeds, built with the operation builder and
// the format writer: one definition of each. Stateless; safe from any thread.
#ifndef KESH_TESTING_SAMPLE_PATTERNS_H_
#define KESH_TESTING_SAMPLE_PATTERNS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "format/op_builder.h"
#include "format/program.h"

namespace kesh::testing {

/// An argument of a sample pattern.
struct TestArg {
  std::string name;      ///< name the library reports
  uint32_t index = 0;    ///< binding index
  uint32_t size = 0;     ///< bytes
  bool noAlloc = false;  ///< the library provides the buffer
};

/// The binary of a pattern with `args`, `ops`, constant data `constData` and no internal buffers.
std::vector<uint8_t> patternBinary(const std::vector<TestArg>& args, const std::vector<format::Op>& ops,
                                   std::vector<uint8_t> constData = {});

/// Reference to the argument at table position `position`.
inline uint32_t argRef(uint32_t position) { return format::bufferRef(format::Space::kArg, position); }

/// A copy of `length` bytes from argument position `src` to position `dst`.
format::Op copyOp(uint32_t dst, uint32_t src, uint32_t length);

/// Arguments "in" (index `inIndex`) and "out" (index `outIndex`) of `size` bytes; out = in.
std::vector<uint8_t> copyPattern(uint32_t size, uint32_t inIndex = 0, uint32_t outIndex = 1);

/// Arguments "in" (0), "scratch" (9, no-alloc) and "out" (2): out = in + scratch (u8, saturated), then
/// scratch is filled with 0xFF, so out equals in on every run only if scratch starts zeroed on every run.
std::vector<uint8_t> scratchPattern(uint32_t size);

/// Arguments "src" (0) and "dst" (1), u8 planes of width x height: a 5x5 box convolution, heavy work.
std::vector<uint8_t> convPattern(uint32_t width, uint32_t height);

/// Buffers of sampleProgram().
inline constexpr uint32_t kIn = format::bufferRef(format::Space::kArg, 0);
inline constexpr uint32_t kOut = format::bufferRef(format::Space::kArg, 1);
inline constexpr uint32_t kScratch = format::bufferRef(format::Space::kArg, 2);
inline constexpr uint32_t kTmp0 = format::bufferRef(format::Space::kInternal, 0);
inline constexpr uint32_t kTmp1 = format::bufferRef(format::Space::kInternal, 1);
inline constexpr uint32_t kConst = format::bufferRef(format::Space::kConst, 0);

/// A valid program that uses every opcode. Arguments in (3072 bytes), out (3072), scratch (256, no-alloc);
/// internal buffers of 3072 and 64 bytes; constants: 3x3 i16 kernel at 0, 256-byte table at 32, i32 biases at 288.
format::Program sampleProgram();

}  // namespace kesh::testing

#endif  // KESH_TESTING_SAMPLE_PATTERNS_H_
