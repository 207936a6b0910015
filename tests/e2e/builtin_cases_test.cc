// The six built-in cases pass against the host library, all in one command
// set as the README's main-job command runs them.
#include <string>

#include "player_test.h"

namespace kesh::testing {
namespace {

class BuiltInCasesTest : public PlayerTest {};

TEST_F(BuiltInCasesTest, AllSixPassWithExactLines) {
  const PlayerRun result = run({"-t", "0", "-t", "1", "-t", "2", "-t", "3", "-t", "4", "-t", "5"});
  std::string expected;
  for (int number = 0; number < 6; ++number) expected += "Test default case: " + std::to_string(number) + "\n";
  expected +=
      "Test pattern start...\n"
      "Running command:  -t 0 -t 1 -t 2 -t 3 -t 4 -t 5\n"
      "Execution info of command:  -t 0 -t 1 -t 2 -t 3 -t 4 -t 5\n";
  for (int position = 0; position < 6; ++position) {
    const std::string at = std::to_string(position) + ": ";
    expected += "    IP time of sub-command " + at + "# us\n    Driver time of sub-command " + at +
                "# us\n    Timestamp start of sub-command " + at + "#\n    Timestamp end of sub-command " + at +
                "#\n";
  }
  for (int number = 0; number < 4; ++number) {
    for (const char* name : {"auto_buf_name_0", "auto_buf_name_1", "auto_buf_name_2"}) {
      expected += std::string("Test passed for argument ") + name + "\n";
    }
  }
  expected +=
      "Golden data not found for argument GI_65540\n"
      "Skip compare golden of argument GI_65540\n"
      "Test passed for argument GO_65544\n"
      "Test passed for argument GI_65542\n"
      "Test passed for argument GO_65548\n"
      "Test pattern passed!!!\n";
  EXPECT_EQ(result.out, expected);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

}  // namespace
}  // namespace kesh::testing
