#include "kernels/conv2d.h"

#include <algorithm>
#include <cstdlib>

#include "kernels/int_math.h"
#include "format/le_bytes.h"

namespace kesh::kernels {
namespace {

// The constant part of every output: bias plus the rounding term, and
// whether the whole sum provably fits 32 bits. The tap sum alone always
// fits (25 * 32768 * 255 < 2^31), so only a large bias forces 64 bits.
struct Finish {
  int64_t add = 0;
  uint32_t shift = 0;
  bool fits32 = false;
};

Finish makeFinish(const Conv2DParams& p, const int32_t* w, int taps) {
  Finish f;
  f.shift = std::min<uint32_t>(p.shift, 31);  // larger shifts are refused at load time
  f.add = int64_t{p.bias} + (f.shift == 0 ? 0 : int64_t{1} << (f.shift - 1));
  int64_t maxSum = 0;
  for (int i = 0; i < taps; ++i) maxSum += 255 * int64_t{std::abs(w[i])};
  f.fits32 = (f.add < 0 ? -f.add : f.add) + maxSum <= INT32_MAX;
  return f;
}

template <bool kFits32>
inline uint8_t finishOne(int32_t sum, const Finish& f) {
  if constexpr (kFits32) {
    const int32_t v = (sum + static_cast<int32_t>(f.add)) >> f.shift;
    return saturate<uint8_t>(v);
  } else {
    return saturate<uint8_t>((int64_t{sum} + f.add) >> f.shift);
  }
}

inline size_t clampIndex(int64_t i, size_t n) {
  return i < 0 ? 0 : (i >= static_cast<int64_t>(n) ? n - 1 : static_cast<size_t>(i));
}

// Columns near the left and right edges, where taps are clamped.
template <int K, bool kFits32>
void borderColumn(uint8_t* out, const uint8_t* const* rows, const int32_t* w, size_t x,
                  size_t width, const Finish& f) {
  constexpr int R = K / 2;
  int32_t sum = 0;
  for (int i = 0; i < K; ++i) {
    for (int j = 0; j < K; ++j) {
      const size_t col = clampIndex(static_cast<int64_t>(x) + j - R, width);
      sum += w[i * K + j] * rows[i][col];
    }
  }
  out[x] = finishOne<kFits32>(sum, f);
}

// Columns [R, width - R), where every tap is inside the row: one
// straight-line loop over x that the compiler turns into vector code.
template <int K, bool kFits32>
void interiorColumns(uint8_t* out, const uint8_t* const* rows, const int32_t* weights,
                     size_t count, const Finish& f) {
  // 16-bit operands let the compiler use widening 16x16->32 multiplies.
  int16_t w[K * K];
  for (int i = 0; i < K * K; ++i) w[i] = static_cast<int16_t>(weights[i]);
  const uint8_t* r[K];
  std::copy(rows, rows + K, r);
  const Finish fin = f;
  for (size_t t = 0; t < count; ++t) {
    int32_t sum = 0;
    for (int i = 0; i < K; ++i) {
      for (int j = 0; j < K; ++j) sum += int32_t{w[i * K + j]} * int16_t{r[i][t + j]};
    }
    out[t] = finishOne<kFits32>(sum, fin);
  }
}

template <int K, bool kFits32>
void convolveRows(const Conv2DParams& p, const int32_t* w, const Finish& f) {
  constexpr int R = K / 2;
  const size_t width = p.width;
  for (size_t y = p.rowBegin; y < p.rowEnd; ++y) {
    const uint8_t* rows[K];
    for (int i = 0; i < K; ++i) {
      rows[i] = p.src + clampIndex(static_cast<int64_t>(y) + i - R, p.height) * p.srcStride;
    }
    uint8_t* out = p.dst + y * p.dstStride;
    const size_t leftEnd = std::min<size_t>(R, width);
    const size_t rightBegin = width > 2 * R ? width - R : leftEnd;
    if (rightBegin > leftEnd) {
      interiorColumns<K, kFits32>(out + R, rows, w, rightBegin - leftEnd, f);
    }
    for (size_t x = 0; x < leftEnd; ++x) borderColumn<K, kFits32>(out, rows, w, x, width, f);
    for (size_t x = rightBegin; x < width; ++x) {
      borderColumn<K, kFits32>(out, rows, w, x, width, f);
    }
  }
}

template <int K>
void convolve(const Conv2DParams& p) {
  int32_t w[K * K];
  for (int i = 0; i < K * K; ++i) w[i] = static_cast<int16_t>(format::loadLe16(p.weights + 2 * i));
  const Finish f = makeFinish(p, w, K * K);
  if (f.fits32) {
    convolveRows<K, true>(p, w, f);
  } else {
    convolveRows<K, false>(p, w, f);
  }
}

}  // namespace

bool conv2d(const Conv2DParams& params) {
  if (params.k != 3 && params.k != 5) return false;
  if (params.width == 0 || params.height == 0) return true;
  if (params.k == 3) {
    convolve<3>(params);
  } else {
    convolve<5>(params);
  }
  return true;
}

}  // namespace kesh::kernels
