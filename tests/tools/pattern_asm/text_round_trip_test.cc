// text -> binary -> text -> binary must give back the very same binary.
#include <gtest/gtest.h>

#include <initializer_list>

#include "format/reader.h"
#include "format/writer.h"
#include "pattern_asm/text_parser.h"
#include "pattern_asm/text_printer.h"
#include "sample_program.h"

namespace kesh::pattern_text {
namespace {

using format::Program;

// Disassembles `binary` and assembles the text again with the same padding.
std::vector<uint8_t> reassemble(const std::vector<uint8_t>& binary, uint32_t padTo = 0) {
  Program decoded;
  std::string error;
  EXPECT_TRUE(format::decodePattern(binary.data(), binary.size(), &decoded, &error)) << error;
  const std::string text = formatPatternText(decoded);
  Program parsed;
  TextError textError;
  EXPECT_TRUE(parsePatternText(text, &parsed, &textError))
      << "line " << textError.line << ": " << textError.message << "\n" << text;
  return format::encodePattern(parsed, padTo);
}

TEST(TextRoundTripTest, EveryOpcodeSurvivesDisassemblyAndReassembly) {
  const std::vector<uint8_t> binary = format::encodePattern(format::testing::sampleProgram());
  EXPECT_EQ(reassemble(binary), binary);
  const std::vector<uint8_t> padded = format::encodePattern(format::testing::sampleProgram(), 4096);
  EXPECT_EQ(reassemble(padded, 4096), padded);
}

TEST(TextRoundTripTest, HandWrittenTextGivesTheSameBinaryAfterARoundTrip) {
  Program program;
  TextError error;
  const std::string text =
      "arg \"in put\" index=4 size=64\n"
      "arg out index=9 size=64 noalloc\n"
      "internal acc 256\n"
      "internal 64\n"
      "copy2d dst=int:acc+8 dst_stride=16 src=arg:\"in put\" src_stride=8 width=8 rows=8\n"
      "conv2d dst=arg:out dst_stride=8 src=arg:\"in put\" src_stride=8 width=8 height=8 row_begin=2 row_end=6 "
      "kernel=const:k5 k=5 shift=8 bias=-128\n"
      "matmul dst=int:acc+200 a=arg:out b=arg:\"in put\" bias=const:b m=2 k=4 n=3 multiplier=-0x40000000 "
      "shift=31 zero_point=-5 out=i8\n"
      "unary func=neg type=i16 dst=int:0 src=int:0 count=4\n"
      "binary func=absdiff type=i32 dst=int:1+0 a=int:0 b=arg:out count=16\n"
      "const pad: zero 3\n"
      "const k5: i16 -1 -1 -1 -1 -1  0 0 0 0 0  1 2 3 4 5  0 0 0 0 0  32767 -32768 0 0 0\n"
      "const b: i32 -1 0x7fffffff -2147483648\n"
      "lut dst=int:0+16 src=int:0+32 count=8 table=const+0\n"
      "fill dst=arg:out+63 length=1 value=255\n"
      "const hex 0102 03\n"
      "const zero 300\n"
      "copy dst=int:0 src=const:b+4 length=8\n";
  ASSERT_TRUE(parsePatternText(text, &program, &error)) << error.line << ": " << error.message;
  const std::vector<uint8_t> binary = format::encodePattern(program);
  EXPECT_EQ(reassemble(binary), binary);
}

// Every single-byte change of a valid binary that the reader still accepts
// must also survive the text form: this reaches every field, and names with
// characters that need quoting or could be taken for syntax.
TEST(TextRoundTripTest, EveryAcceptedMutationOfTheSampleRoundTrips) {
  const std::vector<uint8_t> good = format::encodePattern(format::testing::sampleProgram());
  size_t checked = 0;
  for (size_t i = 0; i < good.size(); ++i) {
    for (int value : std::initializer_list<int>{good[i] ^ 0x01, good[i] ^ 0x80, good[i] + 7, 0xFF, '"', '\\', ' ', '#', '+', '=', ':'}) {
      std::vector<uint8_t> mutated = good;
      mutated[i] = static_cast<uint8_t>(value);
      Program decoded;
      if (!format::decodePattern(mutated.data(), mutated.size(), &decoded, nullptr)) continue;
      ++checked;
      const auto total = static_cast<uint32_t>(mutated.size());
      std::vector<uint8_t> expected = format::encodePattern(decoded, total);
      ASSERT_EQ(reassemble(mutated, total), expected) << "byte " << i << " = " << int(value);
    }
  }
  EXPECT_GT(checked, 1000u);
}

}  // namespace
}  // namespace kesh::pattern_text
