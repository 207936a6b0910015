#include "pattern_asm/text_parser.h"

#include <gtest/gtest.h>

#include "format/op_table.h"

namespace kesh::pattern_text {
namespace {

using format::bufferRef;
using format::Opcode;
using format::paramPosition;
using format::Space;

TEST(TextParserTest, LaysOutConstantsResolvesLabelsAndFillsDefaults) {
  format::Program program;
  TextError error;
  ASSERT_TRUE(parsePatternText(
      "arg o index=1 size=100\n"
      "arg i index=0 size=100\n"
      "copy dst=int:t+2 src=const:words+1 length=3   # labels may be used before they are defined\n"
      "conv2d dst=arg:o dst_stride=10 src=arg:i src_stride=10 width=10 height=10 kernel=const:k k=3 shift=0\n"
      "internal t 8\n"
      "const hex 0aFF 01\n"
      "const words: i16 -2 0x1234\n"
      "const i32 -1 305419896\n"
      "const i8 -128 255\n"
      "const k: zero 18\n",
      &program, &error)) << error.line << ": " << error.message;
  const std::vector<uint8_t> expected = {0x0A, 0xFF, 0x01, 0xFE, 0xFF, 0x34, 0x12, 0xFF, 0xFF,
                                         0xFF, 0xFF, 0x78, 0x56, 0x34, 0x12, 0x80, 0xFF};
  ASSERT_EQ(program.constData.size(), expected.size() + 18);
  EXPECT_TRUE(std::equal(expected.begin(), expected.end(), program.constData.begin()));
  ASSERT_EQ(program.ops.size(), 2u);
  const auto& copy = program.ops[0].p;
  EXPECT_EQ(copy[paramPosition(Opcode::kCopy, "dst")], bufferRef(Space::kInternal, 0));
  EXPECT_EQ(copy[paramPosition(Opcode::kCopy, "src")], bufferRef(Space::kConst, 0));
  EXPECT_EQ(copy[paramPosition(Opcode::kCopy, "src") + 1], 4u) << "label at 3, +1";
  const auto& conv = program.ops[1].p;
  EXPECT_EQ(conv[paramPosition(Opcode::kConv2D, "row_end")], 10u) << "row_end defaults to height";
  EXPECT_EQ(conv[paramPosition(Opcode::kConv2D, "kernel") + 1], 17u);
}

TEST(TextParserTest, ReportsTheLineOfTheFirstFault) {
  const std::string head = "# test\narg in index=0 size=16\narg out index=1 size=16\n";
  const struct {
    std::string text;  // appended to `head`, so its first line is line 4
    int line;
    const char* message;
  } cases[] = {
      {"arg in index=2 size=4\n", 4, "duplicate argument name \"in\""},
      {"arg \"x index=2 size=4\n", 4, "unterminated quote"},
      {"internal 268435456\ninternal 1\n", 5, "internal buffers over 268435456 bytes in all"},
      {"const k: i16 1\nconst k: i16 2\n", 5, "duplicate label \"k\""},
      {"const i16 65536\n", 4, "bad i16 \"65536\""},
      {"\n\nmove dst=arg:out\n", 6, "unknown directive or operation \"move\""},
      {"fill dst=arg:out length=16\n", 4, "missing value= for fill"},
      {"fill dst=arg:out length=16 colour=1 value=2\n", 4, "unknown key \"colour\" for fill"},
      {"fill dst=arg:outt length=16 value=1\n", 4, "unknown argument \"outt\""},
      {"fill dst=heap:0 length=16 value=1\n", 4, "bad buffer \"heap:0\""},
      {"copy dst=arg:out src=const:nowhere length=1\n", 4, "unknown constant label \"nowhere\""},
  };
  for (const auto& c : cases) {
    format::Program program;
    TextError error;
    EXPECT_FALSE(parsePatternText(head + c.text, &program, &error)) << c.text;
    EXPECT_EQ(error.line, c.line) << c.text;
    EXPECT_NE(error.message.find(c.message), std::string::npos) << c.text << "got: " << error.message;
  }
}

}  // namespace
}  // namespace kesh::pattern_text
