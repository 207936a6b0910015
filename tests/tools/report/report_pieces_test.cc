// The pieces every output format shares: a failed comparison told with the
// golden's expected bytes, and how an abnormal end is told.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "report/diff_text.h"
#include "report/naming.h"
#include "testing/temp_dir.h"

namespace kesh::report {
namespace {

TEST(DescribeDiff, ExpectedFromTheGoldenActualByXor) {
  kesh::testing::TempDir dir;
  const std::string golden = dir.write("out.bin", std::string("\x10\x20\x30\x40", 4));
  DiffSummary diff{4, 2, 1, 3, {{1, 0x0f}, {3, 0xff}}};
  EXPECT_EQ(describeDiff(diff, golden),
            "2 of 4 bytes differ (offsets 1..3): at 1 expected 0x20 actual 0x2f, at 3 expected 0x40 actual 0xbf");
  // Without the golden at hand (a built-in case) only the listed values remain.
  EXPECT_EQ(describeDiff(diff, ""), "2 of 4 bytes differ (offsets 1..3): at 1 xor 0x0f, at 3 xor 0xff");
  diff.differing = 9;
  EXPECT_EQ(describeDiff(diff, "").substr(describeDiff(diff, "").size() - 5), ", ...");
}

TEST(AbnormalEnd, IsToldFromTheFatalLineTheSignalOrTheStatus) {
  const struct {
    std::vector<std::string> fatal;
    int status, signal;
    std::string told;
  } kRows[] = {
      {{"Failed to play pattern"}, 1, 0, "Failed to play pattern"},
      {{}, 139, 11, "killed by signal 11 (Segmentation fault)"},
      {{}, 3, 0, "kesh_player ended with status 3"},
  };
  for (const auto& row : kRows) {
    Results results;
    results.fatal = row.fatal;
    results.status = row.status;
    results.signal = row.signal;
    EXPECT_EQ(abnormalEnd(results), row.told) << "status " << row.status;
  }
}

}  // namespace
}  // namespace kesh::report
