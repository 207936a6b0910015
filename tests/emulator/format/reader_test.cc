#include "format/reader.h"

#include <gtest/gtest.h>

#include <cstring>

#include "format/le_bytes.h"
#include "format/op_table.h"
#include "format/writer.h"
#include "testing/sample_patterns.h"

namespace kesh::format {
namespace {

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
  const Program sample = testing::sampleProgram();
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
