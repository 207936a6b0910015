#include "format/reader.h"

#include <gtest/gtest.h>

#include <cstring>

#include "format/writer.h"
#include "sample_program.h"

namespace kesh::format {
namespace {

void putU32(std::vector<uint8_t>& bytes, size_t offset, uint32_t value) {
  for (int i = 0; i < 4; ++i) bytes[offset + i] = static_cast<uint8_t>(value >> (8 * i));
}

// Decodes `bytes` expecting a refusal whose message contains `reason`.
void expectRefused(const std::vector<uint8_t>& bytes, const std::string& reason) {
  Program program;
  std::string error;
  EXPECT_FALSE(decodePattern(bytes.data(), bytes.size(), &program, &error)) << "expected: " << reason;
  EXPECT_NE(error.find(reason), std::string::npos) << "message: " << error << "\nexpected: " << reason;
}

bool decodes(const std::vector<uint8_t>& bytes, Program* program = nullptr) {
  Program scratch;
  return decodePattern(bytes.data(), bytes.size(), program ? program : &scratch, nullptr);
}

TEST(ReaderTest, AcceptsValidPatternsAndIgnoresPaddingBytes) {
  const Program sample = testing::sampleProgram();
  Program decoded;
  std::string error;
  std::vector<uint8_t> bytes = encodePattern(sample);
  ASSERT_TRUE(decodePattern(bytes.data(), bytes.size(), &decoded, &error)) << error;
  EXPECT_TRUE(decoded == sample);

  const size_t unpadded = bytes.size();
  bytes = encodePattern(sample, static_cast<uint32_t>(unpadded + 77));
  for (size_t i = unpadded; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 31 + 1);
  Program fromPadded;
  ASSERT_TRUE(decodes(bytes, &fromPadded));
  EXPECT_TRUE(fromPadded == sample);

  Program empty;
  Program decodedEmpty = sample;
  ASSERT_TRUE(decodes(encodePattern(empty), &decodedEmpty));
  EXPECT_TRUE(decodedEmpty == empty);
}

TEST(ReaderTest, RefusesBadHeaders) {
  const std::vector<uint8_t> good = encodePattern(testing::sampleProgram());
  auto with = [&](size_t offset, uint32_t value) {
    std::vector<uint8_t> bytes = good;
    putU32(bytes, offset, value);
    return bytes;
  };
  expectRefused(std::vector<uint8_t>(good.begin(), good.begin() + 31), "shorter than the header");
  expectRefused({}, "shorter than the header");
  std::vector<uint8_t> badMagic = good;
  badMagic[3] = 'X';
  expectRefused(badMagic, "bad magic");
  expectRefused(with(4, 0x00200002), "unsupported version 2");
  expectRefused(with(4, 0x00210001), "bad header size 33");
  expectRefused(with(8, static_cast<uint32_t>(good.size() + 1)), "total size");
  expectRefused(with(28, 1), "reserved");
  expectRefused(with(12, kMaxArgs + 1), "argument count 257 over the limit");
  expectRefused(with(16, kMaxInternals + 1), "internal buffer count 65 over the limit");
  expectRefused(with(20, kMaxOps + 1), "operation count 65537 over the limit");
  expectRefused(with(24, kMaxConstSize + 1), "constant data over the limit");
  expectRefused(with(24, kMaxConstSize), "truncated");
  expectRefused(with(20, kMaxOps), "truncated");
  expectRefused(with(12, 4), "truncated");
}

TEST(ReaderTest, RefusesEveryTruncationEvenWithAConsistentTotalSize) {
  const std::vector<uint8_t> good = encodePattern(testing::sampleProgram());
  for (size_t length = 0; length < good.size(); ++length) {
    std::vector<uint8_t> prefix(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length));
    ASSERT_FALSE(decodes(prefix)) << length;
    if (length >= kHeaderSize) {
      putU32(prefix, kOffTotalSize, static_cast<uint32_t>(length));
      ASSERT_FALSE(decodes(prefix)) << length;
    }
  }
}

TEST(ReaderTest, RefusesBadArgumentTables) {
  auto withArgs = [](std::vector<ArgSpec> args) {
    Program program;
    program.args = std::move(args);
    return encodePattern(program);
  };
  EXPECT_TRUE(decodes(withArgs({{0, 1, false, std::string(35, 'n')}, {1, kMaxBufferSize, true, " !~"}})));
  expectRefused(withArgs({{0, 1, false, "a"}, {1, 1, false, ""}}), "argument 1: empty name");
  expectRefused(withArgs({{0, 1, false, "a;b"}}), "';' in name");
  expectRefused(withArgs({{0, 1, false, "a\x7f"}}), "non-printable");
  expectRefused(withArgs({{0, 1, false, "a\tb"}}), "non-printable");
  expectRefused(withArgs({{0, 1, false, "\xc3\xa9"}}), "non-printable");
  expectRefused(withArgs({{3, 1, false, "a"}, {3, 1, false, "b"}}), "argument 1: duplicate index 3");
  expectRefused(withArgs({{0, 1, false, "a"}, {1, 1, false, "a"}}), "duplicate name \"a\"");
  expectRefused(withArgs({{0, 0, false, "a"}}), "size 0");
  expectRefused(withArgs({{0, kMaxBufferSize + 1, false, "a"}}), "over the limit");

  std::vector<uint8_t> bytes = withArgs({{0, 1, false, "a"}});
  const size_t nameField = kHeaderSize + 12;
  std::vector<uint8_t> unterminated = bytes;
  std::memset(&unterminated[nameField], 'z', kArgNameField);
  expectRefused(unterminated, "not terminated");
  std::vector<uint8_t> trailing = bytes;
  trailing[nameField + kArgNameField - 1] = 'q';
  expectRefused(trailing, "non-zero byte after the name");
  std::vector<uint8_t> flags = bytes;
  putU32(flags, kHeaderSize + 8, 3);
  expectRefused(flags, "unknown flag bits 2");
}

TEST(ReaderTest, RefusesBadInternalBuffers) {
  auto withInternals = [](std::vector<uint32_t> sizes) {
    Program program;
    program.internalSizes = std::move(sizes);
    return encodePattern(program);
  };
  EXPECT_TRUE(decodes(withInternals({kMaxInternalTotal / 2, kMaxInternalTotal / 2})));
  expectRefused(withInternals({4, 0}), "internal buffer 1: size 0");
  expectRefused(withInternals({kMaxBufferSize + 1}), "over the limit");
  expectRefused(withInternals({kMaxInternalTotal / 2, kMaxInternalTotal / 2, 1}), "internal buffers total");
}

TEST(ReaderTest, NamesTheFailingOperationAndLeavesTheOutputAlone) {
  Program program = testing::sampleProgram();
  program.ops[3].p[6] = 3073;  // unary count one element past its buffers
  const std::vector<uint8_t> bytes = encodePattern(program);
  expectRefused(bytes, "operation 3 (unary): dst: bytes 0..3073 outside its buffer of 3072 bytes");

  program.ops[3].p[6] = 3072;
  program.ops[5].opcode = static_cast<Opcode>(0x99);
  Program out = testing::sampleProgram();
  std::string error;
  const std::vector<uint8_t> unknown = encodePattern(program);
  EXPECT_FALSE(decodePattern(unknown.data(), unknown.size(), &out, &error));
  EXPECT_NE(error.find("unknown opcode 153"), std::string::npos) << error;
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
      if (value == original) continue;
      std::vector<uint8_t> mutated = good;
      mutated[i] = value;
      Program program;
      if (!decodes(mutated, &program)) continue;
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
