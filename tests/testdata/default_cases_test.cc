// TestCommand::setupDefaultTest: the echo line, the refusal of unknown
// numbers, and sub-commands holding separate copies of the embedded data,
// which must equal the committed files.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "case_files.h"
#include "settings/tester_setting.h"

namespace kesh::testdata {
namespace {

using TestCommand = TesterSetting::TestCommand;
using TestSubCommand = TesterSetting::TestSubCommand;
using Sizes = std::vector<std::pair<std::string, size_t>>;

struct CatalogueEntry {
  size_t patternSize;
  Sizes inputs;
  Sizes goldens;
};

const Sizes kMlpBuffers = {{"auto_buf_name_0", 4096}, {"auto_buf_name_1", 92160}, {"auto_buf_name_2", 3072}};
const CatalogueEntry kCatalogue[] = {
    {25312, kMlpBuffers, kMlpBuffers},
    {25312, kMlpBuffers, kMlpBuffers},
    {25312, kMlpBuffers, kMlpBuffers},
    {25312, kMlpBuffers, kMlpBuffers},
    {25244, {{"GI_65540", 11235}}, {{"GO_65544", 11235}}},
    {129404, {{"GI_65542", 2073600}, {"GO_65548", 2073600}}, {{"GI_65542", 2073600}, {"GO_65548", 2073600}}},
};

Sizes sizesOf(const std::map<std::string, std::vector<uint8_t>>& data) {
  Sizes sizes;
  for (const auto& [name, bytes] : data) sizes.emplace_back(name, bytes.size());
  return sizes;
}

bool allZero(const std::vector<uint8_t>& bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](uint8_t b) { return b == 0; });
}

/// The sub-command that case `number` appends to an empty command set.
TestSubCommand defaultCase(int number) {
  TestCommand command("kesh_player", "");
  testing::internal::CaptureStdout();
  command.setupDefaultTest(number);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Test default case: " + std::to_string(number) + "\n");
  EXPECT_EQ(command.subCommands.size(), 1u);
  return command.subCommands.at(0);
}

TEST(SetupDefaultTest, EveryCaseCopiesItsCatalogueDataFromTheCommittedFiles) {
  for (int number = 0; number <= 5; ++number) {
    SCOPED_TRACE("case " + std::to_string(number));
    const TestSubCommand sub = defaultCase(number);
    const CatalogueEntry& entry = kCatalogue[number];
    const CaseFiles files = readCaseFiles(number);
    EXPECT_EQ(sub.patternBinary.size(), entry.patternSize);
    EXPECT_EQ(sizesOf(sub.inputs), entry.inputs);
    EXPECT_EQ(sizesOf(sub.goldens), entry.goldens);
    EXPECT_TRUE(sub.patternBinary == files.pattern);
    EXPECT_TRUE(sub.inputs == files.inputs);
    EXPECT_TRUE(sub.goldens == files.goldens);
    EXPECT_TRUE(sub.nodeOptions.empty());
  }
}

// Which data a case's pattern leaves alone, and which cases share what.
TEST(SetupDefaultTest, CatalogueRelationsHold) {
  std::vector<TestSubCommand> cases;
  for (int number = 0; number <= 5; ++number) cases.push_back(defaultCase(number));
  EXPECT_TRUE(cases[0].patternBinary == cases[1].patternBinary && cases[2].patternBinary != cases[0].patternBinary &&
              cases[3].patternBinary != cases[0].patternBinary && cases[3].patternBinary != cases[2].patternBinary);
  for (int number = 1; number <= 3; ++number) {
    EXPECT_TRUE(cases[number].inputs == cases[0].inputs && cases[number].goldens == cases[0].goldens) << number;
  }
  const auto& [mlpIn, mlpOut] = std::pair(cases[0].inputs, cases[0].goldens);
  EXPECT_TRUE(mlpOut.at("auto_buf_name_0") == mlpIn.at("auto_buf_name_0") &&
              mlpOut.at("auto_buf_name_1") == mlpIn.at("auto_buf_name_1"));
  EXPECT_TRUE(allZero(mlpIn.at("auto_buf_name_2")) && !allZero(mlpOut.at("auto_buf_name_2")));
  const auto& [imageIn, imageOut] = std::pair(cases[5].inputs, cases[5].goldens);
  EXPECT_TRUE(imageOut.at("GI_65542") == imageIn.at("GI_65542"));
  EXPECT_TRUE(allZero(imageIn.at("GO_65548")) && !allZero(imageOut.at("GO_65548")));
  EXPECT_FALSE(cases[4].goldens.at("GO_65544") == cases[4].inputs.at("GI_65540"));
}

TEST(SetupDefaultTest, RepeatedCaseAppendsSeparateCopies) {
  TestCommand command("kesh_player", "");
  testing::internal::CaptureStdout();
  command.setupDefaultTest(4);
  command.setupDefaultTest(4);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Test default case: 4\nTest default case: 4\n");
  ASSERT_EQ(command.subCommands.size(), 2u);
  std::vector<uint8_t>& first = command.subCommands[0].inputs.at("GI_65540");
  const std::vector<uint8_t>& second = command.subCommands[1].inputs.at("GI_65540");
  ASSERT_TRUE(first == second);
  first[0] ^= 0xFF;
  EXPECT_FALSE(first == second);
  EXPECT_TRUE(defaultCase(4).inputs.at("GI_65540") == readDatum("case4_in_GI_65540"));
}

TEST(SetupDefaultTestDeathTest, UnknownNumberIsEchoedThenRefused) {
  for (const int number : {6, -1, INT_MAX, INT_MIN}) {
    const std::string text = std::to_string(number);
    TestCommand command("kesh_player", "");
    // Standard output joins standard error so the order of the two lines
    // shows; whatever stdout held before is flushed to where it belongs.
    EXPECT_EXIT(
        {
          std::fflush(stdout);
          dup2(STDERR_FILENO, STDOUT_FILENO);
          command.setupDefaultTest(number);
        },
        testing::ExitedWithCode(1), "^Test default case: " + text + "\nInvalid mode: " + text + "\n$");
  }
}

}  // namespace
}  // namespace kesh::testdata
