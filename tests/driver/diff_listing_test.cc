#include "driver/diff_listing.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string listing(const std::vector<uint8_t>& result, const std::vector<uint8_t>& golden) {
  std::ostringstream out;
  printDiffListing(out, "Diff:\n", result.data(), golden.data(), result.size());
  return out.str();
}

TEST(DiffListing, UnpaddedLowerCaseXorInGroupsOfFourAndLinesOfSixteen) {
  EXPECT_EQ(listing({0x0f, 0x33, 0x01, 0xa0, 0xff}, {0xf0, 0x33, 0x00, 0x00, 0x00}), "Diff:\nff 0 1 a0  ff ");
  std::vector<uint8_t> counting(36);
  for (size_t i = 0; i < counting.size(); ++i) counting[i] = static_cast<uint8_t>(i);
  // No line end after a last line shorter than sixteen values.
  EXPECT_EQ(listing(counting, std::vector<uint8_t>(36, 0)),
            "Diff:\n0 1 2 3  4 5 6 7  8 9 a b  c d e f \n"
            "10 11 12 13  14 15 16 17  18 19 1a 1b  1c 1d 1e 1f \n20 21 22 23  ");
  EXPECT_EQ(listing({}, {}), "Diff:\n");
}

// Long listings are formatted in pieces; the pieces must join into exactly the
// listing of the whole, whatever the length (around and past a piece's end).
TEST(DiffListing, LongListingsJoinSeamlessly) {
  for (size_t size : {16383u, 16384u, 16385u, 3u * 16384u + 21u}) {
    std::vector<uint8_t> result(size), golden(size, 0x5a);
    std::string expected = "Diff:\n";
    for (size_t k = 0; k < size; ++k) {
      result[k] = static_cast<uint8_t>(k * 7 + k / 251);
      char value[8];
      std::snprintf(value, sizeof(value), "%x ", static_cast<unsigned>(result[k] ^ golden[k]));
      expected += value;
      if ((k + 1) % 16 == 0) {
        expected += '\n';
      } else if ((k + 1) % 4 == 0) {
        expected += ' ';
      }
    }
    EXPECT_EQ(listing(result, golden), expected) << size << " bytes";
  }
}

}  // namespace
