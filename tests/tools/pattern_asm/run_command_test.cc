// `kesh_pattern_asm run`: goldens made from the host library, and mistakes refused.
#include "pattern_asm/run_command.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "testing/read_file.h"
#include "testing/temp_dir.h"

namespace kesh::pattern_text {
namespace {

namespace fs = std::filesystem;
using kesh::testing::readFile;

// Running a built-in case's pattern on its inputs (renamed to NAME.bin, as
// kesh_player users name them) reproduces every golden of the case.
class RunBuiltInCaseTest : public ::testing::TestWithParam<int> {};

TEST_P(RunBuiltInCaseTest, ReproducesTheGoldensByteForByte) {
  const std::string prefix = "case" + std::to_string(GetParam()) + "_";
  const kesh::testing::TempDir scratch;
  const fs::path dir = scratch.path();
  fs::create_directory(dir / "out");
  std::vector<std::string> args = {"run", std::string(KESH_DEFAULT_CASES_DIR) + "/" + prefix + "pattern.bin", "-d",
                                   (dir / "out").string()};
  std::vector<std::pair<fs::path, std::string>> goldens;  // golden file, argument name
  for (const fs::directory_entry &entry : fs::directory_iterator(KESH_DEFAULT_CASES_DIR)) {
    const std::string file = entry.path().filename().string();
    if (file.rfind(prefix + "in_", 0) == 0) {
      const fs::path input = dir / file.substr(prefix.size() + 3);
      fs::copy_file(entry.path(), input);
      args.insert(args.end(), {"-i", input.string()});
    } else if (file.rfind(prefix + "golden_", 0) == 0) {
      goldens.emplace_back(entry.path(), file.substr(prefix.size() + 7));
    }
  }
  ASSERT_FALSE(goldens.empty());
  std::ostringstream err;
  ASSERT_EQ(runPatternCommand(args, err), 0) << err.str();
  for (const auto &[golden, name] : goldens) {
    EXPECT_TRUE(readFile((dir / "out" / name).string()) == readFile(golden.string()))
        << name << " differs from " << golden;
  }
}

INSTANTIATE_TEST_SUITE_P(BuiltInCases, RunBuiltInCaseTest, ::testing::Range(0, 6),
                         [](const ::testing::TestParamInfo<int> &param) {
                           return "case" + std::to_string(param.param);
                         });

// Mistakes that would make a wrong golden are refused with one line naming
// the file.
TEST(RunCommandTest, RefusesInputsThatBindToNothingOrDoNotFit) {
  const kesh::testing::TempDir scratch;
  const std::string pattern = std::string(KESH_DEFAULT_CASES_DIR) + "/case4_pattern.bin";
  const std::string big = scratch.write("GI_65540.bin", std::string(1 << 20, 'x'));
  const std::string unrelated = scratch.write("unrelated.bin", "x");
  const struct {
    std::vector<std::string> args;
    std::string error;
  } cases[] = {
      {{"run", pattern, "-x"}, "kesh_pattern_asm: unknown option -x (see --help)\n"},
      {{"run", unrelated}, unrelated + ": the pattern library refuses this pattern\n"},
      {{"run", pattern, "-i", unrelated},
       unrelated + ": names no argument of " + pattern + " (it binds to \"unrelated\")\n"},
      {{"run", pattern, "-i", big}, big + ": 1048576 bytes, more than the "},
  };
  for (const auto &c : cases) {
    std::ostringstream err;
    EXPECT_EQ(runPatternCommand(c.args, err), 1) << ::testing::PrintToString(c.args);
    EXPECT_EQ(err.str().substr(0, c.error.size()), c.error) << ::testing::PrintToString(c.args);
  }
}

}  // namespace
}  // namespace kesh::pattern_text
