// A valid pattern that uses every opcode, for format and text-form tests.
#ifndef KESH_TESTS_EMULATOR_FORMAT_SAMPLE_PROGRAM_H_
#define KESH_TESTS_EMULATOR_FORMAT_SAMPLE_PROGRAM_H_

#include <initializer_list>

#include "format/program.h"

namespace kesh::format::testing {

inline constexpr uint32_t kIn = bufferRef(Space::kArg, 0);
inline constexpr uint32_t kOut = bufferRef(Space::kArg, 1);
inline constexpr uint32_t kScratch = bufferRef(Space::kArg, 2);
inline constexpr uint32_t kTmp0 = bufferRef(Space::kInternal, 0);
inline constexpr uint32_t kTmp1 = bufferRef(Space::kInternal, 1);
inline constexpr uint32_t kConst = bufferRef(Space::kConst, 0);

/// An operation with the given leading parameters; the rest are zero.
inline Op makeOp(Opcode opcode, std::initializer_list<uint32_t> params) {
  Op op;
  op.opcode = opcode;
  size_t i = 0;
  for (uint32_t value : params) op.p[i++] = value;
  return op;
}

/// Arguments in (3072 bytes), out (3072), scratch (256, no-alloc); internal
/// buffers of 3072 and 64 bytes; constant data: a 3x3 i16 kernel at 0, a
/// 256-byte table at 32 and four i32 biases at 288 (304 bytes in all).
inline Program sampleProgram() {
  Program program;
  program.args = {{0, 3072, false, "in"}, {1, 3072, false, "out"}, {7, 256, true, "scratch"}};
  program.internalSizes = {3072, 64};
  program.constData.assign(304, 0);
  const int16_t kernel[9] = {1, 2, 1, 2, 4, 2, 1, 2, -1};
  for (int i = 0; i < 9; ++i) {
    program.constData[2 * i] = static_cast<uint8_t>(kernel[i]);
    program.constData[2 * i + 1] = static_cast<uint8_t>(static_cast<uint16_t>(kernel[i]) >> 8);
  }
  for (int i = 0; i < 256; ++i) program.constData[32 + i] = static_cast<uint8_t>(255 - i);
  program.constData[288] = 0x10;
  program.constData[303] = 0x80;
  program.ops = {
      makeOp(Opcode::kFill, {kTmp0, 0, 3072, 7}),
      makeOp(Opcode::kCopy, {kTmp0, 0, kIn, 0, 3072}),
      makeOp(Opcode::kCopy2D, {kTmp1, 0, 8, kIn, 0, 64, 8, 8}),
      makeOp(Opcode::kUnary, {static_cast<uint32_t>(UnaryFunc::kAddI), 0, kTmp0, 0, kTmp0, 0, 3072, 5}),
      makeOp(Opcode::kBinary, {static_cast<uint32_t>(BinaryFunc::kAvg), 0, kOut, 0, kTmp0, 0, kIn, 0, 3072}),
      makeOp(Opcode::kLut, {kOut, 0, kOut, 0, 3072, kConst, 32}),
      makeOp(Opcode::kConv2D, {kOut, 0, 64, kIn, 0, 64, 64, 48, 0, 48, kConst, 0, 3, 4, 0xFFFFFFF0u}),
      makeOp(Opcode::kMatMul, {kScratch, 0, kIn, 0, kIn, 64, kConst, 288, 4, 16, 4, 1u << 20, 20,
                               static_cast<uint32_t>(-3), static_cast<uint32_t>(DType::kI8)}),
  };
  return program;
}

}  // namespace kesh::format::testing

#endif  // KESH_TESTS_EMULATOR_FORMAT_SAMPLE_PROGRAM_H_
