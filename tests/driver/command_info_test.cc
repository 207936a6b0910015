#include "driver/command_info.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <cstdio>
#include <string>
#include <vector>

#include "driver/timing_report.h"
#include "testing/stdout_capture.h"

namespace {

// The listing as the plain rule states it, one value at a time.
std::string naiveListing(const std::vector<uint8_t>& result, const std::vector<uint8_t>& golden) {
  std::string text;
  char value[4];
  for (size_t k = 0; k < result.size(); ++k) {
    std::snprintf(value, sizeof(value), "%x ", static_cast<unsigned>(result[k] ^ golden[k]));
    text += value + std::string((k + 1) % 16 == 0 ? "\n" : (k + 1) % 4 == 0 ? " " : "");
  }
  return text;
}

TEST(CompareGolden, LongMismatchMatchesTheValueByValueRule) {
  // Not whole lines; pseudo-random bytes reach nearly every pair of values formatted together.
  std::vector<uint8_t> result(600001), golden(result.size());
  uint32_t seed = 7;
  for (size_t i = 0; i < result.size(); ++i) {
    seed = seed * 1664525u + 1013904223u;
    result[i] = static_cast<uint8_t>(seed >> 24);
    golden[i] = static_cast<uint8_t>(i % 3 == 0 ? result[i] : seed >> 16);
  }
  const std::string out = kesh::testing::captureStdout([&] {
    EXPECT_FALSE(CommandInfo::compareGolden(result, golden));
    std::cout << 10;  // the caller's number base survives the listing
  });
  // Compared by length and first difference: the whole text is megabytes.
  const std::string expected = "Result does not match golden data.\nDiff:\n" + naiveListing(result, golden) + "10";
  ASSERT_EQ(out.size(), expected.size());
  const auto differ = std::mismatch(out.begin(), out.end(), expected.begin());
  EXPECT_EQ(differ.first - out.begin(), static_cast<std::ptrdiff_t>(out.size()))
      << "from " << std::string(differ.first, out.end()).substr(0, 80);
}

TEST(TimingReport, EachValueOnItsOwnLineInFullRange) {
  EXPECT_EQ(formatTimingLines(3, NodeTiming{INT64_MIN, 7, -5, INT64_MAX}),
            "    IP time of sub-command 3: -9223372036854775808 us\n"
            "    Driver time of sub-command 3: 7 us\n"
            "    Timestamp start of sub-command 3: -5\n"
            "    Timestamp end of sub-command 3: 9223372036854775807\n");
}

}  // namespace
