// Compiled once per SIMD target and called through kernels/simd_dispatch.h
// (the best target of this CPU on x86, NEON on 32-bit ARM).
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/matmul.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "kernels/simd_dispatch.h"

#include <algorithm>
#include <vector>

#include "kernels/matmul.h"
#include "kernels/matmul_pack.h"

HWY_BEFORE_NAMESPACE();
// The AVX3_DL target implies AVX512-VNNI (the run-time check requires it); the
// fused 16-bit dot product needs the compiler to know. clang ignores this
// pragma, so its builds take the pmaddwd path on that target too.
#if HWY_TARGET == HWY_AVX3_DL && !defined(__clang__)
#pragma GCC target("avx512vnni")
#endif
namespace kesh::kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using D16 = hn::ScalableTag<int16_t>;
using D32 = hn::ScalableTag<int32_t>;
using V16 = hn::Vec<D16>;
using V32 = hn::Vec<D32>;

#if HWY_TARGET == HWY_AVX3_DL && !defined(__clang__)
// One instruction: acc[i] += a[2i]*b[2i] + a[2i+1]*b[2i+1].
inline V32 pairDot(V32 acc, V16 a, V16 b) { return V32{_mm512_dpwssd_epi32(acc.raw, a.raw, b.raw)}; }
#elif HWY_ARCH_X86 && HWY_TARGET != HWY_EMU128 && HWY_TARGET != HWY_SCALAR
// On x86 the widening multiply-accumulate is pmaddwd: lane i of the sum gets
// the products of 16-bit lanes 2i and 2i+1.
inline V32 pairDot(V32 acc, V16 a, V16 b) {
  V32 unused = hn::Zero(D32());
  return hn::ReorderWidenMulAccumulate(D32(), a, b, acc, unused);
}
#elif HWY_TARGET != HWY_SCALAR
// Elsewhere the pairs are split into sign-extended halves and multiplied in
// 32-bit lanes (a multiply-accumulate instruction on NEON).
inline V32 pairDot(V32 acc, V16 a, V16 b) {
  const D32 d32;
  const V32 a32 = hn::BitCast(d32, a), b32 = hn::BitCast(d32, b);
  const V32 aLow = hn::ShiftRight<16>(hn::ShiftLeft<16>(a32)), bLow = hn::ShiftRight<16>(hn::ShiftLeft<16>(b32));
  acc = hn::Add(acc, hn::Mul(aLow, bLow));
  return hn::Add(acc, hn::Mul(hn::ShiftRight<16>(a32), hn::ShiftRight<16>(b32)));
}
#endif

#if HWY_TARGET == HWY_SCALAR
// Single lanes hold no pairs: CPUs without even SSSE3 get plain dot products.
void Product(const MatMulParams& p) {
  const auto* a = reinterpret_cast<const int8_t*>(p.a);
  const auto* b = reinterpret_cast<const int8_t*>(p.b);
  for (size_t row = 0; row < p.m; ++row) {
    for (size_t col = 0; col < p.n; ++col) {
      int64_t sum = 0;
      for (size_t k = 0; k < p.k; ++k) sum += a[row * p.k + k] * b[k * p.n + col];
      requantiseRow(p, row, col, 1, &sum);
    }
  }
}
#else
// Vectors of output columns per panel and rows per block: as many
// accumulators as the register file holds beside the operands.
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
constexpr size_t kPanelVectors = 2, kBlockRows = 8;
#elif HWY_ARCH_X86
constexpr size_t kPanelVectors = 2, kBlockRows = 4;
#else
constexpr size_t kPanelVectors = 1, kBlockRows = 4;
#endif

