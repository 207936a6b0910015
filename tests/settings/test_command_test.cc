#include <sys/stat.h>

#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <set>
#include <thread>

#include "settings/tester_setting.h"
#include "settings/word_split.h"
#include "settings_test_support.h"

namespace kesh::settings::testing {
namespace {

using TestCommand = TesterSetting::TestCommand;
using Bytes = std::vector<uint8_t>;

class TestCommandTest : public SettingsTest {
 protected:
  /// Builds a command set from `line`; what it printed goes to `echo`.
  TestCommand build(const std::string& line) {
    std::optional<TestCommand> command;
    echo = captureStdout([&] { command.emplace("prog", line); });
    return std::move(*command);
  }
  static int32_t boostOf(const TestCommand& command, std::size_t index) {
    return command.subCommands.at(index).nodeOptions.at(PATTERN_NODE_OPTION_BOOST);
  }
  static std::string readData(const std::string& path) {
    Bytes bytes = TestCommand::readData(path.c_str());
    return std::string(bytes.begin(), bytes.end());
  }
};

TEST(WordSplitTest, EverySingleBlankSeparatesNothingElseDoes) {
  using Words = std::vector<std::string>;
  EXPECT_EQ(splitCommandWords("prog", " -f a  -b 5 "), (Words{"prog", "", "-f", "a", "", "-b", "5"}));
  EXPECT_EQ(splitCommandWords("prog", "\"a b\"\t-x\r"), (Words{"prog", "\"a", "b\"\t-x\r"}));
}

TEST_F(TestCommandTest, OptionsEchoKeepFirstNodeAndLastGraphValues) {
  const std::string line = "-a 5 stray -f " + p + " -b 10 -b 20 -c 1 --core=2 -s 3 --hard 7 -g -4 -l 63 --pack";
  TestCommand command = build(line);
  EXPECT_EQ(echo, "Set hard limit to 5\nPattern binary: " + p + "\nSet boost value to 10\nSet boost value to 20\n"
                  "Set core affinity to 1\nSet core affinity to 2\nSet soft limit to 3\nSet hard limit to 7\n");
  EXPECT_EQ(command.subCommands[0].nodeOptions,
            (std::map<pattern_node_option_type, int32_t>{{PATTERN_NODE_OPTION_BOOST, 10},
                                                         {PATTERN_NODE_OPTION_CORE_AFFINITY, 1}}));
  EXPECT_EQ(command.graphOptions, (std::map<pattern_graph_option_type, int32_t>{
                                      {PATTERN_GRAPH_OPTION_HARD_LIMIT, 7}, {PATTERN_GRAPH_OPTION_SOFT_LIMIT, 3}}));
  EXPECT_EQ(command.groupIndex, -4);
  EXPECT_EQ(command.groupLoopCount, 63);
  EXPECT_TRUE(command.pack);
}

TEST_F(TestCommandTest, LastBoostOptionDecidesRandomnessForTheSet) {
  TestCommand fixedLast = build("-f " + p + " -b -1 -f " + p + " -b 7");
  EXPECT_FALSE(fixedLast.randomBoost);
  EXPECT_EQ(boostOf(fixedLast, 0), -1);
  EXPECT_EQ(boostOf(fixedLast, 1), 7);
  TestCommand randomLast = build("--pat " + p + " --boo=-1");
  EXPECT_EQ(echo, "Pattern binary: " + p + "\nSet boost value to random value\n");
  std::set<int32_t> drawn;  // 0 to 100, both ends reached
  for (int draw = 0; draw < 3000; ++draw) {
    const std::string out = captureStdout([&] { randomLast.updateRandom(); });
    ASSERT_EQ(out, "Random boost value: " + std::to_string(boostOf(randomLast, 0)) + "\n");
    drawn.insert(boostOf(randomLast, 0));
  }
  EXPECT_EQ(*drawn.begin(), 0);
  EXPECT_EQ(*drawn.rbegin(), 100);
  EXPECT_EQ(captureStdout([&] { fixedLast.updateRandom(); }) + std::to_string(boostOf(fixedLast, 1)), "7");
}

TEST_F(TestCommandTest, DataBindsToBaseNameFirstFileWinsBuiltInCaseIsCurrent) {
  const std::string a = dir.write("in.bin", "A"), b = dir.write("b/in.x", "B"), e = dir.write("o.raw", "");
  TestCommand command = build("-f " + p + " -i " + a + " --input " + b + " -o " + e);
  EXPECT_EQ(echo, "Pattern binary: " + p + "\nPattern input 0: " + a + "\nPattern input 1: " + b +
                  "\nPattern golden 0: " + e + "\n");
  EXPECT_EQ(command.subCommands[0].inputs, (std::map<std::string, Bytes>{{"in", {'A'}}}));
  EXPECT_EQ(command.subCommands[0].goldens, (std::map<std::string, Bytes>{{"o", {}}}));
  TestCommand withCase = build("-f " + p + " -t 4 -b 50 -i " + dir.write("GI_65540.bin", "mine"));
  EXPECT_TRUE(withCase.subCommands[0].nodeOptions.empty());
  EXPECT_EQ(boostOf(withCase, 1), 50);
  EXPECT_EQ(withCase.subCommands[1].inputs.at("GI_65540").size(), 11235u);
}

// Command lines (and, marked global, the program's own arguments, split at
// blanks) that end with a fatal error on its stream, after their echo. The
// checker's end-to-end findings cover the messages a farm meets most.
TEST_F(TestCommandTest, BadLinesEndWithTheirMessageAfterTheirEcho) {
  const std::string none = dir.path() + "/none", open = "Error: cannot open file ";
  const std::string bad = dir.write("bad.txt", "-f " + p + "\n-r\n-f " + p + "\n");
  const FatalStream out = FatalStream::kStdout, err = FatalStream::kStderr;
  const bool global = true;
  struct Row {
    bool global;
    std::string words, echo;
    FatalStream stream;
    std::string message;
  };
  const Row rows[] = {
      {!global, "-f ", "", out, "prog: option requires an argument -- '102'\n"},
      {!global, "-h", "", err, "Unknown option: 63\n"},
      {!global, "-t -1", "Test default case: -1\n", err, "Invalid mode: -1\n"},
      {!global, "-f  " + p, "Pattern binary: \n", err, open + "\n"},
      {global, "--loop", "", out, "prog: option requires an argument - 'l\n"},
      {global, "--command", "", out, "prog: option requires an argument - '\x01\n"},
      {global, "-h --command " + bad, "Pattern binary: " + p + "\n", err, "Unknown option: 63\n"},
  };
  for (const Row& row : rows) {
    const Ending ending = runToFatal([&] {
      const std::vector<std::string> words = splitCommandWords("prog", row.words);
      if (row.global) parseArguments({words.begin() + 1, words.end()}, nullptr);
      if (!row.global) TestCommand("prog", row.words);
    });
    EXPECT_EQ(ending.stream, row.stream) << row.words;
    EXPECT_EQ(ending.text, row.message) << row.words;
    EXPECT_EQ(ending.echo, row.echo) << row.words;
  }
}

TEST_F(TestCommandTest, ReadDataReadsEveryByteWhateverTheReportedSize) {
  std::string big((5 << 20) + 3, '\0');  // large enough to be mapped
  for (std::size_t i = 0; i < big.size(); ++i) big[i] = static_cast<char>(i * 7919 >> 3);
  EXPECT_EQ(readData(dir.write("big", big)), big);
  EXPECT_EQ(readData(dir.write("empty", "")), "");
  EXPECT_EQ(readData("/proc/self/cmdline"), readFile("/proc/self/cmdline"));  // reports size 0
  const std::string fifo = dir.path() + "/fifo";  // reports no size at all
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  std::thread writer([&] { std::ofstream(fifo, std::ios::binary) << big; });
  EXPECT_EQ(readData(fifo), big);
  writer.join();
}

TEST(ReadArgNameTest, BaseNameWithoutLastExtension) {
  const char* cases[][2] = {{"a.b.c", "a.b"}, {"dir.d/out", "out"}, {".bin", ""}, {"dir/", ""}, {"noext", "noext"}};
  for (const auto& c : cases) EXPECT_EQ(TesterSetting::TestCommand::readArgName(c[0]), c[1]) << c[0];
}

}  // namespace
}  // namespace kesh::settings::testing
