#include "kernels/matmul_pack.h"

#include <algorithm>

#include "format/le_bytes.h"
#include "kernels/int_math.h"

namespace kesh::kernels {
namespace {

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
  const auto* a = reinterpret_cast<const int8_t*>(p.a);
  const auto* b = reinterpret_cast<const int8_t*>(p.b);
  packed.a.resize(M * pairs);
  for (size_t m = 0; m < M; ++m) {
    const int8_t* row = a + m * K;
    int32_t* out = packed.a.data() + m * pairs;
    for (size_t k = 0; k + 1 < K; k += 2) {
      out[k / 2] = static_cast<int32_t>(static_cast<uint16_t>(row[k]) | (uint32_t{static_cast<uint16_t>(row[k + 1])} << 16));
    }
    if (K % 2 != 0) out[pairs - 1] = static_cast<uint16_t>(row[K - 1]);
  }
  // Zero-filled first: the padding columns and the missing last row of an
  // odd K stay zero.
  const size_t panels = (N + panelWidth - 1) / panelWidth;
  packed.b.assign(panels * pairs * 2 * panelWidth, 0);
  for (size_t panel = 0; panel < panels; ++panel) {
    const size_t first = panel * panelWidth, cols = std::min(panelWidth, N - first);
    for (size_t q = 0; q < pairs; ++q) {
      int16_t* out = packed.b.data() + (panel * pairs + q) * 2 * panelWidth;
      const int8_t* even = b + 2 * q * N + first;
      for (size_t c = 0; c < cols; ++c) out[2 * c] = even[c];
      if (2 * q + 1 == K) continue;
      const int8_t* odd = even + N;
      for (size_t c = 0; c < cols; ++c) out[2 * c + 1] = odd[c];
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
