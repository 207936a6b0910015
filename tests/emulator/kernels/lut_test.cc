#include "kernels/lut.h"

#include <gtest/gtest.h>

#include <vector>

#include "test_support.h"

namespace kesh::kernels {
namespace {

TEST(LutTest, EveryByteMapsThroughTheTableOutOfPlaceAndInPlace) {
  std::mt19937 rng(41);
  const std::vector<uint8_t> table = testing::randomBytes(rng, 256);
  std::vector<uint8_t> src = testing::randomBytes(rng, 1001);
  for (int v = 255; v >= 0; --v) src.push_back(static_cast<uint8_t>(v));
  std::vector<uint8_t> expected(src.size() + 3, 0xEE), dst(src.size() + 3, 0xEE), inPlace = src;
  for (size_t i = 0; i < src.size(); ++i) expected[i] = table[src[i]];
  lut(dst.data(), src.data(), src.size(), table.data());
  lut(inPlace.data(), inPlace.data(), inPlace.size(), table.data());
  EXPECT_EQ(dst, expected);
  inPlace.resize(dst.size(), 0xEE);
  EXPECT_EQ(inPlace, expected);
}

}  // namespace
}  // namespace kesh::kernels
