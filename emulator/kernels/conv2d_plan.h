// How a convolution is computed, decided once per call from its weights, bias
// and shift: the narrowest lanes that provably give the exact result, and
// whether the kernel factors into a column and a row vector. Stateless; safe
// from any thread.
#ifndef KESH_EMULATOR_KERNELS_CONV2D_PLAN_H_
#define KESH_EMULATOR_KERNELS_CONV2D_PLAN_H_

#include <cstdint>

#include "kernels/conv2d.h"

namespace kesh::kernels {

/// The widest kernel the plan holds.
constexpr int kMaxConvTaps = 25;

/// Which arithmetic a convolution runs in.
enum class ConvLanes {
  k16,  ///< 16-bit lanes: every sum, offset by `offset`, fits int16
  k32,  ///< 32-bit lanes: every sum plus bias and rounding fits int32
  k64,  ///< exact 64-bit scalar sums (only a bias near the int32 ends needs it)
};

/// A convolution's weights and the proof that its lanes are wide enough.
struct ConvPlan {
  int k = 3;                        ///< kernel size
  int32_t w[kMaxConvTaps] = {};     ///< weights, row-major
  uint32_t shift = 0;               ///< rounding shift, 0..31
  int64_t add = 0;                  ///< bias plus the rounding term
  ConvLanes lanes = ConvLanes::k64; ///< the arithmetic chosen
  /// 16-bit lanes hold `sum + add - offset` (wrapping is harmless: the true
  /// value is known to lie in the int16 window); offset is a multiple of
  /// 2^shift, so the shifted result is that lane shifted plus offset >> shift.
  int64_t offset = 0;
  bool separable = false;           ///< w[i*k+j] == column[i] * row[j] exactly
  int32_t column[5] = {};           ///< vertical factor when separable
  int32_t row[5] = {};              ///< horizontal factor when separable
};

/// Decodes the weights of `params` and chooses the arithmetic; k is 3 or 5.
ConvPlan planConv2d(const Conv2DParams& params);

/// Whether w (k x k) is an outer product of two integer vectors; fills
/// column and row when it is. The all-zero kernel counts as one.
bool factorRankOne(const int32_t* w, int k, int32_t* column, int32_t* row);

}  // namespace kesh::kernels

#endif  // KESH_EMULATOR_KERNELS_CONV2D_PLAN_H_
