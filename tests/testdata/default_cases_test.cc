// TestCommand::setupDefaultTest: the catalogue of built-in cases, separate
// copies per choice, and the refusal of unknown numbers.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "case_files.h"
#include "settings/tester_setting.h"

namespace kesh::testdata {
namespace {

using TestCommand = TesterSetting::TestCommand;

/// One datum: its input and golden sizes (0 = none), equal when the pattern leaves it alone.
struct Datum {
  const char* name;
  size_t input, golden;
  bool same;
};
/// Cases with the same pattern letter share the pattern's bytes, with the same data letter all data.
struct CatalogueEntry {
  size_t patternSize;
  char pattern, data;
  std::vector<Datum> datums;
};

const std::vector<Datum> kMlp = {
    {"auto_buf_name_0", 4096, 4096, true}, {"auto_buf_name_1", 92160, 92160, true}, {"auto_buf_name_2", 3072, 3072, false}};
const CatalogueEntry kCatalogue[] = {
    {25312, 'a', 'm', kMlp},
    {25312, 'a', 'm', kMlp},
    {25312, 'b', 'm', kMlp},
    {25312, 'c', 'm', kMlp},
    {25244, 'd', '4', {{"GI_65540", 11235, 0, false}, {"GO_65544", 0, 11235, false}}},
    {129404, 'e', '5', {{"GI_65542", 2073600, 2073600, true}, {"GO_65548", 2073600, 2073600, false}}},
};

size_t sizeOf(const Data& data, const std::string& name) {
  return data.count(name) != 0 ? data.at(name).size() : 0;
}

/// The command set after choosing each of `numbers`; checks the echo lines.
TestCommand chosen(const std::vector<int>& numbers) {
  TestCommand command("kesh_player", "");
  std::string echo;
  testing::internal::CaptureStdout();
  for (int number : numbers) {
    command.setupDefaultTest(number);
    echo += "Test default case: " + std::to_string(number) + "\n";
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), echo);
  return command;
}

TEST(SetupDefaultTest, EveryCaseHoldsItsCatalogueData) {
  const TestCommand command = chosen({0, 1, 2, 3, 4, 5});
  ASSERT_EQ(command.subCommands.size(), 6u);
  for (int number = 0; number <= 5; ++number) {
    SCOPED_TRACE("case " + std::to_string(number));
    const auto& sub = command.subCommands[number];
    const CatalogueEntry& entry = kCatalogue[number];
    const CaseFiles files(number);
    EXPECT_TRUE(sub.patternBinary == files.pattern && sub.inputs == files.inputs && sub.goldens == files.goldens);
    EXPECT_EQ(sub.patternBinary.size(), entry.patternSize);
    size_t listed = 0;
    for (const Datum& datum : entry.datums) {
      listed += (datum.input != 0 ? 1 : 0) + (datum.golden != 0 ? 1 : 0);
      EXPECT_TRUE(sizeOf(sub.inputs, datum.name) == datum.input && sizeOf(sub.goldens, datum.name) == datum.golden);
      if (datum.golden != 0 && datum.input != 0) {
        EXPECT_EQ(sub.inputs.at(datum.name) == sub.goldens.at(datum.name), datum.same) << datum.name;
      }
    }
    EXPECT_EQ(sub.inputs.size() + sub.goldens.size(), listed);
    for (int other = 0; other < number; ++other) {
      const auto& earlier = command.subCommands[other];
      EXPECT_EQ(earlier.patternBinary == sub.patternBinary, kCatalogue[other].pattern == entry.pattern) << other;
      EXPECT_EQ(earlier.inputs == sub.inputs && earlier.goldens == sub.goldens, kCatalogue[other].data == entry.data);
    }
  }
}

TEST(SetupDefaultTest, RepeatedCaseAppendsSeparateCopies) {
  TestCommand command = chosen({4, 4});
  ASSERT_EQ(command.subCommands.size(), 2u);
  command.subCommands[0].inputs.at("GI_65540")[0] ^= 0xFF;
  EXPECT_FALSE(command.subCommands[0].inputs == command.subCommands[1].inputs);
  EXPECT_TRUE(chosen({4}).subCommands.at(0).inputs == command.subCommands[1].inputs);
}

TEST(SetupDefaultTestDeathTest, UnknownNumberIsEchoedThenRefused) {
  for (const int number : {6, -1}) {
    const std::string text = std::to_string(number);
    TestCommand command("kesh_player", "");
    // Standard output joins standard error so the order of the two lines shows.
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
