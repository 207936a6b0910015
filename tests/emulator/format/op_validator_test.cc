#include "format/op_validator.h"

#include <gtest/gtest.h>

#include "sample_program.h"

namespace kesh::format {
namespace {

using namespace testing;  // NOLINT: buffer names of the sample

constexpr uint32_t kU8 = static_cast<uint32_t>(DType::kU8);
constexpr uint32_t kI32 = static_cast<uint32_t>(DType::kI32);
constexpr uint32_t kNeg = static_cast<uint32_t>(UnaryFunc::kNeg);
constexpr uint32_t kShlI = static_cast<uint32_t>(UnaryFunc::kShlI);
constexpr uint32_t kAdd = static_cast<uint32_t>(BinaryFunc::kAdd);

Op matmul(uint32_t dst, uint32_t dstOff, uint32_t m, uint32_t k, uint32_t n, uint32_t out = kU8) {
  return makeOp(Opcode::kMatMul, {dst, dstOff, kIn, 0, kIn, 1024, kNoBuffer, 0, m, k, n, 1, 0, 0, out});
}

Op conv(uint32_t dst, uint32_t width, uint32_t begin, uint32_t end, uint32_t kernelOff, uint32_t k) {
  return makeOp(Opcode::kConv2D, {dst, 0, 8, kIn, 0, 64, width, 48, begin, end, kConst, kernelOff, k, 0, 0});
}

// One row per kind of check: ranges ending exactly at their buffer's end pass,
// one byte more fails, whatever shape (bytes, elements, rows, bands) the
// operation's extent has.
TEST(OpValidatorTest, AcceptsOrRefusesWithTheReason) {
  Op unknown = makeOp(Opcode::kFill, {kTmp0, 0, 1, 0}), trailing = unknown;
  unknown.opcode = static_cast<Opcode>(0x12);
  trailing.p[14] = 1;
  const struct {
    const char* what;
    Op op;
    const char* reason;  // nullptr: the operation is valid
  } cases[] = {
      {"fill to end", makeOp(Opcode::kFill, {kTmp1, 60, 4, 255}), nullptr},
      {"fill past end", makeOp(Opcode::kFill, {kTmp1, 61, 4, 0}), "dst: bytes 61..65 outside its buffer of 64"},
      {"copy2d last row at end", makeOp(Opcode::kCopy2D, {kTmp1, 8, 10, kIn, 0, 64, 6, 6}), nullptr},
      {"copy2d last row past end", makeOp(Opcode::kCopy2D, {kTmp1, 9, 10, kIn, 0, 64, 6, 6}), "dst: bytes 9..65"},
      {"i32 elements past end", makeOp(Opcode::kUnary, {kNeg, kI32, kTmp1, 4, kIn, 0, 16}), "dst: bytes 4..68"},
      {"conv band at end of dst", conv(kTmp1, 8, 40, 48, 0, 3), "dst: bytes 320..384"},
      {"conv 5x5 kernel past const", conv(kOut, 8, 0, 1, 256, 5), "kernel: bytes"},
      {"matmul past scratch", matmul(kScratch, 1, 16, 64, 16), "dst: bytes 1..257"},
      {"offset + length wraps 32 bits", makeOp(Opcode::kFill, {kTmp0, 0xFFFFFFFFu, 2, 0}), "outside its buffer"},
      {"count * 4 wraps 32 bits", makeOp(Opcode::kUnary, {kNeg, kI32, kTmp0, 0, kIn, 0, 0x40000001u}), "outside"},
      {"m * n wraps", matmul(kTmp0, 0, 0x10000u, 1, 0x10001u), "outside its buffer"},
      {"no such argument", makeOp(Opcode::kFill, {bufferRef(Space::kArg, 3), 0, 1, 0}), "dst: no argument 3"},
      {"const numbered 1", makeOp(Opcode::kCopy, {kTmp0, 0, bufferRef(Space::kConst, 1), 0, 1}), "no number 1"},
      {"absent buffer outside matmul bias", makeOp(Opcode::kLut, {kTmp0, 0, kIn, 0, 1, kNoBuffer, 0}),
       "table: no buffer space 255"},
      {"fill const", makeOp(Opcode::kFill, {kConst, 0, 1, 0}), "dst: constant data is read-only"},
      {"unknown opcode", unknown, "unknown opcode 18"},
      {"fill p14", trailing, "unused parameter p14"},
      {"unknown unary", makeOp(Opcode::kUnary, {9, kU8, kTmp0, 0, kIn, 0, 1}), "unknown unary function 9"},
      {"imm on neg", makeOp(Opcode::kUnary, {kNeg, kU8, kTmp0, 0, kIn, 0, 1, 1}), "imm is not used by neg"},
      {"unary in place", makeOp(Opcode::kUnary, {kNeg, kU8, kTmp0, 8, kTmp0, 8, 100}), nullptr},
      {"unary shifted by one", makeOp(Opcode::kUnary, {kNeg, kU8, kTmp0, 8, kTmp0, 9, 100}), "dst overlaps src"},
      {"binary partial over a", makeOp(Opcode::kBinary, {kAdd, kU8, kTmp0, 1, kTmp0, 0, kIn, 0, 64}), "dst overlaps a"},
      {"copy overlapping", makeOp(Opcode::kCopy, {kTmp0, 0, kTmp0, 1, 100}), nullptr},
      {"matmul in place", matmul(kIn, 0, 4, 4, 4), "dst overlaps a"},
      {"zero fill", makeOp(Opcode::kFill, {kTmp0, 0, 0, 0}), "length is 0"},
      {"shli 31", makeOp(Opcode::kUnary, {kShlI, kU8, kTmp0, 0, kIn, 0, 1, 31}), nullptr},
      {"shli 32", makeOp(Opcode::kUnary, {kShlI, kU8, kTmp0, 0, kIn, 0, 1, 32}), "imm 32 over 31"},
      {"copy2d stride below width", makeOp(Opcode::kCopy2D, {kTmp1, 0, 7, kIn, 0, 8, 8, 1}), "dst_stride below"},
      {"conv k 4", conv(kOut, 8, 0, 48, 0, 4), "k 4 is not 3 or 5"},
      {"conv empty rows", conv(kOut, 8, 5, 5, 0, 3), "rows 5..5 not inside height 48"},
      {"matmul k over limit", matmul(kTmp0, 0, 1, kMaxMatMulK + 1, 1), "k 1048577 over 1048576"},
      {"matmul i16 out", matmul(kTmp0, 0, 1, 1, 1, static_cast<uint32_t>(DType::kI16)), "output type 2 is not u8"},
  };
  const Program program = sampleProgram();
  for (const auto& c : cases) {
    std::string error;
    const bool valid = validateOp(c.op, program, &error);
    EXPECT_EQ(valid, c.reason == nullptr) << c.what << ": " << error;
    EXPECT_NE(error.find(c.reason ? c.reason : ""), std::string::npos) << c.what << ": got \"" << error << "\"";
  }
}

}  // namespace
}  // namespace kesh::format
