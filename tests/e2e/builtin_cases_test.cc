// The six built-in cases pass against the host library.
#include <string>
#include <vector>

#include "player_test.h"

namespace kesh::testing {
namespace {

struct BuiltInCase {
  int number;
  std::string comparisons;  // the per-argument lines of a passing run
};

std::ostream& operator<<(std::ostream& out, const BuiltInCase& c) { return out << "case " << c.number; }

const char kSharedArguments[] =
    "Test passed for argument auto_buf_name_0\n"
    "Test passed for argument auto_buf_name_1\n"
    "Test passed for argument auto_buf_name_2\n";

std::string timing(int position) {
  const std::string at = std::to_string(position) + ": ";
  return "    IP time of sub-command " + at + "# us\n    Driver time of sub-command " + at +
         "# us\n    Timestamp start of sub-command " + at + "#\n    Timestamp end of sub-command " + at + "#\n";
}

class BuiltInCaseTest : public PlayerTest, public ::testing::WithParamInterface<BuiltInCase> {};

TEST_P(BuiltInCaseTest, PassesWithExactLines) {
  const std::string number = std::to_string(GetParam().number);
  const PlayerResult result = run({"-t", number});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(maskTimes(result.out), "Test default case: " + number +
                                       "\n"
                                       "Test pattern start...\n"
                                       "Running command:  -t " + number +
                                       "\n"
                                       "Execution info of command:  -t " + number + "\n" + timing(0) +
                                       GetParam().comparisons + "Test pattern passed!!!\n");
}

INSTANTIATE_TEST_SUITE_P(
    All, BuiltInCaseTest,
    ::testing::Values(BuiltInCase{0, kSharedArguments}, BuiltInCase{1, kSharedArguments},
                      BuiltInCase{2, kSharedArguments}, BuiltInCase{3, kSharedArguments},
                      BuiltInCase{4,
                                  "Golden data not found for argument GI_65540\n"
                                  "Skip compare golden of argument GI_65540\n"
                                  "Test passed for argument GO_65544\n"},
                      BuiltInCase{5,
                                  "Test passed for argument GI_65542\n"
                                  "Test passed for argument GO_65548\n"}));

class BuiltInCasesTogetherTest : public PlayerTest {};

TEST_F(BuiltInCasesTogetherTest, AllSixInOneCommandSetPass) {
  // The command the README gives for the main job.
  const PlayerResult result = run({"-t", "0", "-t", "1", "-t", "2", "-t", "3", "-t", "4", "-t", "5"});
  EXPECT_EQ(result.status, 0) << result.err;
  const std::string out = maskTimes(result.out);
  for (int position = 0; position < 6; ++position) EXPECT_NE(out.find(timing(position)), std::string::npos);
  EXPECT_EQ(linesStartingWith(out, "Test passed for argument ").size(), 15u);
  EXPECT_EQ(linesStartingWith(out, "Test pattern passed!!!").size(), 1u);
}

}  // namespace
}  // namespace kesh::testing
