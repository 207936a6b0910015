#include "driver/command_info.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

// Captures what compareGolden writes to standard output.
class CoutCapture {
 public:
  CoutCapture() : saved_(std::cout.rdbuf(captured_.rdbuf())) {}
  ~CoutCapture() { std::cout.rdbuf(saved_); }
  std::string text() const { return captured_.str(); }

 private:
  std::ostringstream captured_;
  std::streambuf* saved_;
};

const char kHeader[] = "Result does not match golden data.\nDiff:\n";

TEST(CompareGolden, EqualOrEmptyPassesSilently) {
  CoutCapture capture;
  EXPECT_TRUE(CommandInfo::compareGolden({1, 2, 3}, {1, 2, 3}));
  EXPECT_TRUE(CommandInfo::compareGolden({}, {9}));
  // Only the result's length is compared; the golden may run on.
  EXPECT_TRUE(CommandInfo::compareGolden({1, 2}, {1, 2, 9}));
  EXPECT_EQ(capture.text(), "");
}

TEST(CompareGolden, MismatchIsListedAndTheCallersNumberBaseKept) {
  CoutCapture capture;
  std::cout << std::oct;
  EXPECT_FALSE(CommandInfo::compareGolden({0, 0, 0, 0, 0x1f}, {0, 0, 0, 0, 0}));
  std::cout << 8 << std::dec;
  EXPECT_EQ(capture.text(), std::string(kHeader) + "0 0 0 0  1f 10");
}

// The listing as the plain rule states it, one value at a time.
std::string naiveListing(const std::vector<uint8_t>& result, const std::vector<uint8_t>& golden) {
  std::string text;
  char value[4];
  for (size_t k = 0; k < result.size(); ++k) {
    std::snprintf(value, sizeof(value), "%x ", static_cast<unsigned>(result[k] ^ golden[k]));
    text += value;
    if ((k + 1) % 16 == 0) {
      text += '\n';
    } else if ((k + 1) % 4 == 0) {
      text += ' ';
    }
  }
  return text;
}

TEST(CompareGolden, LongMismatchMatchesTheValueByValueRule) {
  // Not a whole number of lines; pseudo-random bytes reach nearly every pair
  // of values the fast path formats together.
  std::vector<uint8_t> result(600001);
  std::vector<uint8_t> golden(result.size());
  uint32_t seed = 7;
  for (size_t i = 0; i < result.size(); ++i) {
    seed = seed * 1664525u + 1013904223u;
    result[i] = static_cast<uint8_t>(seed >> 24);
    golden[i] = static_cast<uint8_t>(i % 3 == 0 ? result[i] : seed >> 16);
  }
  CoutCapture capture;
  EXPECT_FALSE(CommandInfo::compareGolden(result, golden));
  EXPECT_TRUE(capture.text() == kHeader + naiveListing(result, golden));
}

}  // namespace
