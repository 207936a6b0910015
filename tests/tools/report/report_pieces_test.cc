// The pieces every output format shares: a failed comparison without its golden,
// how an abnormal end is told, the spread of times, the progress line.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "report/diff_text.h"
#include "report/naming.h"
#include "report/progress.h"
#include "report/timing_stats.h"

namespace kesh::report {
namespace {

// Without the golden at hand (a built-in case) only the listed values are told.
TEST(DescribeDiff, ByXorWithoutTheGolden) {
  const DiffSummary diff{4, 9, 1, 3, {{1, 0x0f}, {3, 0xff}}};
  EXPECT_EQ(describeDiff(diff, ""), "9 of 4 bytes differ (offsets 1..3): at 1 xor 0x0f, at 3 xor 0xff, ...");
}

TEST(AbnormalEnd, IsToldFromTheStatusOrFromFatalLinesAndTheSignal) {
  Results results;
  results.status = 3;
  EXPECT_EQ(abnormalEnd(results), "kesh_player ended with status 3");
  results.fatal = {"Failed to play pattern"};
  results.signal = 11;
  EXPECT_EQ(abnormalEnd(results), "Failed to play pattern; killed by signal 11 (Segmentation fault)");
}

// 22 values given unsorted: an even count's median is the midpoint, p95 is the nearest rank above 20.9.
TEST(SpreadOf, OrderStatisticsAndMoments) {
  std::vector<int64_t> values;
  for (int64_t k = 22; k >= 1; --k) values.push_back(k);
  const Spread spread = spreadOf(values);
  EXPECT_EQ(spread.count, 22u);
  EXPECT_EQ(spread.min, 1);
  EXPECT_DOUBLE_EQ(spread.median, 11.5);
  EXPECT_DOUBLE_EQ(spread.mean, 11.5);
  EXPECT_EQ(spread.p95, 21);
  EXPECT_EQ(spread.max, 22);
  EXPECT_NEAR(spread.stddev, 6.344288770224761, 1e-9);
  std::vector<int64_t> none;
  EXPECT_EQ(spreadOf(none).max, 0);
}

TEST(ProgressText, TellsRunsFailuresAndTimeLeft) {
  EXPECT_EQ(progressText(3, 10, 1, 12.0), "run 3/10, 1 failure, 0:12 elapsed, about 0:28 left");
  EXPECT_EQ(progressText(4, -1, 0, 3725.0), "run 4, 0 failures, 1:02:05 elapsed");
}

}  // namespace
}  // namespace kesh::report
