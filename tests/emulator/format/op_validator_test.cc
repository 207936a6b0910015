#include "format/op_validator.h"

#include <gtest/gtest.h>

#include "format/op_builder.h"
#include "testing/sample_patterns.h"

namespace kesh::format {
namespace {

using namespace kesh::testing;  // NOLINT: the sample program's buffers

Op fill(BufferAt dst, uint32_t length, uint32_t value = 0) {
  return makeOp(Opcode::kFill, {{"dst", dst}, {"length", length}, {"value", value}});
}

Op copy2d(BufferAt dst, uint32_t dstStride, uint32_t width, uint32_t rows) {
  return makeOp(Opcode::kCopy2D, {{"dst", dst}, {"dst_stride", dstStride}, {"src", kIn}, {"src_stride", 64},
                                  {"width", width}, {"rows", rows}});
}

Op unary(uint32_t func, DType type, BufferAt dst, BufferAt src, uint32_t count, int32_t imm = 0) {
  Op op = makeOp(Opcode::kUnary, {{"type", type}, {"dst", dst}, {"src", src}, {"count", count}, {"imm", imm}});
  op.p[paramPosition(Opcode::kUnary, "func")] = func;  // unknown functions too
  return op;
}

Op matmul(BufferAt dst, uint32_t m, uint32_t k, uint32_t n, DType out = DType::kU8) {
  return makeOp(Opcode::kMatMul, {{"dst", dst}, {"a", kIn}, {"b", BufferAt{kIn, 1024}}, {"m", m}, {"k", k},
                                  {"n", n}, {"multiplier", 1}, {"out", out}});
}

Op conv(uint32_t dst, uint32_t begin, uint32_t end, uint32_t k) {
  return makeOp(Opcode::kConv2D, {{"dst", dst}, {"dst_stride", 8}, {"src", kIn}, {"src_stride", 64},
                                  {"width", 8}, {"height", 48}, {"row_begin", begin}, {"row_end", end},
                                  {"kernel", kConst}, {"k", k}});
}

constexpr uint32_t kNeg = static_cast<uint32_t>(UnaryFunc::kNeg);
constexpr uint32_t kShlI = static_cast<uint32_t>(UnaryFunc::kShlI);

// A range past its buffer, or into the constant data, is caught by the format
// fuzzer, where the executor's own checks stop the program; wrapping is not.
TEST(OpValidatorTest, AcceptsOrRefusesWithTheReason) {
  Op unknown = fill(kTmp0, 1), trailing = unknown;
  unknown.opcode = static_cast<Opcode>(0x12);
  trailing.p[kOpParamCount - 1] = 1;
  const struct {
    const char* what;
    Op op;
    const char* reason;  // nullptr: the operation is valid
  } cases[] = {
      {"fill to end", fill({kTmp1, 60}, 4, 255), nullptr},
      {"offset + length wraps 32 bits", fill({kTmp0, 0xFFFFFFFFu}, 2), "outside its buffer"},
      {"count * 4 wraps 32 bits", unary(kNeg, DType::kI32, kTmp0, kIn, 0x40000001u), "outside"},
      {"m * n wraps", matmul(kTmp0, 0x10000u, 1, 0x10001u), "outside its buffer"},
      {"unknown opcode", unknown, "unknown opcode 18"},
      {"unused last word", trailing, "unused parameter p14"},
      {"unknown unary", unary(9, DType::kU8, kTmp0, kIn, 1), "unknown unary function 9"},
      {"imm on neg", unary(kNeg, DType::kU8, kTmp0, kIn, 1, 1), "imm is not used by neg"},
      {"unary in place", unary(kNeg, DType::kU8, {kTmp0, 8}, {kTmp0, 8}, 100), nullptr},
      {"unary shifted by one", unary(kNeg, DType::kU8, {kTmp0, 8}, {kTmp0, 9}, 100), "dst overlaps src"},
      {"copy overlapping", makeOp(Opcode::kCopy, {{"dst", kTmp0}, {"src", BufferAt{kTmp0, 1}}, {"length", 100}}), nullptr},
      {"matmul in place", matmul(kIn, 4, 4, 4), "dst overlaps a"},
      {"zero fill", fill(kTmp0, 0), "length is 0"},
      {"shli 31", unary(kShlI, DType::kU8, kTmp0, kIn, 1, 31), nullptr},
      {"shli 32", unary(kShlI, DType::kU8, kTmp0, kIn, 1, 32), "imm 32 over 31"},
      {"copy2d stride below width", copy2d(kTmp1, 7, 8, 1), "dst_stride below"},
      {"conv k 4", conv(kOut, 0, 48, 4), "k 4 is not 3 or 5"},
      {"conv empty rows", conv(kOut, 5, 5, 3), "rows 5..5 not inside height 48"},
      {"matmul k over limit", matmul(kTmp0, 1, kMaxMatMulK + 1, 1), "k 1048577 over 1048576"},
      {"matmul i16 out", matmul(kTmp0, 1, 1, 1, DType::kI16), "output type 2 is not u8"},
  };
  const Program program = kesh::testing::sampleProgram();
  for (const auto& c : cases) {
    std::string error;
    const bool valid = validateOp(c.op, program, &error);
    EXPECT_EQ(valid, c.reason == nullptr) << c.what << ": " << error;
    EXPECT_NE(error.find(c.reason ? c.reason : ""), std::string::npos) << c.what << ": got \"" << error << "\"";
  }
}

}  // namespace
}  // namespace kesh::format
