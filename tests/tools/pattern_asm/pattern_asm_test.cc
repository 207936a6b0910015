// The pattern text form and the kesh_pattern_asm command line: text -> binary -> text ->
// binary gives back the very same binary, padding, argument listing and one-line errors.
#include <gtest/gtest.h>

#include <sstream>

#include "format/op_table.h"
#include "pattern_asm/asm_cli.h"
#include "pattern_asm/text_parser.h"
#include "testing/read_file.h"
#include "testing/temp_dir.h"

namespace kesh::pattern_text {
namespace {

class PatternAsmTest : public ::testing::Test {
 protected:
  std::string path(const std::string &name) { return dir_.path() + "/" + name; }
  std::string write(const std::string &name, const std::string &content) { return dir_.write(name, content); }
  int run(const std::vector<std::string> &args) {
    out_.str("");
    err_.str("");
    return runPatternAsm(args, out_, err_);
  }
  kesh::testing::TempDir dir_;
  std::ostringstream out_, err_;
};

using format::bufferRef;
using format::Opcode;
using format::paramPosition;
using format::Space;
using kesh::testing::readFile;

constexpr const char *kFilter =
    "arg \"pix els\" index=2 size=16\n"
    "arg mask index=0 size=16 noalloc\n"
    "binary func=and type=u8 dst=arg:\"pix els\" "
    "a=arg:\"pix els\" b=arg:mask count=16\n";

TEST_F(PatternAsmTest, AssemblesDisassemblesReassemblesAndListsArguments) {
  const std::string binary = path("out.bin"), again = path("again.bin"), text = path("again.kasm");
  ASSERT_EQ(run({"assemble", write("in.kasm", kFilter), "-o", binary}), 0) << err_.str();
  EXPECT_EQ(readFile(binary).size(), 32u + 2 * 48 + 64);
  ASSERT_EQ(run({"disassemble", binary, "-o", text}), 0);
  EXPECT_EQ(out_.str(), "");
  EXPECT_NE(readFile(text).find("binary func=and type=u8 dst=arg:\"pix els\" "
                                "a=arg:\"pix els\" b=arg:mask count=16\n"),
            std::string::npos)
      << readFile(text);
  ASSERT_EQ(run({"assemble", text, "-o", again}), 0) << err_.str();
  EXPECT_EQ(readFile(again), readFile(binary));
  ASSERT_EQ(run({"args", binary}), 0);
  EXPECT_EQ(out_.str(),
            "POS  INDEX  NAME     SIZE  NOALLOC\n"
            "0    2      pix els  16    no\n"
            "1    0      mask     16    yes\n");
}

TEST_F(PatternAsmTest, PadsToTheExactSizeAndSaysHowToReproduceIt) {
  const std::string text = write("in.kasm", kFilter), binary = path("out.bin");
  ASSERT_EQ(run({"assemble", "--pad", "0x400", text, "-o", binary}), 0) << err_.str();
  EXPECT_EQ(readFile(binary).size(), 1024u);
  ASSERT_EQ(run({"disassemble", binary}), 0);
  EXPECT_EQ(out_.str().rfind("# padded to 1024 bytes: assemble with --pad 1024\n", 0), 0u) << out_.str();
  EXPECT_EQ(run({"assemble", text, "-o", binary, "--pad", "191"}), 1);
  EXPECT_EQ(err_.str(), text + ": pattern needs 192 bytes, more than --pad 191\n");
}

TEST_F(PatternAsmTest, ReportsOneLineErrorsWithExitStatusOne) {
  const std::string bad = write("bad.kasm", std::string(kFilter) + "\nfill dst=arg:mask length=17 value=0\n");
  EXPECT_EQ(run({"assemble", bad, "-o", path("x.bin")}), 1);
  EXPECT_EQ(err_.str(), bad + ":5: dst: bytes 0..17 outside its buffer of 16 bytes\n");
  const std::string notPattern = write("junk.bin", "KPAX0000000000000000000000000000");
  EXPECT_EQ(run({"disassemble", notPattern}), 1);
  EXPECT_EQ(err_.str(), notPattern + ": bad magic\n");
  EXPECT_EQ(run({"args", path("missing.bin")}), 1);
  EXPECT_EQ(err_.str(), path("missing.bin") + ": cannot read file\n");
  for (const std::vector<std::string> &args :
       std::vector<std::vector<std::string>>{{"link", "a"}, {"assemble", "a.kasm", "-o"}, {"args", "a.bin", "b.bin"}}) {
    EXPECT_EQ(run(args), 1) << ::testing::PrintToString(args);
    EXPECT_EQ(err_.str().rfind("kesh_pattern_asm: ", 0), 0u) << err_.str();
    EXPECT_EQ(err_.str().find('\n'), err_.str().size() - 1) << err_.str();
  }
}

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
