#include "format/reader.h"

#include <gtest/gtest.h>

#include <cstring>

#include "format/le_bytes.h"
#include "format/writer.h"
#include "sample_program.h"

namespace kesh::format {
namespace {

bool decodes(const std::vector<uint8_t>& bytes, Program* program = nullptr) {
  Program scratch;
  return decodePattern(bytes.data(), bytes.size(), program ? program : &scratch, nullptr);
}

// Decodes `bytes` expecting a refusal whose message contains `reason`.
void expectRefused(const std::vector<uint8_t>& bytes, const std::string& reason) {
  Program program;
  std::string error;
  EXPECT_FALSE(decodePattern(bytes.data(), bytes.size(), &program, &error)) << "expected: " << reason;
  EXPECT_NE(error.find(reason), std::string::npos) << "message: " << error << "\nexpected: " << reason;
}

std::vector<uint8_t> withU32(std::vector<uint8_t> bytes, size_t offset, uint32_t value) {
  storeLe32(&bytes[offset], value);
  return bytes;
}

TEST(ReaderTest, DecodesWhatTheWriterWroteWhateverThePaddingHolds) {
  const Program sample = testing::sampleProgram();
  const size_t used = encodedSize(sample);
  std::vector<uint8_t> padded = encodePattern(sample, static_cast<uint32_t>(used + 77));
  for (size_t i = used; i < padded.size(); ++i) padded[i] = static_cast<uint8_t>(i * 31 + 1);
  Program decoded, empty = sample;
  ASSERT_TRUE(decodes(padded, &decoded));
  EXPECT_TRUE(decoded == sample);
  ASSERT_TRUE(decodes(encodePattern(Program{}), &empty));  // the output is replaced whole
  EXPECT_TRUE(empty == Program{});
}

TEST(ReaderTest, RefusesBadHeaders) {
  const std::vector<uint8_t> good = encodePattern(testing::sampleProgram());
  std::vector<uint8_t> badMagic = good;
  badMagic[3] = 'X';
  expectRefused({}, "shorter than the header");
  expectRefused(std::vector<uint8_t>(good.begin(), good.begin() + 31), "shorter than the header");
  expectRefused(badMagic, "bad magic");
  const struct {
    uint32_t offset, value;
    const char* reason;
  } cases[] = {{4, 0x00200002, "unsupported version 2"},
               {4, 0x00210001, "bad header size 33"},
               {8, static_cast<uint32_t>(good.size() + 1), "total size"},
               {28, 1, "reserved"},
               {12, kMaxArgs + 1, "argument count 257 over the limit"},
               {16, kMaxInternals + 1, "internal buffer count 65 over the limit"},
               {20, kMaxOps + 1, "operation count 65537 over the limit"},
               {24, kMaxConstSize + 1, "constant data over the limit"},
               {24, kMaxConstSize, "truncated"},
               {20, kMaxOps, "truncated"},
               {12, 4, "truncated"}};
  for (const auto& c : cases) expectRefused(withU32(good, c.offset, c.value), c.reason);
}

TEST(ReaderTest, RefusesEveryTruncationEvenWithAConsistentTotalSize) {
  const std::vector<uint8_t> good = encodePattern(testing::sampleProgram());
  for (size_t length = 0; length < good.size(); ++length) {
    std::vector<uint8_t> prefix(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length));
    ASSERT_FALSE(decodes(prefix)) << length;
    if (length >= kHeaderSize) {
      ASSERT_FALSE(decodes(withU32(prefix, kOffTotalSize, static_cast<uint32_t>(length)))) << length;
    }
  }
}

TEST(ReaderTest, RefusesBadArgumentAndInternalBufferTables) {
  auto encoded = [](std::vector<ArgSpec> args, std::vector<uint32_t> internals = {}) {
    Program program;
    program.args = std::move(args);
    program.internalSizes = std::move(internals);
    return encodePattern(program);
  };
  const uint32_t half = kMaxInternalTotal / 2;
  EXPECT_TRUE(decodes(encoded({{0, 1, false, std::string(35, 'n')}, {1, kMaxBufferSize, true, " !~"}}, {half, half})));
  const std::pair<std::vector<uint8_t>, const char*> cases[] = {
      {encoded({{0, 1, false, "a"}, {1, 1, false, ""}}), "argument 1: empty name"},
      {encoded({{0, 1, false, "a;b"}}), "';' in name"},
      {encoded({{0, 1, false, "a\x7f"}}), "non-printable"},
      {encoded({{0, 1, false, "a\tb"}}), "non-printable"},
      {encoded({{0, 1, false, "\xc3\xa9"}}), "non-printable"},
      {encoded({{3, 1, false, "a"}, {3, 1, false, "b"}}), "argument 1: duplicate index 3"},
      {encoded({{0, 1, false, "a"}, {1, 1, false, "a"}}), "duplicate name \"a\""},
      {encoded({{0, 0, false, "a"}}), "size 0"},
      {encoded({{0, kMaxBufferSize + 1, false, "a"}}), "over the limit"},
      {withU32(encoded({{0, 1, false, "a"}}), kHeaderSize + 8, 3), "unknown flag bits 2"},
      {encoded({}, {4, 0}), "internal buffer 1: size 0"},
      {encoded({}, {kMaxBufferSize + 1}), "over the limit"},
      {encoded({}, {half, half, 1}), "internal buffers total"},
  };
  for (const auto& [bytes, reason] : cases) expectRefused(bytes, reason);

  const std::vector<uint8_t> one = encoded({{0, 1, false, "a"}});
  const size_t name = kHeaderSize + 12;
  std::vector<uint8_t> unterminated = one, trailing = one;
  std::memset(&unterminated[name], 'z', kArgNameField);
  trailing[name + kArgNameField - 1] = 'q';
  expectRefused(unterminated, "not terminated");
  expectRefused(trailing, "non-zero byte after the name");
}

TEST(ReaderTest, NamesTheFailingOperationAndLeavesTheOutputAlone) {
  Program program = testing::sampleProgram();
  program.ops[3].p[6] = 3073;  // unary count one element past its buffers
  expectRefused(encodePattern(program), "operation 3 (unary): dst: bytes 0..3073 outside its buffer of 3072 bytes");

  program.ops[3].p[6] = 3072;
  program.ops[5].opcode = static_cast<Opcode>(0x99);
  expectRefused(encodePattern(program), "unknown opcode 153");
  Program out = testing::sampleProgram();
  EXPECT_FALSE(decodes(encodePattern(program), &out));
  EXPECT_TRUE(out == testing::sampleProgram());
}

// Any single-byte change is either refused or decodes to a program that
// encodes back to the very same bytes, padding aside: nothing is ignored.
TEST(ReaderTest, EverySingleByteChangeIsRefusedOrDecodedFaithfully) {
  const std::vector<uint8_t> good = encodePattern(testing::sampleProgram());
  size_t accepted = 0;
  for (size_t i = 0; i < good.size(); ++i) {
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
