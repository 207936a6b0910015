// Spread of a series of times: the order statistics and moments a farm reads.
#include "report/timing_stats.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "report/progress.h"

namespace kesh::report {
namespace {

std::vector<int64_t> oneTo(int64_t n) {
  std::vector<int64_t> values;
  for (int64_t k = n; k >= 1; --k) values.push_back(k);  // unsorted on purpose
  return values;
}

TEST(SpreadOf, OrderStatisticsAndMoments) {
  const struct {
    std::vector<int64_t> values;
    int64_t min;
    double median, mean;
    int64_t p95, max;
    double stddev;
  } kRows[] = {
      {{}, 0, 0, 0, 0, 0, 0},
      {{7}, 7, 7, 7, 7, 7, 0},
      {{4, 1, 3, 2}, 1, 2.5, 2.5, 4, 4, 1.118033988749895},  // an even count's median is the midpoint
      {oneTo(20), 1, 10.5, 10.5, 19, 20, 5.766281297335398},  // p95 by nearest rank
      {oneTo(101), 1, 51, 51, 96, 101, 29.154759474226502},
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
  EXPECT_EQ(progressText(0, 5, 2, 1.0), "run 0/5, 2 failures, 0:01 elapsed");
}

}  // namespace
}  // namespace kesh::report
