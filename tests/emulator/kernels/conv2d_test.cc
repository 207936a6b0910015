#include "kernels/conv2d.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "test_support.h"

namespace kesh::kernels {
namespace {

using testing::clampTo;
using testing::randomBytes;
using testing::randomIn;
using testing::roundShift;

struct Case {
  uint32_t width, height, k;
  std::vector<int64_t> weights;
  uint32_t shift;
  int32_t bias;
  uint32_t rowBegin, rowEnd;
  size_t pad;  // bytes between rows beyond the width, on both planes
};

// Straight from the definition; untouched bytes keep the fill value 0x5A.
std::vector<uint8_t> reference(const Case& c, const std::vector<uint8_t>& src, size_t stride) {
  std::vector<uint8_t> dst(src.size(), 0x5A);
  const int64_t half = c.k / 2, last = c.height - 1, right = c.width - 1;
  for (int64_t y = c.rowBegin; y < c.rowEnd; ++y) {
    for (int64_t x = 0; x < c.width; ++x) {
      int64_t acc = c.bias;
      for (int64_t i = 0; i < c.k; ++i) {
        for (int64_t j = 0; j < c.k; ++j) {
          const int64_t pixel = src[clampTo(y + i - half, 0, last) * stride + clampTo(x + j - half, 0, right)];
          acc += c.weights[i * c.k + j] * pixel;
        }
      }
      dst[y * stride + x] = static_cast<uint8_t>(clampTo(roundShift(acc, c.shift), 0, 255));
    }
  }
  return dst;
}

void expectMatchesReference(const Case& c, std::mt19937& rng) {
  const size_t stride = c.width + c.pad;
  const std::vector<uint8_t> src = randomBytes(rng, stride * c.height);
  std::vector<uint8_t> weights, dst(src.size(), 0x5A);
  for (int64_t w : c.weights) {
    weights.push_back(static_cast<uint8_t>(w & 0xFF));
    weights.push_back(static_cast<uint8_t>((w >> 8) & 0xFF));
  }
  const Conv2DParams p{dst.data(), stride,    src.data(), stride,  c.width, c.height,
                      c.rowBegin, c.rowEnd, weights.data(), c.k, c.shift, c.bias};
  ASSERT_TRUE(conv2d(p));
  ASSERT_EQ(dst, reference(c, src, stride)) << c.width << "x" << c.height << " k " << c.k << " shift " << c.shift
                                            << " bias " << c.bias << " rows " << c.rowBegin << ".." << c.rowEnd;
}

std::vector<int64_t> weights(std::mt19937& rng, uint32_t k, int64_t lo, int64_t hi) {
  std::vector<int64_t> w(k * k);
  for (int64_t& v : w) v = randomIn(rng, lo, hi);
  return w;
}

TEST(Conv2DTest, MatchesReferenceAtEverySizeAndBorder) {
  // Small weights keep most outputs inside 0..255, so rounding is visible.
  std::mt19937 rng(21);
  const std::vector<std::pair<uint32_t, uint32_t>> sizes = {{1, 1}, {1, 7}, {7, 1}, {2, 2}, {4, 4},
                                                            {5, 4}, {6, 6}, {9, 2}, {17, 9}, {70, 13}};
  for (uint32_t k : {3u, 5u}) {
    for (const auto& [w, h] : sizes) {
      for (uint32_t shift : {0u, 1u, 4u}) {
        const auto bias = static_cast<int32_t>(randomIn(rng, -300, 300));
        expectMatchesReference({w, h, k, weights(rng, k, -6, 9), shift, bias, 0, h, 0}, rng);
      }
      // Row ranges and row padding: nothing else may be written.
      for (const auto& [begin, end] : {std::pair{0u, 1u}, {h - 1, h}, {h / 2, h}, {h / 3, h / 3 + 1}}) {
        expectMatchesReference({w, h, k, weights(rng, k, -4, 6), 3, 7, begin, end, 3}, rng);
      }
    }
  }
}

TEST(Conv2DTest, ExtremeWeightsBiasAndShiftsMatchReference) {
  std::mt19937 rng(22);
  for (uint32_t k : {3u, 5u}) {
    for (const auto& [w, h] : {std::pair{1u, 1u}, {13u, 11u}}) {
      for (uint32_t shift : {0u, 1u, 16u, 30u, 31u}) {
        for (int32_t bias : {0, -1, INT32_MIN, INT32_MAX, INT32_MIN + 5, INT32_MAX - 5, 1 << 30}) {
          expectMatchesReference({w, h, k, weights(rng, k, -32768, 32767), shift, bias, 0, h, 0}, rng);
        }
        // All weights at one end of the i16 range give the largest sums.
        expectMatchesReference({w, h, k, std::vector<int64_t>(k * k, -32768), shift, INT32_MAX, 0, h, 0}, rng);
        expectMatchesReference({w, h, k, std::vector<int64_t>(k * k, 32767), shift, INT32_MIN, 0, h, 0}, rng);
      }
    }
  }
}

}  // namespace
}  // namespace kesh::kernels
