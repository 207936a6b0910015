#include "kernels/matmul_pack.h"

#include <algorithm>

#include "format/le_bytes.h"
#include "kernels/int_math.h"

namespace kesh::kernels {
namespace {

int16_t elementAt(const uint8_t* matrix, size_t row, size_t col, size_t rows, size_t cols) {
  return row < rows && col < cols ? static_cast<int8_t>(matrix[row * cols + col]) : 0;
}

template <typename Out>
void requantiseTyped(const MatMulParams& p, size_t row, size_t col, size_t cols, const int64_t* sums) {
  // Larger shifts are refused at load time; the clamp only keeps the
  // arithmetic defined.
  const uint32_t shift = std::min<uint32_t>(p.shift, 62);
  uint8_t* out = p.dst + row * p.n + col;
  for (size_t c = 0; c < cols; ++c) {
    const int64_t bias = p.bias == nullptr ? 0 : static_cast<int32_t>(format::loadLe32(p.bias + 4 * (col + c)));
    const int64_t acc = saturate<int32_t>(sums[c] + bias);
    // |acc * multiplier| <= 2^62 and the rounding term adds at most 2^61.
    const int64_t scaled = roundingShift<int64_t>(acc * p.multiplier, shift);
    out[c] = static_cast<uint8_t>(saturate<Out>(scaled + p.zeroPoint));
  }
}

}  // namespace

PackedOperands packOperands(const MatMulParams& p, size_t panelWidth) {
  PackedOperands packed;
  const size_t M = p.m, K = p.k, N = p.n;
  const size_t pairs = packed.pairsPerRow = (K + 1) / 2;
  packed.a.resize(M * pairs);
  for (size_t m = 0; m < M; ++m) {
    for (size_t q = 0; q < pairs; ++q) {
      const uint16_t lo = static_cast<uint16_t>(elementAt(p.a, m, 2 * q, M, K));
      const uint16_t hi = static_cast<uint16_t>(elementAt(p.a, m, 2 * q + 1, M, K));
      packed.a[m * pairs + q] = static_cast<int32_t>(lo | (uint32_t{hi} << 16));
    }
  }
  const size_t panels = (N + panelWidth - 1) / panelWidth;
  packed.b.resize(panels * pairs * 2 * panelWidth);
  int16_t* out = packed.b.data();
  for (size_t panel = 0; panel < panels; ++panel) {
    for (size_t q = 0; q < pairs; ++q) {
      for (size_t c = panel * panelWidth; c < (panel + 1) * panelWidth; ++c) {
        *out++ = elementAt(p.b, 2 * q, c, K, N);
        *out++ = elementAt(p.b, 2 * q + 1, c, K, N);
      }
    }
  }
  return packed;
}

void requantiseRow(const MatMulParams& p, size_t row, size_t col, size_t cols, const int64_t* sums) {
  if (p.outType == format::DType::kU8) {
    requantiseTyped<uint8_t>(p, row, col, cols, sums);
  } else {
    requantiseTyped<int8_t>(p, row, col, cols, sums);
  }
}

}  // namespace kesh::kernels
