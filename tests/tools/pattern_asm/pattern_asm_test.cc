// The pattern text form and the kesh_pattern_asm command line: text -> binary -> text -> binary
// gives back the very same binary; padding, argument listing, goldens made by `run`, one-line errors.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "format/op_table.h"
#include "pattern_asm/asm_cli.h"
#include "pattern_asm/run_command.h"
#include "pattern_asm/text_parser.h"
#include "testing/read_file.h"
#include "testing/temp_dir.h"

namespace kesh::pattern_text {
namespace {

namespace fs = std::filesystem;
using format::bufferRef;
using format::Opcode;
using format::paramPosition;
using format::Space;
using kesh::testing::readFile;

const std::string kCases = KESH_DEFAULT_CASES_DIR "/";

class PatternAsmTest : public ::testing::Test {
 protected:
  std::string path(const std::string &name) { return dir_.path() + "/" + name; }
  std::string write(const std::string &name, const std::string &content) { return dir_.write(name, content); }
  // The program's exit status on `args`, as its main() dispatches them.
  int run(const std::vector<std::string> &args) {
    out_.str("");
    err_.str("");
    return args[0] == "run" ? runPatternCommand(args, err_) : runPatternAsm(args, out_, err_);
  }
  kesh::testing::TempDir dir_;
  std::ostringstream out_, err_;
};

const std::string kOperation = "binary func=and type=u8 dst=arg:\"pix els\" a=arg:\"pix els\" b=arg:mask count=16\n";
const std::string kFilter = "arg \"pix els\" index=2 size=16\narg mask index=0 size=16 noalloc\n" + kOperation;

TEST_F(PatternAsmTest, AssemblesDisassemblesReassemblesAndListsArguments) {
  const std::string binary = path("out.bin"), again = path("again.bin"), text = path("again.kasm");
  ASSERT_EQ(run({"assemble", write("in.kasm", kFilter), "-o", binary}), 0) << err_.str();
  ASSERT_EQ(run({"disassemble", binary, "-o", text}), 0);
  EXPECT_NE(readFile(text).find(kOperation), std::string::npos) << readFile(text);
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

// Running a built-in case's pattern on its inputs (renamed to NAME.bin, as kesh_player
// users name them) reproduces every golden of the case.
class RunBuiltInCaseTest : public PatternAsmTest, public ::testing::WithParamInterface<int> {};

TEST_P(RunBuiltInCaseTest, ReproducesTheGoldensByteForByte) {
  const std::string prefix = "case" + std::to_string(GetParam()) + "_";
  std::vector<std::string> args = {"run", kCases + prefix + "pattern.bin", "-d", dir_.path()};
  std::vector<std::pair<std::string, std::string>> goldens;  // golden file, argument name
  for (const fs::directory_entry &entry : fs::directory_iterator(kCases)) {
    const std::string file = entry.path().filename().string();
    if (file.rfind(prefix + "in_", 0) == 0)
      args.insert(args.end(), {"-i", write(file.substr(prefix.size() + 3), readFile(entry.path().string()))});
    else if (file.rfind(prefix + "golden_", 0) == 0)
      goldens.emplace_back(entry.path().string(), file.substr(prefix.size() + 7));
  }
  ASSERT_FALSE(goldens.empty());
  ASSERT_EQ(run(args), 0) << err_.str();
  for (const auto &[golden, name] : goldens)
    EXPECT_TRUE(readFile(path(name)) == readFile(golden)) << name << " differs from " << golden;
}

INSTANTIATE_TEST_SUITE_P(BuiltInCases, RunBuiltInCaseTest, ::testing::Range(0, 6),
                         [](const ::testing::TestParamInfo<int> &param) {
                           return "case" + std::to_string(param.param);
                         });

// Each mistake ends the program with status 1 and one line, naming the file where there is one.
TEST_F(PatternAsmTest, ReportsOneLineErrorsWithExitStatusOne) {
  const std::string bad = write("bad.kasm", kFilter + "\nfill dst=arg:mask length=17 value=0\n");
  const std::string junk = write("junk.bin", "KPAX0000000000000000000000000000"), none = path("none.bin");
  const std::string pattern = kCases + "case4_pattern.bin", big = write("GI_65540.bin", std::string(11236, 'x'));
  const struct {
    std::vector<std::string> args;
    std::string err;  // what the line begins with
  } kRows[] = {
      {{"assemble", bad, "-o", path("x.bin")}, bad + ":5: dst: bytes 0..17 outside its buffer of 16 bytes\n"},
      {{"disassemble", junk}, junk + ": bad magic\n"},
      {{"args", none}, none + ": cannot read file\n"},
      {{"link", "a"}, "kesh_pattern_asm: "},
      {{"assemble", "a.kasm", "-o"}, "kesh_pattern_asm: "},
      {{"args", "a.bin", "b.bin"}, "kesh_pattern_asm: "},
      {{"run", pattern, "-x"}, "kesh_pattern_asm: unknown option -x (see --help)\n"},
      {{"run", junk}, junk + ": the pattern library refuses this pattern\n"},
      {{"run", pattern, "-i", junk}, junk + ": names no argument of " + pattern + " (it binds to \"junk\")\n"},
      {{"run", pattern, "-i", big}, big + ": 11236 bytes, more than the 11235 of argument GI_65540\n"},  // one over
  };
  for (const auto &row : kRows) {
    EXPECT_EQ(run(row.args), 1) << ::testing::PrintToString(row.args);
    EXPECT_EQ(err_.str().rfind(row.err, 0), 0u) << err_.str();
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
