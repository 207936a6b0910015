#include "kernels/conv2d_plan.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

#include "format/le_bytes.h"

namespace kesh::kernels {
namespace {

int64_t floorToMultiple(int64_t v, int64_t step) {
  const int64_t q = v / step - ((v % step != 0 && v < 0) ? 1 : 0);
  return q * step;
}

// Every output's exact sum lies in [add + 255*negatives, add + 255*positives].
// Picks the 16-bit window when that range, moved by a multiple of 2^shift,
// fits int16 and the shifted offset still fits an int16 saturating add.
void chooseLanes(ConvPlan& plan) {
  int64_t negatives = 0, positives = 0;
  for (int i = 0; i < plan.k * plan.k; ++i) {
    (plan.w[i] < 0 ? negatives : positives) += int64_t{255} * plan.w[i];
  }
  const int64_t lo = plan.add + negatives, hi = plan.add + positives;
  if (plan.shift <= 15) {
    const int64_t offset = floorToMultiple(lo + 32768, int64_t{1} << plan.shift);
    const int64_t shifted = offset >> plan.shift;
    if (hi - offset <= 32767 && shifted >= -32768 && shifted <= 32767) {
      plan.lanes = ConvLanes::k16;
      plan.offset = offset;
      return;
    }
  }
  plan.lanes = (lo >= INT32_MIN && hi <= INT32_MAX) ? ConvLanes::k32 : ConvLanes::k64;
}

}  // namespace

bool factorRankOne(const int32_t* w, int k, int32_t* column, int32_t* row) {
  const int32_t* pivotRow = nullptr;
  for (int i = 0; i < k && pivotRow == nullptr; ++i) {
    if (std::any_of(w + i * k, w + (i + 1) * k, [](int32_t v) { return v != 0; })) pivotRow = w + i * k;
  }
  if (pivotRow == nullptr) {
    std::fill(column, column + k, 0);
    std::fill(row, row + k, 0);
    return true;
  }
  // The pivot row divided by the gcd of its entries is primitive, so every
  // row that is a rational multiple of it is an integer multiple.
  int32_t g = 0;
  for (int j = 0; j < k; ++j) g = std::gcd(g, std::abs(pivotRow[j]));
  int pivot = 0;
  while (pivotRow[pivot] == 0) ++pivot;
  for (int j = 0; j < k; ++j) row[j] = pivotRow[j] / g;
  for (int i = 0; i < k; ++i) {
    column[i] = w[i * k + pivot] / row[pivot];
    for (int j = 0; j < k; ++j) {
      if (int64_t{column[i]} * row[j] != w[i * k + j]) return false;
    }
  }
  return true;
}

ConvPlan planConv2d(const Conv2DParams& params) {
  ConvPlan plan;
  plan.k = static_cast<int>(params.k);
  for (int i = 0; i < plan.k * plan.k; ++i) {
    plan.w[i] = static_cast<int16_t>(format::loadLe16(params.weights + 2 * i));
  }
  plan.shift = std::min<uint32_t>(params.shift, 31);  // larger shifts are refused at load time
  plan.add = int64_t{params.bias} + (plan.shift == 0 ? 0 : int64_t{1} << (plan.shift - 1));
  chooseLanes(plan);
  // Both passes of the separable form wrap in 16 bits like the direct sum,
  // so the same window proves them exact.
  plan.separable = plan.lanes == ConvLanes::k16 && factorRankOne(plan.w, plan.k, plan.column, plan.row);
  return plan;
}

}  // namespace kesh::kernels
