#include "format/op_validator.h"

#include <gtest/gtest.h>

#include "sample_program.h"

namespace kesh::format {
namespace {

using namespace testing;  // NOLINT: buffer names of the sample

constexpr uint32_t kU8 = static_cast<uint32_t>(DType::kU8);
constexpr uint32_t kI16 = static_cast<uint32_t>(DType::kI16);
constexpr uint32_t kI32 = static_cast<uint32_t>(DType::kI32);
constexpr uint32_t kNeg = static_cast<uint32_t>(UnaryFunc::kNeg);
constexpr uint32_t kShlI = static_cast<uint32_t>(UnaryFunc::kShlI);
constexpr uint32_t kAdd = static_cast<uint32_t>(BinaryFunc::kAdd);

struct Case {
  const char* what;
  Op op;
  const char* reason;  // nullptr: the operation is valid
};

void check(const std::vector<Case>& cases) {
  const Program program = sampleProgram();
  for (const Case& c : cases) {
    std::string error;
    const bool valid = validateOp(c.op, program, &error);
    if (!c.reason) {
      EXPECT_TRUE(valid) << c.what << ": " << error;
    } else {
      EXPECT_FALSE(valid) << c.what;
      EXPECT_NE(error.find(c.reason), std::string::npos) << c.what << ": got \"" << error << "\"";
    }
  }
}

Op matmul(uint32_t dst, uint32_t dstOff, uint32_t a, uint32_t m, uint32_t k, uint32_t n) {
  return makeOp(Opcode::kMatMul, {dst, dstOff, a, 0, kIn, 1024, kNoBuffer, 0, m, k, n, 1, 0, 0, kU8});
}

TEST(OpValidatorTest, RangesMayEndExactlyAtTheEndOfTheirBuffer) {
  check({
      {"fill to end", makeOp(Opcode::kFill, {kTmp1, 60, 4, 255}), nullptr},
      {"fill past end", makeOp(Opcode::kFill, {kTmp1, 61, 4, 0}), "dst: bytes 61..65 outside its buffer of 64"},
      {"copy from const end", makeOp(Opcode::kCopy, {kTmp1, 0, kConst, 240, 64}), nullptr},
      {"copy past const end", makeOp(Opcode::kCopy, {kTmp1, 0, kConst, 241, 64}), "src: bytes 241..305"},
      {"copy2d last row at end", makeOp(Opcode::kCopy2D, {kTmp1, 8, 10, kIn, 0, 64, 6, 6}), nullptr},
      {"copy2d last row past end", makeOp(Opcode::kCopy2D, {kTmp1, 9, 10, kIn, 0, 64, 6, 6}), "dst: bytes 9..65"},
      {"i32 elements to end", makeOp(Opcode::kUnary, {kNeg, kI32, kTmp1, 0, kIn, 0, 16}), nullptr},
      {"i32 elements past end", makeOp(Opcode::kUnary, {kNeg, kI32, kTmp1, 4, kIn, 0, 16}), "dst: bytes 4..68"},
      {"binary b past end", makeOp(Opcode::kBinary, {kAdd, kI16, kTmp1, 0, kIn, 0, kOut, 3040, 32}), "b: bytes"},
      {"lut table at end", makeOp(Opcode::kLut, {kTmp1, 0, kIn, 0, 64, kConst, 48}), nullptr},
      {"lut table past end", makeOp(Opcode::kLut, {kTmp1, 0, kIn, 0, 64, kConst, 49}), "table: bytes 49..305"},
      {"conv band at end of dst",
       makeOp(Opcode::kConv2D, {kTmp1, 0, 8, kIn, 0, 64, 8, 48, 40, 48, kConst, 0, 3, 0, 0}),
       "dst: bytes 320..384"},
      {"conv src plane past end",
       makeOp(Opcode::kConv2D, {kOut, 0, 64, kIn, 1, 64, 64, 48, 0, 1, kConst, 0, 3, 0, 0}), "src: bytes 1..3073"},
      {"conv 5x5 kernel past const",
       makeOp(Opcode::kConv2D, {kOut, 0, 64, kIn, 0, 64, 64, 48, 0, 1, kConst, 256, 5, 0, 0}), "kernel: bytes"},
      {"matmul fills scratch", matmul(kScratch, 0, kIn, 16, 64, 16), nullptr},
      {"matmul past scratch", matmul(kScratch, 1, kIn, 16, 64, 16), "dst: bytes 1..257"},
      {"matmul bias past const",
       makeOp(Opcode::kMatMul, {kScratch, 0, kIn, 0, kIn, 64, kConst, 288, 1, 1, 5, 1, 0, 0, kU8}), "bias: bytes"},
  });
}

TEST(OpValidatorTest, RefusesMissingBuffersAndWritesToConstantData) {
  check({
      {"no such argument", makeOp(Opcode::kFill, {bufferRef(Space::kArg, 3), 0, 1, 0}), "dst: no argument 3"},
      {"no such internal", makeOp(Opcode::kCopy, {kTmp0, 0, bufferRef(Space::kInternal, 2), 0, 1}),
       "src: no internal buffer 2"},
      {"const numbered 1", makeOp(Opcode::kCopy, {kTmp0, 0, bufferRef(Space::kConst, 1), 0, 1}), "no number 1"},
      {"unknown space", makeOp(Opcode::kCopy, {kTmp0, 0, 0x03000000u, 0, 1}), "no buffer space 3"},
      {"absent buffer outside matmul bias", makeOp(Opcode::kLut, {kTmp0, 0, kIn, 0, 1, kNoBuffer, 0}),
       "table: no buffer space 255"},
      {"fill const", makeOp(Opcode::kFill, {kConst, 0, 1, 0}), "dst: constant data is read-only"},
      {"no-alloc argument is an ordinary buffer", makeOp(Opcode::kCopy, {kScratch, 0, kScratch, 1, 255}), nullptr},
  });
}

TEST(OpValidatorTest, RefusesUnknownCodesAndNonZeroUnusedParameters) {
  Op unknown = makeOp(Opcode::kFill, {kTmp0, 0, 1, 0});
  unknown.opcode = static_cast<Opcode>(0x12);
  Op trailing = makeOp(Opcode::kFill, {kTmp0, 0, 1, 0});
  trailing.p[14] = 1;
  check({
      {"unknown opcode", unknown, "unknown opcode 18"},
      {"fill p14", trailing, "unused parameter p14"},
      {"lut p7", makeOp(Opcode::kLut, {kTmp0, 0, kIn, 0, 1, kConst, 32, 1}), "unused parameter p7"},
      {"binary p9", makeOp(Opcode::kBinary, {kAdd, kU8, kTmp0, 0, kIn, 0, kIn, 0, 1, 1}), "unused parameter p9"},
      {"unknown unary", makeOp(Opcode::kUnary, {9, kU8, kTmp0, 0, kIn, 0, 1}), "unknown unary function 9"},
      {"unknown binary", makeOp(Opcode::kBinary, {10, kU8, kTmp0, 0, kIn, 0, kIn, 0, 1}), "unknown binary function"},
      {"unknown dtype", makeOp(Opcode::kUnary, {kNeg, 4, kTmp0, 0, kIn, 0, 1}), "unknown element type 4"},
      {"imm on neg", makeOp(Opcode::kUnary, {kNeg, kU8, kTmp0, 0, kIn, 0, 1, 1}), "imm is not used by neg"},
      {"bias_off without bias",
       makeOp(Opcode::kMatMul, {kScratch, 0, kIn, 0, kIn, 64, kNoBuffer, 4, 1, 1, 1, 1, 0, 0, kU8}), "bias_off"},
  });
}

TEST(OpValidatorTest, AllowsOnlyExactInPlaceOverlapForElementwiseOps) {
  check({
      {"unary in place", makeOp(Opcode::kUnary, {kNeg, kI16, kTmp0, 8, kTmp0, 8, 100}), nullptr},
      {"unary shifted by one", makeOp(Opcode::kUnary, {kNeg, kI16, kTmp0, 8, kTmp0, 10, 100}), "dst overlaps src"},
      {"binary into b", makeOp(Opcode::kBinary, {kAdd, kU8, kTmp0, 0, kIn, 0, kTmp0, 0, 64}), nullptr},
      {"binary partial over a", makeOp(Opcode::kBinary, {kAdd, kU8, kTmp0, 1, kTmp0, 0, kIn, 0, 64}),
       "dst overlaps a"},
      {"lut in place", makeOp(Opcode::kLut, {kTmp0, 0, kTmp0, 0, 256, kConst, 32}), nullptr},
      {"lut over its table", makeOp(Opcode::kLut, {kTmp0, 0, kIn, 0, 256, kTmp0, 0}), "dst overlaps table"},
      {"copy overlapping", makeOp(Opcode::kCopy, {kTmp0, 0, kTmp0, 1, 100}), nullptr},
      {"copy2d overlapping", makeOp(Opcode::kCopy2D, {kTmp0, 0, 16, kTmp0, 8, 16, 8, 2}), "dst overlaps src"},
      {"conv dst over src", makeOp(Opcode::kConv2D, {kIn, 0, 64, kIn, 0, 64, 64, 48, 0, 1, kConst, 0, 3, 0, 0}),
       "dst overlaps src"},
      {"conv dst over kernel",
       makeOp(Opcode::kConv2D, {kTmp1, 0, 8, kIn, 0, 8, 8, 8, 0, 1, kTmp1, 4, 3, 0, 0}), "dst overlaps kernel"},
      {"matmul in place", matmul(kIn, 0, kIn, 4, 4, 4), "dst overlaps a"},
      {"matmul over bias",
       makeOp(Opcode::kMatMul, {kTmp0, 0, kIn, 0, kIn, 0, kTmp0, 0, 1, 1, 1, 1, 0, 0, kU8}), "dst overlaps bias"},
  });
}

TEST(OpValidatorTest, RefusesParametersOutOfRange) {
  auto conv = [](uint32_t width, uint32_t height, uint32_t begin, uint32_t end, uint32_t k, uint32_t shift) {
    return makeOp(Opcode::kConv2D, {kOut, 0, 64, kIn, 0, 64, width, height, begin, end, kConst, 0, k, shift, 0});
  };
  check({
      {"zero fill", makeOp(Opcode::kFill, {kTmp0, 0, 0, 0}), "length is 0"},
      {"fill value 256", makeOp(Opcode::kFill, {kTmp0, 0, 1, 256}), "value 256 over 255"},
      {"zero count", makeOp(Opcode::kBinary, {kAdd, kU8, kTmp0, 0, kIn, 0, kIn, 0, 0}), "count is 0"},
      {"shli 31", makeOp(Opcode::kUnary, {kShlI, kU8, kTmp0, 0, kIn, 0, 1, 31}), nullptr},
      {"shli 32", makeOp(Opcode::kUnary, {kShlI, kU8, kTmp0, 0, kIn, 0, 1, 32}), "imm 32 over 31"},
      {"copy2d stride below width", makeOp(Opcode::kCopy2D, {kTmp1, 0, 7, kIn, 0, 8, 8, 1}), "dst_stride below"},
      {"conv k 4", conv(64, 48, 0, 48, 4, 0), "k 4 is not 3 or 5"},
      {"conv shift 32", conv(64, 48, 0, 48, 3, 32), "shift 32 over 31"},
      {"conv empty rows", conv(64, 48, 5, 5, 3, 0), "rows 5..5 not inside height 48"},
      {"conv rows beyond height", conv(64, 48, 0, 49, 3, 0), "not inside height"},
      {"conv zero width", conv(0, 48, 0, 48, 3, 0), "width is 0"},
      {"conv src stride below width",
       makeOp(Opcode::kConv2D, {kOut, 0, 64, kIn, 0, 32, 64, 48, 0, 48, kConst, 0, 3, 0, 0}), "src_stride below"},
      {"matmul m 0", matmul(kTmp0, 0, kIn, 0, 4, 4), "m is 0"},
      {"matmul k over limit", matmul(kTmp0, 0, kIn, 1, kMaxMatMulK + 1, 1), "k 1048577 over 1048576"},
      {"matmul shift 63",
       makeOp(Opcode::kMatMul, {kTmp0, 0, kIn, 0, kIn, 64, kNoBuffer, 0, 1, 1, 1, 1, 63, 0, kU8}), "shift 63"},
      {"matmul i16 out",
       makeOp(Opcode::kMatMul, {kTmp0, 0, kIn, 0, kIn, 64, kNoBuffer, 0, 1, 1, 1, 1, 0, 0, kI16}),
       "output type 2 is not u8 or i8"},
  });
}

// Sizes that would wrap around in 32-bit (or even 64-bit) arithmetic.
TEST(OpValidatorTest, RefusesRangesThatWouldWrapAround) {
  check({
      {"offset + length wraps 32 bits", makeOp(Opcode::kFill, {kTmp0, 0xFFFFFFFFu, 2, 0}), "outside its buffer"},
      {"count * 4 wraps 32 bits", makeOp(Opcode::kUnary, {kNeg, kI32, kTmp0, 0, kIn, 0, 0x40000001u}),
       "outside its buffer"},
      {"rows * stride wraps", makeOp(Opcode::kCopy2D, {kTmp0, 0, 0xFFFFFFFFu, kIn, 0, 64, 8, 0xFFFFFFFFu}),
       "outside its buffer"},
      {"band start wraps",
       makeOp(Opcode::kConv2D, {kOut, 0xFFFFFFFFu, 0xFFFFFFFFu, kIn, 0, 64, 64, 0xFFFFFFFFu, 0xFFFFFFFEu, 0xFFFFFFFFu,
                                kConst, 0, 3, 0, 0}),
       "outside its buffer"},
      {"m * n wraps", matmul(kTmp0, 0, kIn, 0x10000u, 1, 0x10001u), "outside its buffer"},
  });
}

}  // namespace
}  // namespace kesh::format
