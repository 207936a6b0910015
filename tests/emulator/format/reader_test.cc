#include "format/reader.h"

#include <gtest/gtest.h>

#include <cstring>

#include "format/le_bytes.h"
#include "format/writer.h"
#include "format/op_table.h"
#include "testing/sample_patterns.h"

namespace kesh::format {
namespace {

bool decodes(const std::vector<uint8_t>& bytes, Program* program = nullptr) {
  Program scratch;
  return decodePattern(bytes.data(), bytes.size(), program ? program : &scratch, nullptr);
}

// Decodes `bytes` expecting a refusal whose message contains `reason`, and the output left alone.
void expectRefused(const std::vector<uint8_t>& bytes, const std::string& reason) {
  Program program = testing::sampleProgram();
  std::string error;
  EXPECT_FALSE(decodePattern(bytes.data(), bytes.size(), &program, &error)) << "expected: " << reason;
  EXPECT_NE(error.find(reason), std::string::npos) << "message: " << error << "\nexpected: " << reason;
  EXPECT_TRUE(program == testing::sampleProgram()) << reason;
}

std::vector<uint8_t> withU32(std::vector<uint8_t> bytes, size_t offset, uint32_t value) {
  storeLe32(&bytes[offset], value);
  return bytes;
}

TEST(ReaderTest, DecodesWhatTheWriterWroteWhateverThePaddingHolds) {
  const Program sample = testing::sampleProgram();
  const size_t used = encodedSize(sample);
  EXPECT_TRUE(encodePattern(sample, static_cast<uint32_t>(used - 1)).empty()) << "a pad below the size is refused";
  std::vector<uint8_t> padded = encodePattern(sample, static_cast<uint32_t>(used + 77));
  ASSERT_EQ(loadLe32(&padded[kOffTotalSize]), used + 77) << "the total size counts the padding";
  for (size_t i = used; i < padded.size(); ++i) padded[i] = static_cast<uint8_t>(i * 31 + 1);
  Program decoded;
  ASSERT_TRUE(decodes(padded, &decoded));
  EXPECT_TRUE(decoded == sample);
}

TEST(ReaderTest, RefusesBadHeadersTablesAndOperationsNamingTheCulprit) {
  auto encoded = [](std::vector<ArgSpec> args, std::vector<uint32_t> internals = {}) {
    Program program;
    program.args = std::move(args);
    program.internalSizes = std::move(internals);
    return encodePattern(program);
  };
  const std::vector<uint8_t> good = encodePattern(testing::sampleProgram()), one = encoded({{0, 1, false, "a"}});
  const uint32_t half = kMaxInternalTotal / 2;
  EXPECT_TRUE(decodes(encoded({{0, 1, false, std::string(35, 'n')}, {1, kMaxBufferSize, true, " !~"}}, {half, half})));
  std::vector<uint8_t> unterminated = one, trailing = one;
  std::memset(&unterminated[kHeaderSize + 12], 'z', kArgNameField);
  trailing[kHeaderSize + 12 + kArgNameField - 1] = 'q';
  Program overCount = testing::sampleProgram();
  overCount.ops[3].p[paramPosition(Opcode::kUnary, "count")] = 3073;  // unary count one element past its buffers
  const std::pair<std::vector<uint8_t>, const char*> cases[] = {
      {{}, "shorter than the header"},
      {withU32(good, 0, 0x5841504B), "bad magic"},  // "KPAX"
      {withU32(good, 4, 0x00200002), "unsupported version 2"},
      {withU32(good, 4, 0x00210001), "bad header size 33"},
      {withU32(good, 8, static_cast<uint32_t>(good.size() + 1)), "total size"},
      {withU32(good, 28, 1), "reserved"},
      {withU32(good, 12, kMaxArgs + 1), "argument count 257 over the limit"},
      {withU32(good, 12, 4), "truncated"},
      {encoded({{0, 1, false, "a"}, {1, 1, false, ""}}), "argument 1: empty name"},
      {encoded({{0, 1, false, "a;b"}}), "';' in name"},
      {encoded({{0, 1, false, "a\x7f"}}), "non-printable"},
      {unterminated, "not terminated"},
      {trailing, "non-zero byte after the name"},
      {encoded({{3, 1, false, "a"}, {3, 1, false, "b"}}), "argument 1: duplicate index 3"},
      {encoded({{0, 1, false, "a"}, {1, 1, false, "a"}}), "duplicate name \"a\""},
      {encoded({{0, 0, false, "a"}}), "size 0"},
      {encoded({{0, kMaxBufferSize + 1, false, "a"}}), "over the limit"},
      {withU32(one, kHeaderSize + 8, 3), "unknown flag bits 2"},
      {encoded({}, {4, 0}), "internal buffer 1: size 0"},
      {encoded({}, {half, half, 1}), "internal buffers total"},
      {encodePattern(overCount), "operation 3 (unary): dst: bytes 0..3073 outside its buffer of 3072 bytes"},
  };
  for (const auto& [bytes, reason] : cases) expectRefused(bytes, reason);
}

// Every truncation is refused, even with a consistent total size. Any
// single-byte change is either refused or decodes to a program that encodes
// back to the very same bytes, padding aside: nothing is ignored.
TEST(ReaderTest, EveryTruncationOrSingleByteChangeIsRefusedOrDecodedFaithfully) {
  const std::vector<uint8_t> good = encodePattern(testing::sampleProgram());
  size_t accepted = 0;
  for (size_t i = 0; i < good.size(); ++i) {
    std::vector<uint8_t> prefix(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(i));
    ASSERT_FALSE(decodes(prefix)) << i;
    const bool consistentSize = i >= kHeaderSize;  // the total size field must be there to be rewritten
    ASSERT_FALSE(consistentSize && decodes(withU32(prefix, kOffTotalSize, static_cast<uint32_t>(i)))) << i;
    const uint8_t original = good[i];
    for (uint8_t value : {uint8_t(original ^ 0xFF), uint8_t(original + 1), uint8_t(original - 1), uint8_t(0),
                          uint8_t(0x80), uint8_t(0x3B)}) {
      std::vector<uint8_t> mutated = good;
      mutated[i] = value;
      Program program;
      if (value == original || !decodes(mutated, &program)) continue;
      ++accepted;
      std::vector<uint8_t> again = encodePattern(program, static_cast<uint32_t>(mutated.size()));
      const auto used = static_cast<std::ptrdiff_t>(encodedSize(program));
      ASSERT_TRUE(std::equal(again.begin(), again.begin() + used, mutated.begin())) << "byte " << i << " = " << int(value);
    }
  }
  EXPECT_GT(accepted, 0u);
}

}  // namespace
}  // namespace kesh::format
