#include "driver/diff_listing.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

std::string listing(const std::vector<uint8_t>& result, const std::vector<uint8_t>& golden) {
  std::string out;
  appendDiffListing(out, result.data(), golden.data(), result.size());
  return out;
}

std::vector<uint8_t> sequence(size_t size) {
  std::vector<uint8_t> bytes(size);
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i);
  return bytes;
}

TEST(DiffListing, ValuesAreXorInUnpaddedLowerCaseHex) {
  // A matching byte prints 0, values below 16 get one digit, others two.
  EXPECT_EQ(listing({0x0f, 0x33, 0x01, 0xa0, 0xff}, {0xf0, 0x33, 0x00, 0x00, 0x00}), "ff 0 1 a0  ff ");
}

TEST(DiffListing, SpacingFollowsGroupsOfFourAndLinesOfSixteen) {
  const std::vector<uint8_t> zeros(40, 0);
  const std::string fullLine = "0 1 2 3  4 5 6 7  8 9 a b  c d e f \n";
  EXPECT_EQ(listing(sequence(16), zeros), fullLine);
  EXPECT_EQ(listing(sequence(17), zeros), fullLine + "10 ");
  EXPECT_EQ(listing(sequence(36), zeros),
            fullLine + "10 11 12 13  14 15 16 17  18 19 1a 1b  1c 1d 1e 1f \n20 21 22 23  ");
}

TEST(DiffListing, AppendsAfterExistingTextAndNothingForNoBytes) {
  std::string out = "Diff:\n";
  appendDiffListing(out, nullptr, nullptr, 0);
  EXPECT_EQ(out, "Diff:\n");
  const std::vector<uint8_t> result = {1, 2};
  const std::vector<uint8_t> golden = {0, 0};
  appendDiffListing(out, result.data(), golden.data(), result.size());
  EXPECT_EQ(out, "Diff:\n1 2 ");
}

}  // namespace
