// The seam for programs that embed the parsers: fatal errors intercepted by a
// handler, and the hooks told of command sets, options, bindings and ignored
// words, with data reading replaced.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/fatal.h"
#include "settings/option_table.h"
#include "settings/parse_hooks.h"
#include "settings/tester_setting.h"
#include "settings_test_support.h"

namespace kesh::settings::testing {
namespace {

class ParseHooksTest : public SettingsTest {
 protected:
  void SetUp() override { setFatalHandler(throwIntercepted); }
  void TearDown() override {
    setFatalHandler(nullptr);
    parseHooks() = ParseHooks{};
  }
};

TEST_F(ParseHooksTest, HooksSeeSetsOptionsBindingsAndIgnoredWords) {
  std::vector<std::string> seen;
  ParseHooks& hooks = parseHooks();
  hooks.readData = [&](DataRole role, const char* path) {
    seen.push_back("read " + std::to_string(static_cast<int>(role)) + " " + path);
    return std::vector<uint8_t>(3, 0);
  };
  hooks.commandSetStarts = [&](const CommandOrigin& origin) {
    seen.push_back(std::string("set ") + (origin.fileName ? origin.fileName : "<command line>") + ":" +
                   std::to_string(origin.lineNumber) + " [" + origin.line + "]");
  };
  hooks.optionApplied = [&](int code, const char* argument) {
    seen.push_back("option " + std::to_string(code) + " " + (argument ? argument : "-"));
  };
  hooks.dataBound = [&](const DataBinding& binding) {
    seen.push_back("bind " + std::to_string(binding.subCommand) + " " + binding.argName + " " + binding.path +
                   (binding.kept ? " kept" : " dropped"));
  };
  hooks.optionIgnored = [&](const char* word) { seen.push_back(std::string("ignored ") + word); };

  const std::string file = dir.write("sets.txt", "-f /d/p.bin -i /d/a.bin -i /e/a.x\n--pack");
  parse({"--version", "--h", "-z", "--command", file, "-f", "q.bin", "stray"});
  const std::vector<std::string> expected = {
      "ignored --version",
      "ignored --h",
      "ignored -z",
      "set " + file + ":1 [-f /d/p.bin -i /d/a.bin -i /e/a.x]",
      "option 102 /d/p.bin",
      "read 0 /d/p.bin",
      "option 105 /d/a.bin",
      "read 1 /d/a.bin",
      "bind 0 a /d/a.bin kept",
      "option 105 /e/a.x",
      "read 1 /e/a.x",
      "bind 0 a /e/a.x dropped",
      "set " + file + ":2 [--pack]",
      "option 2 -",
      "ignored stray",
      "set <command line>:0 [ -f q.bin]",
      "option 102 q.bin",
      "read 0 q.bin",
  };
  EXPECT_EQ(seen, expected);
}

TEST_F(ParseHooksTest, CommandFileGoesOnAfterAFaultyLineWhenTheEmbedderAsks) {
  std::vector<std::string> errors;
  parseHooks().readCommandFile = [&](const char* programName, const char* fileName) {
    std::vector<TesterSetting::TestCommand> commands;
    forEachCommandLine(fileName, [&](const std::string& line) {
      try {
        commands.emplace_back(programName, line);
      } catch (const Intercepted& caught) {
        errors.push_back(caught.text);
        resetScanner();
      }
    });
    return commands;
  };
  // The last line fails inside a cluster of short options: the scan of the
  // program's arguments must not resume inside its words.
  const std::string file = dir.write("sets.txt", "-g 1\n-q\n-l 64\n-g 1\n-qpack");
  const TesterSetting setting = parse({"--command", file, "-r"});
  EXPECT_EQ(errors, (std::vector<std::string>{"Unknown option: 63\n", "Invalid group loop count: 64. Maximum is 64\n",
                                              "Unknown option: 63\n"}));
  EXPECT_TRUE(setting.random);
  ASSERT_EQ(setting.commandGroups.size(), 1u);
  EXPECT_EQ(setting.commandGroups[0].size(), 2u);
}

}  // namespace
}  // namespace kesh::settings::testing
