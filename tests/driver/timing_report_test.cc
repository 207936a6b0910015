#include "driver/timing_report.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

TEST(TimingReport, FourLinesInFixedOrderWithUnitsOnTimesOnlyAndFullRangeValues) {
  EXPECT_EQ(formatTimingLines(3, NodeTiming{INT64_MIN, 7, -5, INT64_MAX}),
            "    IP time of sub-command 3: -9223372036854775808 us\n"
            "    Driver time of sub-command 3: 7 us\n"
            "    Timestamp start of sub-command 3: -5\n"
            "    Timestamp end of sub-command 3: 9223372036854775807\n");
}

}  // namespace