// tile[r][c] = sum over pairs [pairBegin, pairEnd) of row r of A times
// column c of the panel, for `rows` rows (<= kBlockRows).
template <size_t kRows>
void microKernel(const int32_t* aPairs, size_t pairsPerRow, const int16_t* panel, size_t pairBegin,
                 size_t pairEnd, int32_t* tile) {
  const D16 d16;
  const D32 d32;
  const size_t lanes = hn::Lanes(d32);
  V32 acc[kRows][kPanelVectors];
  for (size_t r = 0; r < kRows; ++r) {
    for (size_t v = 0; v < kPanelVectors; ++v) acc[r][v] = hn::Zero(d32);
  }
  const size_t panelStride = 2 * lanes * kPanelVectors;  // int16 per pair of rows of B
  for (size_t kp = pairBegin; kp < pairEnd; ++kp) {
    V16 b[kPanelVectors];
    for (size_t v = 0; v < kPanelVectors; ++v) b[v] = hn::LoadU(d16, panel + kp * panelStride + v * 2 * lanes);
    for (size_t r = 0; r < kRows; ++r) {
      const V16 a = hn::BitCast(d16, hn::Set(d32, aPairs[r * pairsPerRow + kp]));
      for (size_t v = 0; v < kPanelVectors; ++v) acc[r][v] = pairDot(acc[r][v], a, b[v]);
    }
  }
  for (size_t r = 0; r < kRows; ++r) {
    for (size_t v = 0; v < kPanelVectors; ++v) hn::StoreU(acc[r][v], d32, tile + (r * kPanelVectors + v) * lanes);
  }
}

void runMicroKernel(size_t rows, const int32_t* aPairs, size_t pairsPerRow, const int16_t* panel,
                    size_t pairBegin, size_t pairEnd, int32_t* tile) {
  static_assert(kBlockRows == 4 || kBlockRows == 8, "row counts below");
  switch (rows) {
    case 8: if constexpr (kBlockRows == 8) microKernel<8>(aPairs, pairsPerRow, panel, pairBegin, pairEnd, tile); break;
    case 4: microKernel<4>(aPairs, pairsPerRow, panel, pairBegin, pairEnd, tile); break;
    default: microKernel<1>(aPairs, pairsPerRow, panel, pairBegin, pairEnd, tile); break;
  }
}

// Rows per call: full blocks, then fours, then single rows.
size_t rowsAt(size_t remaining) {
  if (remaining >= kBlockRows) return kBlockRows;
  return remaining >= 4 ? 4 : 1;
}

void Product(const MatMulParams& p) {
  const size_t panelWidth = hn::Lanes(D32()) * kPanelVectors;
  const PackedOperands packed = packOperands(p, panelWidth);
  const size_t pairs = packed.pairsPerRow;
  std::vector<int32_t> tile(kBlockRows * panelWidth);
  std::vector<int64_t> total(kBlockRows * panelWidth);
  for (size_t col = 0; col < p.n; col += panelWidth) {
    const int16_t* panel = packed.b.data() + (col / panelWidth) * pairs * 2 * panelWidth;
    const size_t cols = std::min(panelWidth, p.n - col);
    for (size_t row = 0; row < p.m;) {
      const size_t rows = rowsAt(p.m - row);
      std::fill(total.begin(), total.end(), 0);
      // Each block of pairs keeps every 32-bit lane exact (see kPairsPerBlock).
      for (size_t begin = 0; begin < pairs || begin == 0; begin += kPairsPerBlock) {
        const size_t end = std::min(pairs, begin + kPairsPerBlock);
        runMicroKernel(rows, packed.a.data() + row * pairs, pairs, panel, begin, end, tile.data());
        for (size_t i = 0; i < rows * panelWidth; ++i) total[i] += tile[i];
        if (end == pairs) break;
      }
      for (size_t r = 0; r < rows; ++r) {
        requantiseRow(p, row + r, col, cols, total.data() + r * panelWidth);
      }
      row += rows;
    }
  }
}

#endif  // HWY_TARGET == HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace kesh::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kesh::kernels {

KESH_SIMD_EXPORT(Product);

bool matmul(const MatMulParams& params) {
  if (params.outType != format::DType::kU8 && params.outType != format::DType::kI8) return false;
  if (params.m == 0 || params.n == 0) return true;
  KESH_SIMD_CALL(Product)(params);
  return true;
}

}  // namespace kesh::kernels
#endif  // HWY_ONCE
