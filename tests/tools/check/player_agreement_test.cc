// The checker against kesh_player on the same files: every error that
// predicts a failure of the tool comes with that failure, and every error
// that predicts a false pass comes with the tool passing.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "check_fixture.h"

namespace kesh::testing {
namespace {

struct AgreementRow {
  const char* name;
  std::string commands;  ///< the text of c.txt
  std::string finding;   ///< a line the checker prints
  int toolStatus;        ///< kesh_player's exit status; kCrash: it dies without a verdict
  std::string toolSays;  ///< in its output (standard output and error together); "" for none
};

const char kPassed[] = "Test pattern passed!!!";
// A crash ends the tool without a verdict: by a signal, or through a sanitizer's report.
constexpr int kCrash = -2;

const AgreementRow kRows[] = {
    // Failures of the tool.
    {"CrashOnLongInput", "-f copy.bin -i long/in.bin -o out.bin\n",
     "c.txt:1: error: input 'long/in.bin' has 4194304 bytes", kCrash, ""},
    {"CannotOpenFile", "-f copy.bin -i in.bin -o nosuch.bin\n", "c.txt:1: error: golden 'nosuch.bin' does not exist",
     1, "Error: cannot open file nosuch.bin\n"},
    {"CarriageReturnInName", "-f copy.bin -i in.bin -o out.bin\r\n", "c.txt:1: error: golden 'out.bin\\r'", 1,
     "Error: cannot open file out.bin\r\n"},
    {"UnknownOption", "-f copy.bin -i in.bin -o out.bin --random\n", "c.txt:1: error: unknown option '--random'", 1,
     "Unknown option: 63\n"},
    {"BoostRefused", "-f copy.bin -i in.bin -o out.bin\n-f copy.bin -i in.bin -o out.bin -b 101\n",
     "c.txt:2: error: boost value 101", 1, "Failed to set pattern option 0\n"},
    {"FixedMinusOneBoostRefused", "-f copy.bin -i in.bin -o out.bin -b -1 -f copy.bin -i in.bin -o out.bin -b 7\n",
     "c.txt:1: error: boost value -1", 1, "Failed to set pattern option 0\n"},
    {"CoreRefused", "-f copy.bin -i in.bin -o out.bin -c 4\n", "c.txt:1: error: core affinity 4", 1,
     "Failed to set pattern option 1\n"},
    {"HardLimitRefused", "-f copy.bin -i in.bin -o out.bin -a -1\n", "c.txt:1: error: hard limit -1", 1,
     "Failed to set graph option 0\n"},
    {"GroupLimit", "-f copy.bin -i in.bin -o out.bin -g 1 -l 40\n-f copy.bin -i in.bin -o out.bin -g 1 -l 24\n",
     "c.txt:2: error: group 1 reaches 64 executions", 1, "Exceed maximum number of commands in one command group"},
    {"PatternRefused", "-f garbage.bin\n", "c.txt:1: error: pattern 'garbage.bin' is refused", 1,
     "Failed to create pattern\n"},
    // False passes of the tool.
    {"ShortGoldenPasses", "-f copy.bin -i in.bin -o short/out.bin\n", "c.txt:1: error: golden 'short/out.bin' has 8",
     0, kPassed},
    {"EmptyGoldenPasses", "-f copy.bin -i in.bin -o empty/out.bin\n", "c.txt:1: error: golden 'empty/out.bin' is empty",
     0, kPassed},
    {"UnboundGoldenPasses", "-f copy.bin -i in.bin -o stray.bin\n", "c.txt:1: error: golden 'stray.bin' binds to no",
     0, kPassed},
    {"NoAllocDataPasses", "-f noalloc.bin -i in.bin -o out.bin -o lib.bin\n", "c.txt:1: error: golden 'lib.bin' is for",
     0, kPassed},
    {"NothingRunPasses", "-f copy.bin -i in.bin -o out.bin -l 0\n", "<command line>: error: nothing would run", 0,
     kPassed},
};

void PrintTo(const AgreementRow& row, std::ostream* out) { *out << row.name; }

class AgreementTest : public CheckTest, public ::testing::WithParamInterface<AgreementRow> {};

TEST_P(AgreementTest, CheckerAndToolAgree) {
  const AgreementRow& row = GetParam();
  writeText("c.txt", row.commands);
  const CheckRun checked = check({"--command", "c.txt"});
  EXPECT_EQ(checked.status, 1);
  EXPECT_NE(checked.out.find(row.finding), std::string::npos) << checked.out;

  const PlayerRun played = run({"--command", "c.txt"});
  if (row.toolStatus == kCrash) {
    EXPECT_NE(played.status, 0) << played.out << played.err;
    EXPECT_EQ(played.out.find("!!!"), std::string::npos) << played.out;  // no verdict line
  } else {
    EXPECT_EQ(played.status, row.toolStatus) << played.out << played.err;
  }
  EXPECT_NE((played.out + played.err).find(row.toolSays), std::string::npos) << played.out << played.err;
}

INSTANTIATE_TEST_SUITE_P(Check, AgreementTest, ::testing::ValuesIn(kRows),
                         [](const ::testing::TestParamInfo<AgreementRow>& row) { return row.param.name; });

// Options the tool ignores on its own command line: the tool passes, the checker does not.
TEST_F(CheckTest, IgnoredOptionPassesInTheToolOnly) {
  const std::vector<std::string> args = {"-f", "copy.bin", "-i", "in.bin", "-o", "out.bin", "--versoin"};
  EXPECT_EQ(check(args).out,
            "<command line>: error: option '--versoin' is not an option of kesh_player: it would be ignored\n");
  const PlayerRun played = run(args);
  EXPECT_EQ(played.status, 0);
  EXPECT_NE(played.out.find(kPassed), std::string::npos) << played.out;
}

}  // namespace
}  // namespace kesh::testing
