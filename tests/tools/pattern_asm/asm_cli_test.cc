#include "pattern_asm/asm_cli.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>

namespace kesh::pattern_text {
namespace {

class AsmCliTest : public ::testing::Test {
 protected:
  std::string path(const std::string& name) {
    return ::testing::TempDir() + "asm_cli_" + ::testing::UnitTest::GetInstance()->current_test_info()->name() +
           "_" + name;
  }

  std::string write(const std::string& name, const std::string& content) {
    const std::string file = path(name);
    std::ofstream(file, std::ios::binary) << content;
    return file;
  }

  static std::string read(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  int run(const std::vector<std::string>& args) {
    out_.str("");
    err_.str("");
    return runPatternAsm(args, out_, err_);
  }

  std::ostringstream out_;
  std::ostringstream err_;
};

constexpr const char* kFilter =
    "arg pixels index=2 size=16\n"
    "arg mask index=0 size=16 noalloc\n"
    "binary func=and type=u8 dst=arg:pixels a=arg:pixels b=arg:mask count=16\n";

TEST_F(AsmCliTest, AssemblesDisassemblesAndListsArguments) {
  const std::string text = write("in.kasm", kFilter);
  const std::string binary = path("out.bin");
  ASSERT_EQ(run({"assemble", text, "-o", binary}), 0) << err_.str();
  EXPECT_EQ(err_.str(), "");
  EXPECT_EQ(read(binary).size(), 32u + 2 * 48 + 64);

  ASSERT_EQ(run({"disassemble", binary}), 0) << err_.str();
  const std::string listing = out_.str();
  EXPECT_NE(listing.find("binary func=and type=u8 dst=arg:pixels a=arg:pixels b=arg:mask count=16\n"),
            std::string::npos)
      << listing;
  const std::string textOut = path("again.kasm");
  ASSERT_EQ(run({"disassemble", binary, "-o", textOut}), 0);
  EXPECT_EQ(out_.str(), "");
  EXPECT_EQ(read(textOut), listing);

  ASSERT_EQ(run({"args", binary}), 0);
  EXPECT_EQ(out_.str(),
            "POS  INDEX  NAME    SIZE  NOALLOC\n"
            "0    2      pixels  16    no\n"
            "1    0      mask    16    yes\n");
}

TEST_F(AsmCliTest, PadsToTheExactSizeAndSaysHowToReproduceIt) {
  const std::string text = write("in.kasm", kFilter);
  const std::string binary = path("out.bin");
  ASSERT_EQ(run({"assemble", "--pad", "0x400", text, "-o", binary}), 0) << err_.str();
  EXPECT_EQ(read(binary).size(), 1024u);
  ASSERT_EQ(run({"disassemble", binary}), 0);
  EXPECT_EQ(out_.str().rfind("# padded to 1024 bytes: assemble with --pad 1024\n", 0), 0u) << out_.str();

  EXPECT_EQ(run({"assemble", text, "-o", binary, "--pad", "191"}), 1);
  EXPECT_EQ(err_.str(), text + ": pattern needs 192 bytes, more than --pad 191\n");
}

TEST_F(AsmCliTest, ReportsOneLineErrorsWithExitStatusOne) {
  const std::string bad = write("bad.kasm", std::string(kFilter) + "\nfill dst=arg:mask length=17 value=0\n");
  EXPECT_EQ(run({"assemble", bad, "-o", path("x.bin")}), 1);
  EXPECT_EQ(err_.str(), bad + ":5: dst: bytes 0..17 outside its buffer of 16 bytes\n");

  const std::string notPattern = write("junk.bin", "KPAX0000000000000000000000000000");
  EXPECT_EQ(run({"args", notPattern}), 1);
  EXPECT_EQ(err_.str(), notPattern + ": bad magic\n");
  EXPECT_EQ(run({"disassemble", notPattern}), 1);
  EXPECT_EQ(err_.str(), notPattern + ": bad magic\n");
  EXPECT_EQ(out_.str(), "");

  EXPECT_EQ(run({"args", path("missing.bin")}), 1);
  EXPECT_EQ(err_.str(), path("missing.bin") + ": cannot read file\n");
}

TEST_F(AsmCliTest, RefusesMalformedCommandLines) {
  const std::vector<std::vector<std::string>> bad = {
      {},
      {"link", "a"},
      {"assemble", "a.kasm"},
      {"assemble", "a.kasm", "-o"},
      {"assemble", "a.kasm", "-o", "b", "--pad", "0"},
      {"disassemble", "a.bin", "--pad", "64"},
      {"args", "a.bin", "b.bin"},
      {"args", "a.bin", "-x"},
  };
  for (const auto& args : bad) {
    EXPECT_EQ(run(args), 1) << ::testing::PrintToString(args);
    EXPECT_EQ(err_.str().rfind("kesh_pattern_asm: ", 0), 0u) << err_.str();
    EXPECT_EQ(err_.str().find('\n'), err_.str().size() - 1) << err_.str();
  }
  EXPECT_EQ(run({"--help"}), 0);
  EXPECT_NE(out_.str().find("usage: kesh_pattern_asm assemble"), std::string::npos);
}

}  // namespace
}  // namespace kesh::pattern_text
