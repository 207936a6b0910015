// One row per class of finding, each from a mistake in a command file (or on
// the command line), with the checker's exact output and exit status; where
// the finding predicts a failure or a false pass, kesh_player runs on the same
// files to show that it really happens.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "check_config.h"
#include "e2e_config.h"
#include "player_test.h"
#include "testing/child_process.h"
#include "testing/sample_patterns.h"

namespace kesh::testing {
namespace {

constexpr int kNotRun = -3;  // kesh_player is not run for this row
constexpr int kCrash = -2;   // it dies without a verdict: by a signal, or through a sanitizer's report

struct FindingRow {
  const char* name;
  std::string commands;           ///< the text of c.txt, if any
  std::vector<std::string> args;  ///< the arguments; none: --command c.txt
  std::string expected;           ///< the checker's whole output
  int status;                     ///< the checker's exit status
  int toolStatus = kNotRun;       ///< kesh_player's exit status on the same arguments
};

const char kGood[] = "-f copy.bin -i in.bin -o out.bin";

std::string line(const std::string& options) { return std::string(kGood) + options + "\n"; }
// The end of a finding that predicts the tool stopping with `message`.
std::string stops(const std::string& message) { return ": kesh_player would stop with \"" + message + "\"\n"; }
const std::string kLimit = stops(
    "Exceed maximum number of commands in one command group, make sure the command group size is less than 64");

const FindingRow kRows[] = {
    {"CleanFileSaysNothing", line("") + line(" -b 100 -c 3 -a 0 -s 0 -l 63"), {}, "", 0},
    {"ShortGolden", "-f copy.bin -i in.bin -o short/out.bin\n", {},
     "c.txt:1: error: golden 'short/out.bin' has 8 bytes but argument 'out' has 16: only the first 8 bytes would "
     "be compared\n", 1, 0},
    {"EmptyGolden", "-f copy.bin -i in.bin -o empty/out.bin\n", {},
     "c.txt:1: error: golden 'empty/out.bin' is empty: argument 'out' would pass without being compared\n", 1, 0},
    {"LongGolden", "-f copy.bin -i in.bin -o long/out.bin\n", {},
     "c.txt:1: error: golden 'long/out.bin' has 32 bytes but argument 'out' has 16: kesh_player would read past "
     "the argument's buffer\n", 1},
    {"LongInput", "-f copy.bin -i long/in.bin -o out.bin\n", {},
     "c.txt:1: error: input 'long/in.bin' has 4194304 bytes but argument 'in' has 16: kesh_player would write "
     "past the argument's buffer\n", 1, kCrash},
    {"ShortInputWarns", "-f copy.bin -i short/in.bin -o out.bin\n", {},
     "c.txt:1: warning: input 'short/in.bin' has 8 bytes but argument 'in' has 16: the rest of the buffer keeps "
     "what the library put there\n", 0},
    {"DataBoundToNoArgument", line(" -o stray.bin"), {},
     "c.txt:1: error: golden 'stray.bin' binds to no argument of pattern 'copy.bin' (its arguments: in, out): it "
     "would be ignored\n", 1, 0},
    {"DataForNoAllocArgument", "-f noalloc.bin -i in.bin -o out.bin -o lib.bin\n", {},
     "c.txt:1: error: golden 'lib.bin' is for argument 'lib', which the library provides itself (no-alloc): it "
     "would be ignored\n", 1, 0},
    {"ArgumentNotSet", "-f copy.bin -o out.bin\n", {},
     "c.txt:1: warning: argument 'in' of pattern 'copy.bin' has neither input nor golden: it would run on "
     "uninitialised memory (\"Pattern argument in not set\")\n", 0},
    {"SecondInputForOneArgument", line(" -i short/in.bin"), {},
     "c.txt:1: warning: input 'short/in.bin' is ignored: argument 'in' already has input data (the first one "
     "given wins)\n", 0},
    {"MissingFile", "-f copy.bin -i in.bin -o gone/out.bin\n", {},
     "c.txt:1: error: golden 'gone/out.bin' does not exist" + stops("Error: cannot open file gone/out.bin"), 1, 1},
    {"DirectoryAsPattern", "-f folder.bin\n", {},
     "c.txt:1: error: pattern 'folder.bin' is a directory" + stops("Error: cannot open file folder.bin"), 1, 1},
    {"PatternRefused", "-f garbage.bin\n", {},
     "c.txt:1: error: pattern 'garbage.bin' is refused by the pattern library" + stops("Failed to create pattern"),
     1, 1},
    {"WindowsLineEnd", "-f copy.bin -i in.bin -o out.bin\r\n", {},
     "c.txt:1: warning: line ends with a carriage return (a Windows line end): kesh_player keeps it in the word "
     "'out.bin\\r'\nc.txt:1: error: golden 'out.bin\\r' does not exist" + stops("Error: cannot open file out.bin\\r"),
     1, 1},
    {"UnknownOptionNamed", line("") + line(" --random"), {},
     "c.txt:2: error: unknown option '--random'" + stops("Unknown option: 63"), 1, 1},
    {"EmptyLineNote", line("") + "\n" + line(""), {},
     "c.txt:2: note: empty line: an empty command set that runs no pattern\n", 0},
    {"BoostOutOfRange", line("") + line(" -b 101"), {},
     "c.txt:2: error: boost value 101 of pattern 'copy.bin' is out of range 0..100 (-1 for random)" +
     stops("Failed to set pattern option 0"), 1, 1},
    {"LimitNegative", line(" -s -1"), {},
     "c.txt:1: error: soft limit -1 is negative" + stops("Failed to set graph option 1"), 1, 1},
    {"RandomBoostOverriddenByLaterNumber", std::string(kGood) + " -b -1 " + line(" -b 7"), {},
     "c.txt:1: error: boost value -1 of pattern 'copy.bin' is not drawn at random, because a later -b gave a "
     "number" + stops("Failed to set pattern option 0"), 1, 1},
    {"GroupLoopCountRefused", line(" -l 64"), {},
     "c.txt:1: error: kesh_player would stop with \"Invalid group loop count: 64. Maximum is 64\"\n", 1, 1},
    {"GroupOverSixtyThree", line(" -g 1 -l 40") + line(" -g 1 -l 24"), {},
     "c.txt:1: note: group 1: 2 command set(s), 64 execution(s) per run\n"
     "c.txt:2: error: group 1 reaches 64 executions with this command set, more than 63" + kLimit +
     "<command line>: note: 64 execution(s) per run in 1 group(s); 1 run(s)\n", 1, 1},
    {"EndlessLoopCount", line(" -l -1"), {}, "c.txt:1: error: loop count -1 repeats this command set without end" +
     kLimit, 1, 1},
    {"NothingRuns", line(" -l 0"), {},
     "c.txt:1: warning: loop count 0: this command set would never run\n"
     "<command line>: error: nothing would run: kesh_player would report \"Test pattern passed!!!\" without "
     "running a pattern\n", 1, 0},
    {"IgnoredOptions", "", {"-f", "copy.bin", "-i", "in.bin", "-o", "out.bin", "--versoin", "--h", "stray"},
     "<command line>: error: option '--versoin' is not an option of kesh_player: it would be ignored\n"
     "<command line>: error: option '--h' is not an option of kesh_player: it would be ignored\n"
     "<command line>: error: word 'stray' is not an option of kesh_player: it would be ignored\n", 1, 0},
    {"RunCountZero", "", {"-t", "0", "-l", "0"},
     "<command line>: error: loop count 0: no run would happen, and kesh_player would end with status 0\n", 1},
    {"HelpRunsNothing", "", {"-t", "0", "-h"},
     "<command line>: warning: -h: kesh_player would print its help text and run nothing\n", 0},
    {"BuiltInCaseRefused", "", {"-t", "6"}, "<command line>: error" + stops("Invalid mode: 6"), 1, 1},
};

void PrintTo(const FindingRow& row, std::ostream* out) { *out << row.name; }

// What the checker says kesh_player would print: the first message it quotes as
// stopping the tool, up to an escaped character (the checker shows a CR as \r),
// else the passing verdict.
std::string predicted(const std::string& checked) {
  const std::string stop = "would stop with \"";
  const size_t at = checked.find(stop);
  if (at == std::string::npos) return "Test pattern passed!!!";
  const size_t from = at + stop.size();
  return checked.substr(from, checked.find_first_of("\\\"", from) - from);
}

// A scratch folder holding copy.bin ("in" and "out", 16 bytes each), in.bin,
// out.bin, and the mistaken variants the rows name.
class CheckTest : public PlayerTest {
 protected:
  void SetUp() override {
    writeCopyCase(16);
    writeFile("short/out.bin", {3, 10, 17, 24, 31, 38, 45, 52});  // what copy.bin's output starts with
    writeFile("short/in.bin", std::vector<uint8_t>(8));
    writeFile("empty/out.bin", {});
    writeFile("long/out.bin", std::vector<uint8_t>(32));
    writeFile("long/in.bin", std::vector<uint8_t>(4 << 20));  // far past the buffer: the tool crashes
    writeFile("stray.bin", std::vector<uint8_t>(16));
    writeFile("lib.bin", std::vector<uint8_t>(16));
    writeFile("noalloc.bin", patternBinary({{"in", 0, 16}, {"out", 1, 16}, {"lib", 2, 16, true}}, {copyOp(1, 0, 16)}));
    writeText("garbage.bin", "not a pattern");
    writeFile("folder.bin/x", {});
  }
  /// Runs kesh_check (on a 4-core device) through the tool's launcher in the
  /// scratch folder; `failing` is the library's KESH_EMU_FAIL value.
  ChildResult check(const std::vector<std::string>& args, const std::string& failing = "") {
    ChildTask task{{}, {}, dir_, {{"KESH_EMU_FAIL", std::nullopt}}, ""};
    if (!failing.empty()) task.env.emplace_back("KESH_EMU_FAIL", failing);
    for (const char* word : kLauncher)
      if (word != nullptr) task.argv.emplace_back(word);
    task.argv.insert(task.argv.end(), {KESH_CHECK_PATH, "--cores", "4"});
    task.argv.insert(task.argv.end(), args.begin(), args.end());
    return runChild(task);
  }
};

class FindingsTest : public CheckTest, public ::testing::WithParamInterface<FindingRow> {};

TEST_P(FindingsTest, ReportsExactlyAndTheToolAgrees) {
  const FindingRow& row = GetParam();
  std::vector<std::string> args = row.args;
  if (!row.commands.empty()) writeText("c.txt", row.commands);
  if (args.empty()) args = {"--command", "c.txt"};
  const ChildResult checked = check(args);
  EXPECT_EQ(checked.out, row.expected);
  EXPECT_EQ(checked.status, row.status);
  EXPECT_EQ(checked.err, "");
  if (row.toolStatus == kNotRun) return;
  const PlayerRun played = run(args);
  const std::string said = played.out + played.err;
  if (row.toolStatus == kCrash) {
    EXPECT_NE(played.status, 0) << said;
    EXPECT_EQ(played.out.find("!!!"), std::string::npos) << played.out;  // no verdict line
  } else {
    EXPECT_EQ(played.status, row.toolStatus) << said;
    EXPECT_NE(said.find(predicted(row.expected)), std::string::npos) << predicted(row.expected) << "\n" << said;
  }
}

INSTANTIATE_TEST_SUITE_P(Check, FindingsTest, ::testing::ValuesIn(kRows),
                         [](const ::testing::TestParamInfo<FindingRow>& row) { return row.param.name; });

// A bad option of the checker's own, or a library that gives no player: nothing is checked.
TEST_F(CheckTest, CouldNotCheck) {
  const ChildResult badOption = check({"--cores", "0", "-t", "0"});
  EXPECT_EQ(badOption.status, 2);
  EXPECT_EQ(badOption.err.rfind("kesh_check: --cores needs a number from 1 to 256\n", 0), 0u) << badOption.err;
  const ChildResult noPlayer = check({"-t", "0"}, "keshCreatePlayer@*");
  EXPECT_EQ(noPlayer.status, 2);
  EXPECT_EQ(noPlayer.err,
            "kesh_check: the pattern library gives no player (\"Failed to create player\"): nothing can be checked\n");
}

// Warnings fail the check only when asked (a warning alone passes: ShortInputWarns);
// the JSON form carries the same finding.
TEST_F(CheckTest, WerrorAndJson) {
  writeText("c.txt", "-f copy.bin -i short/in.bin -o out.bin\n");
  const ChildResult json = check({"--json", "--werror", "--command", "c.txt"});
  EXPECT_EQ(json.status, 1);
  EXPECT_NE(json.out.find("\"file\": \"c.txt\",\n      \"line\": 1,\n      \"severity\": \"warning\""),
            std::string::npos)
      << json.out;
  EXPECT_NE(json.out.find("\"status\": 1"), std::string::npos) << json.out;
}

}  // namespace
}  // namespace kesh::testing
