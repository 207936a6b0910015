// The reader, and the rules of each operation that it applies.
#include <gtest/gtest.h>

#include <cstring>

#include "format/le_bytes.h"
#include "format/op_builder.h"
#include "format/op_table.h"
#include "format/op_validator.h"
#include "format/reader.h"
#include "format/writer.h"
#include "testing/sample_patterns.h"

namespace kesh::format {
namespace {

using namespace kesh::testing;  // NOLINT: the sample program's buffers

Op fill(BufferAt dst, uint32_t length, uint32_t value = 0) {
  return makeOp(Opcode::kFill, {{"dst", dst}, {"length", length}, {"value", value}});
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
      {"copy2d stride below width", makeOp(Opcode::kCopy2D, {{"dst", kTmp1}, {"dst_stride", 7}, {"src", kIn},
                                                             {"src_stride", 64}, {"width", 8}, {"rows", 1}}),
       "dst_stride below"},
      {"conv k 4", conv(kOut, 0, 48, 4), "k 4 is not 3 or 5"},
      {"conv empty rows", conv(kOut, 5, 5, 3), "rows 5..5 not inside height 48"},
      {"matmul k over limit", matmul(kTmp0, 1, kMaxMatMulK + 1, 1), "k 1048577 over 1048576"},
      {"matmul i16 out", matmul(kTmp0, 1, 1, 1, DType::kI16), "output type 2 is not u8"},
  };
  const Program program = sampleProgram();
  for (const auto& c : cases) {
    std::string error;
    const bool valid = validateOp(c.op, program, &error);
    EXPECT_EQ(valid, c.reason == nullptr) << c.what << ": " << error;
    EXPECT_NE(error.find(c.reason ? c.reason : ""), std::string::npos) << c.what << ": got \"" << error << "\"";
  }
}

std::vector<uint8_t> withU32(std::vector<uint8_t> bytes, size_t offset, uint32_t value) {
  storeLe32(&bytes[offset], value);
  return bytes;
}

std::vector<uint8_t> encoded(std::vector<ArgSpec> args, std::vector<uint32_t> internals = {}) {
  Program program;
  program.args = std::move(args);
  program.internalSizes = std::move(internals);
  return encodePattern(program);
}

// A refusal names its culprit and leaves the output alone; padding holds anything.
// A field the reader ignores, or bytes it reads past the end, the format fuzzer catches.
TEST(ReaderTest, AcceptsOrRefusesNamingTheCulprit) {
  const Program sample = sampleProgram();
  const std::vector<uint8_t> good = encodePattern(sample), one = encoded({{0, 1, false, "a"}});
  EXPECT_TRUE(encodePattern(sample, static_cast<uint32_t>(good.size() - 1)).empty()) << "a pad below the size";
  std::vector<uint8_t> padded = encodePattern(sample, static_cast<uint32_t>(good.size() + 77));
  for (size_t i = good.size(); i < padded.size(); ++i) padded[i] = static_cast<uint8_t>(i * 31 + 1);
  const uint32_t half = kMaxInternalTotal / 2;
  std::vector<uint8_t> unterminated = one;
  std::memset(&unterminated[kHeaderSize + 12], 'z', kArgNameField);
  Program overCount = sample;
  overCount.ops[3].p[paramPosition(Opcode::kUnary, "count")] = 3073;  // one element past its buffers
  const std::pair<std::vector<uint8_t>, const char*> cases[] = {
      {padded, nullptr},
      {encoded({{0, 1, false, std::string(35, 'n')}, {1, kMaxBufferSize, true, " !~"}}, {half, half}), nullptr},
      {withU32(good, 0, 0x5841504B), "bad magic"},
      {withU32(good, 4, 0x00200002), "unsupported version 2"},
      {withU32(good, 12, kMaxArgs + 1), "argument count 257 over the limit"},
      {withU32(good, 12, 4), "truncated"},
      {encoded({{0, 1, false, "a"}, {1, 1, false, ""}}), "argument 1: empty name"},
      {encoded({{0, 1, false, "a;b"}}), "';' in name"},
      {encoded({{0, 1, false, "a\x7f"}}), "non-printable"},
      {unterminated, "not terminated"},
      {encoded({{3, 1, false, "a"}, {3, 1, false, "b"}}), "argument 1: duplicate index 3"},
      {encoded({{0, 1, false, "a"}, {1, 1, false, "a"}}), "duplicate name \"a\""},
      {encoded({{0, 0, false, "a"}}), "size 0"},
      {encoded({{0, kMaxBufferSize + 1, false, "a"}}), "over the limit"},
      {encoded({}, {4, 0}), "internal buffer 1: size 0"},
      {encoded({}, {half, half, 1}), "internal buffers total"},
      {encodePattern(overCount), "operation 3 (unary): dst: bytes 0..3073 outside its buffer of 3072 bytes"},
  };
  for (const auto& [bytes, reason] : cases) {
    Program program = sample;
    std::string error;
    const bool valid = decodePattern(bytes.data(), bytes.size(), &program, &error);
    EXPECT_EQ(valid, reason == nullptr) << (reason ? reason : "valid") << ": " << error;
    EXPECT_NE(error.find(reason ? reason : ""), std::string::npos) << "got: " << error << "\nexpected: " << reason;
    EXPECT_TRUE(!reason || program == sample) << reason;
  }
  Program decoded;
  ASSERT_TRUE(decodePattern(padded.data(), padded.size(), &decoded, nullptr));
  EXPECT_TRUE(decoded == sample);
}

}  // namespace
}  // namespace kesh::format
