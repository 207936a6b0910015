#include "format/writer.h"

#include <gtest/gtest.h>

#include "sample_program.h"

namespace kesh::format {
namespace {

using testing::makeOp;

uint32_t u32At(const std::vector<uint8_t>& bytes, size_t offset) {
  return bytes[offset] | (bytes[offset + 1] << 8) | (bytes[offset + 2] << 16) | (uint32_t{bytes[offset + 3]} << 24);
}

TEST(WriterTest, LaysOutHeaderTablesOpsAndConstantsInOrder) {
  Program program;
  program.args = {{5, 0x1234, true, "img"}};
  program.internalSizes = {0xABCD};
  program.ops = {makeOp(Opcode::kFill, {bufferRef(Space::kInternal, 0), 2, 3, 0xFF})};
  program.constData = {0xDE, 0xAD};
  const std::vector<uint8_t> bytes = encodePattern(program);

  ASSERT_EQ(bytes.size(), 32u + 48 + 4 + 64 + 2);
  const std::vector<uint8_t> header(bytes.begin(), bytes.begin() + 8);
  EXPECT_EQ(header, (std::vector<uint8_t>{'K', 'P', 'A', 'T', 1, 0, 32, 0}));
  EXPECT_EQ(u32At(bytes, 8), bytes.size());
  EXPECT_EQ(u32At(bytes, 12), 1u);  // arguments
  EXPECT_EQ(u32At(bytes, 16), 1u);  // internal buffers
  EXPECT_EQ(u32At(bytes, 20), 1u);  // operations
  EXPECT_EQ(u32At(bytes, 24), 2u);  // constant bytes
  EXPECT_EQ(u32At(bytes, 28), 0u);

  EXPECT_EQ(u32At(bytes, 32), 5u);
  EXPECT_EQ(u32At(bytes, 36), 0x1234u);
  EXPECT_EQ(u32At(bytes, 40), 1u);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(&bytes[44])), "img");
  for (size_t i = 44 + 3; i < 80; ++i) EXPECT_EQ(bytes[i], 0) << i;

  EXPECT_EQ(u32At(bytes, 80), 0xABCDu);
  EXPECT_EQ(u32At(bytes, 84), 0x01u);        // fill
  EXPECT_EQ(u32At(bytes, 88), 0x01000000u);  // internal buffer 0
  EXPECT_EQ(u32At(bytes, 92), 2u);
  EXPECT_EQ(u32At(bytes, 96), 3u);
  EXPECT_EQ(u32At(bytes, 100), 0xFFu);
  for (size_t i = 104; i < 148; ++i) EXPECT_EQ(bytes[i], 0) << i;
  EXPECT_EQ(bytes[148], 0xDE);
  EXPECT_EQ(bytes[149], 0xAD);
}

TEST(WriterTest, PadsToTheExactSizeOrRefusesTooSmallAPad) {
  const Program program = testing::sampleProgram();
  const std::vector<uint8_t> plain = encodePattern(program);
  const auto plainSize = static_cast<uint32_t>(plain.size());

  EXPECT_EQ(encodePattern(program, plainSize), plain);
  EXPECT_TRUE(encodePattern(program, plainSize - 1).empty());

  const std::vector<uint8_t> padded = encodePattern(program, plainSize + 1000);
  ASSERT_EQ(padded.size(), plainSize + 1000u);
  EXPECT_EQ(u32At(padded, 8), plainSize + 1000u);
  EXPECT_TRUE(std::equal(plain.begin() + 12, plain.end(), padded.begin() + 12));
  for (size_t i = plain.size(); i < padded.size(); ++i) ASSERT_EQ(padded[i], 0) << i;
}

}  // namespace
}  // namespace kesh::format
