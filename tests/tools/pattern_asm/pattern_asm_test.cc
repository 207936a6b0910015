// The kesh_pattern_asm command line: text -> binary -> text -> binary gives back
// the very same binary, padding, argument listing and one-line errors.
#include <gtest/gtest.h>

#include <sstream>

#include "pattern_asm/asm_cli.h"
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

}  // namespace
}  // namespace kesh::pattern_text
