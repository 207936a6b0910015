#include "kernels/conv2d.h"

#include <gtest/gtest.h>

#include <vector>

#include "test_support.h"

namespace kesh::kernels {
namespace {

using namespace testing;  // NOLINT: the reference's integer steps

struct Case {
  uint32_t width, height, k;
  std::vector<int64_t> weights;
  uint32_t shift;
  int32_t bias;
  uint32_t rowBegin, rowEnd;
  size_t pad;  // bytes between rows beyond the width, on both planes
};

// The kernel against the definition (borders replicated); every byte it must
// not write keeps the fill value 0x5A.
void expectMatchesReference(const Case& c, std::mt19937& rng) {
  const size_t stride = c.width + c.pad;
  const std::vector<uint8_t> src = randomBytes(rng, stride * c.height);
  std::vector<uint8_t> weights, dst(src.size(), 0x5A), expected = dst;
  for (int64_t w : c.weights) weights.insert(weights.end(), {uint8_t(w & 0xFF), uint8_t((w >> 8) & 0xFF)});
  const int64_t half = c.k / 2, bottom = c.height - 1, right = c.width - 1;
  for (int64_t y = c.rowBegin; y < c.rowEnd; ++y) {
    for (int64_t x = 0; x < c.width; ++x) {
      int64_t acc = c.bias;
      for (int64_t i = 0; i < c.k * c.k; ++i) {
        acc += c.weights[i] * src[clampTo(y + i / c.k - half, 0, bottom) * stride + clampTo(x + i % c.k - half, 0, right)];
      }
      expected[y * stride + x] = static_cast<uint8_t>(clampTo(roundShift(acc, c.shift), 0, 255));
    }
  }
  ASSERT_TRUE(conv2d({dst.data(), stride, src.data(), stride, c.width, c.height, c.rowBegin, c.rowEnd, weights.data(),
                      c.k, c.shift, c.bias}));
  ASSERT_EQ(dst, expected) << c.width << "x" << c.height << " k " << c.k << " shift " << c.shift << " bias " << c.bias
                           << " rows " << c.rowBegin << ".." << c.rowEnd;
}

std::vector<int64_t> weights(std::mt19937& rng, uint32_t k, int64_t lo, int64_t hi) {
  std::vector<int64_t> w(k * k);
  for (int64_t& v : w) v = randomIn(rng, lo, hi);
  return w;
}

TEST(Conv2DTest, MatchesReferenceAtEverySizeBorderRowRangeAndExtreme) {
  std::mt19937 rng(21);
  for (uint32_t k : {3u, 5u}) {
    // Small weights keep most outputs inside 0..255, so rounding is visible.
    for (const auto& [w, h] : {std::pair{1u, 1u}, {1u, 7u}, {7u, 1u}, {2u, 2u}, {5u, 4u}, {17u, 9u}, {70u, 13u}}) {
      for (const auto& [begin, end] : {std::pair{0u, h}, {0u, 1u}, {h - 1, h}, {h / 3, h / 3 + 1}}) {
        expectMatchesReference({w, h, k, weights(rng, k, -6, 9), begin == 0 ? 1u : 4u, 7, begin, end, w % 3}, rng);
      }
    }
    // All weights at one end of the i16 range give the largest sums.
    for (uint32_t shift : {0u, 16u, 31u}) {
      for (int32_t bias : {INT32_MIN, INT32_MAX}) {
        expectMatchesReference({13, 11, k, weights(rng, k, -32768, 32767), shift, bias, 0, 11, 0}, rng);
        expectMatchesReference({13, 11, k, std::vector<int64_t>(k * k, bias < 0 ? 32767 : -32768), shift, bias, 0, 11, 0}, rng);
      }
    }
  }
}

}  // namespace
}  // namespace kesh::kernels
