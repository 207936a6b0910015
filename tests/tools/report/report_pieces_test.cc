// The pieces every output format shares: a failed comparison told with the
// golden's expected bytes, how an abnormal end is told, the spread of times.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "report/diff_text.h"
#include "report/naming.h"
#include "report/progress.h"
#include "report/timing_stats.h"
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
  diff.differing = 9;
  EXPECT_EQ(describeDiff(diff, ""), "9 of 4 bytes differ (offsets 1..3): at 1 xor 0x0f, at 3 xor 0xff, ...");
}

TEST(AbnormalEnd, IsToldFromTheFatalLineTheSignalOrTheStatus) {
  Results results;
  results.status = 3;
  EXPECT_EQ(abnormalEnd(results), "kesh_player ended with status 3");
  results.signal = 11;
  EXPECT_EQ(abnormalEnd(results), "killed by signal 11 (Segmentation fault)");
  results.fatal = {"Failed to play pattern"};
  EXPECT_EQ(abnormalEnd(results), "Failed to play pattern; killed by signal 11 (Segmentation fault)");
}

TEST(SpreadOf, OrderStatisticsAndMoments) {
  std::vector<int64_t> twenty;
  for (int64_t k = 20; k >= 1; --k) twenty.push_back(k);  // unsorted on purpose
  const struct {
    std::vector<int64_t> values;
    int64_t min;
    double median, mean;
    int64_t p95, max;
    double stddev;
  } kRows[] = {
      {{}, 0, 0, 0, 0, 0, 0},
      {{4, 1, 3, 2}, 1, 2.5, 2.5, 4, 4, 1.118033988749895},  // an even count's median is the midpoint
      {twenty, 1, 10.5, 10.5, 19, 20, 5.766281297335398},     // p95 by nearest rank
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(::testing::Message() << row.values.size() << " values");
    std::vector<int64_t> values = row.values;
    const Spread spread = spreadOf(values);
    EXPECT_EQ(spread.count, row.values.size());
    EXPECT_EQ(spread.min, row.min);
    EXPECT_DOUBLE_EQ(spread.median, row.median);
    EXPECT_DOUBLE_EQ(spread.mean, row.mean);
    EXPECT_EQ(spread.p95, row.p95);
    EXPECT_EQ(spread.max, row.max);
    EXPECT_NEAR(spread.stddev, row.stddev, 1e-9);
  }
}

TEST(ProgressText, TellsRunsFailuresAndTimeLeft) {
  EXPECT_EQ(progressText(3, 10, 1, 12.0), "run 3/10, 1 failure, 0:12 elapsed, about 0:28 left");
  EXPECT_EQ(progressText(4, -1, 0, 3725.0), "run 4, 0 failures, 1:02:05 elapsed");
}

}  // namespace
}  // namespace kesh::report
