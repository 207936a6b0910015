#include <gtest/gtest.h>

#include <set>

#include "settings/parse_hooks.h"
#include "settings/tester_setting.h"
#include "settings_test_support.h"

namespace kesh::settings::testing {
namespace {

using Layout = std::vector<std::vector<std::string>>;

class TesterSettingTest : public SettingsTest {
 protected:
  /// The command lines, group by group.
  static Layout layout(const TesterSetting& setting) {
    Layout result;
    for (const auto& group : setting.commandGroups) {
      result.emplace_back();
      for (const auto& command : group) result.back().push_back(command.commandLine);
    }
    return result;
  }
};

TEST_F(TesterSettingTest, GlobalOptionsAndGatheredText) {
  TesterSetting setting = parse({"-f", p + " y", "-l", "3", "-z", "--nosuch", "-b5", "--pat", p, "--hard=2",
                                 "stray", "-h", "-r", "--session", "--pack"});
  EXPECT_EQ(layout(setting), (Layout{{" -f " + p + " y -b 5 --pattern " + p + " --hard 2 --pack "}}));
  EXPECT_TRUE(setting.sessionReused);  // named by a prefix
}

TEST_F(TesterSettingTest, CommandFilesInOrderEveryLineASetThenGroups) {
  const std::string a = dir.write("a.txt", "stray -g 5 -f " + p + " x\n\n -g 2 \r\n-g 5 -s 4\n-g -3");
  const std::string b = dir.write("b.txt", "-a 1"), empty = dir.write("empty.txt", "");
  TesterSetting setting = parse({"stray", "--command", a, "-g", "2", "--comm=" + b, "--command", empty, "-l", "2"});
  EXPECT_EQ(layout(setting), (Layout{{""}, {"-a 1"}, {"-g -3"}, {" -g 2 \r", " -g 2"},
                                     {"stray -g 5 -f " + p + " x", "-g 5 -s 4"}}));
  EXPECT_EQ(echo, "Pattern binary: " + p + "\nSet soft limit to 4\nSet hard limit to 1\n");
}

// An embedder may go on after a faulty line of a command file; the scan of the
// program's own arguments must then not resume inside that line's words.
TEST_F(TesterSettingTest, ScanStartsAfreshAfterAFaultyCommandLine) {
  parseHooks().readCommandFile = [](const char* programName, const char* fileName) {
    std::vector<TesterSetting::TestCommand> commands;
    forEachCommandLine(fileName, [&](const std::string& line) {
      if (!runToFatal([&] { commands.emplace_back(programName, line); }).text.empty()) resetScanner();
    });
    return commands;
  };
  const TesterSetting setting = parse({"--command", dir.write("sets.txt", "-g 1\n-l 64\n-qpack"), "-r"});
  parseHooks() = ParseHooks{};
  EXPECT_TRUE(setting.random);
  EXPECT_EQ(layout(setting), (Layout{{"-g 1"}}));
}

TEST_F(TesterSettingTest, ShuffleMovesWholeGroupsAndReachesEveryOrder) {
  TesterSetting setting = parse({"--command", dir.write("f", "-g 1 a\n-g 1 b\nc\nd")});
  std::set<Layout> seen;
  for (int i = 0; i < 600 && seen.size() < 6; ++i) {
    setting.shuffleGroups();
    seen.insert(layout(setting));
  }
  EXPECT_EQ(seen.size(), 6u);
  EXPECT_EQ(seen.count(Layout{{"c"}, {"d"}, {"-g 1 a", "-g 1 b"}}), 1u);
}

}  // namespace
}  // namespace kesh::settings::testing
