// Compiled once per SIMD target and called through kernels/simd_dispatch.h
// (the best target of this CPU on x86, NEON on 32-bit ARM).
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/conv2d.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "kernels/simd_dispatch.h"

#include <algorithm>
#include <vector>

#include "kernels/conv2d.h"
#include "kernels/conv2d_pixel.h"
#include "kernels/conv2d_plan.h"

HWY_BEFORE_NAMESPACE();
namespace kesh::kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using D16 = hn::ScalableTag<int16_t>;
using D32 = hn::ScalableTag<int32_t>;

// Calls body(x) for vector starts covering [begin, end), which must be at
// least `lanes` long; the last vector is moved back to end exactly at `end`,
// so a few outputs are computed twice rather than ever read out of range.
template <typename Body>
inline void coverRange(size_t begin, size_t end, size_t lanes, Body body) {
  for (size_t x = begin;; x = std::min(x + lanes, end - lanes)) {
    body(x);
    if (x + lanes >= end) break;
  }
}

// i32 to u8 with saturation through i16: the one-step demotion of some
// library versions wraps values in [32768, 65535] on AVX2.
inline hn::Vec<hn::Rebind<uint8_t, D32>> saturateToU8(hn::Vec<D32> v) {
  const hn::Rebind<int16_t, D32> d16;
  return hn::DemoteTo(hn::Rebind<uint8_t, D32>(), hn::DemoteTo(d16, v));
}

// Results of the 16-bit window: the sum starts at zero; shift the lane, add the
// shifted offset with int16 saturation (which keeps every u8 outcome), pack
// with saturation.
struct Finish16 {
  hn::Vec<D16> add, offset;
  int shift;
  explicit Finish16(const ConvPlan& plan)
      : add(hn::Set(D16(), static_cast<int16_t>(static_cast<uint16_t>(plan.add - plan.offset)))),
        offset(hn::Set(D16(), static_cast<int16_t>(plan.offset >> plan.shift))),
        shift(static_cast<int>(plan.shift)) {}
  hn::Vec<D16> start() const { return hn::Zero(D16()); }
  void store(hn::Vec<D16> sum, uint8_t* out) const {
    const hn::Rebind<uint8_t, D16> d8;
    const auto v = hn::SaturatedAdd(hn::ShiftRightSame(hn::Add(sum, add), shift), offset);
    hn::StoreU(hn::DemoteTo(d8, v), d8, out);
  }
};

// Results of the 32-bit window: the sum starts at the rounding addend; shift,
// pack with saturation.
struct Finish32 {
  hn::Vec<D32> add;
  int shift;
  explicit Finish32(const ConvPlan& plan)
      : add(hn::Set(D32(), static_cast<int32_t>(plan.add))), shift(static_cast<int>(plan.shift)) {}
  hn::Vec<D32> start() const { return add; }
  void store(hn::Vec<D32> sum, uint8_t* out) const {
    hn::StoreU(saturateToU8(hn::ShiftRightSame(sum, shift)), hn::Rebind<uint8_t, D32>(), out);
  }
};

// A row's interior, whose K x K window lies inside the image: products summed
// in the lanes of D, finished by Finish.
template <int K, class D, class Finish>
void directRow(uint8_t* out, const uint8_t* const* rows, size_t width, const ConvPlan& plan) {
  constexpr int R = K / 2;
  const D d;
  const hn::Rebind<uint8_t, D> d8;
  hn::Vec<D> w[K * K];
  for (int i = 0; i < K * K; ++i) w[i] = hn::Set(d, static_cast<hn::TFromD<D>>(plan.w[i]));
  const Finish finish(plan);
  coverRange(R, width - R, hn::Lanes(d), [&](size_t x) {
    auto sum = finish.start();
    for (int i = 0; i < K; ++i) {
      for (int j = 0; j < K; ++j) {
        const auto px = hn::PromoteTo(d, hn::LoadU(d8, rows[i] + x + j - R));
        sum = hn::Add(sum, hn::Mul(w[i * K + j], px));
      }
    }
    finish.store(sum, out + x);
  });
}

// Rank-1 weights: a vertical pass into `columnSums` (16-bit, padded by the
// radius on both sides with the edge values, which is the horizontal clamp),
// then a horizontal pass over it: 2k products per output instead of k*k.
template <int K>
void separableRow16(uint8_t* out, const uint8_t* const* rows, size_t width, const ConvPlan& plan,
                    int16_t* columnSums) {
  constexpr int R = K / 2;
  const D16 d16;
  const hn::Rebind<uint8_t, D16> d8;
  const size_t lanes = hn::Lanes(d16);
  hn::Vec<D16> u[K], v[K];
  for (int i = 0; i < K; ++i) {
    u[i] = hn::Set(d16, static_cast<int16_t>(plan.column[i]));
    v[i] = hn::Set(d16, static_cast<int16_t>(plan.row[i]));
  }
  int16_t* sums = columnSums + R;
  coverRange(0, width, lanes, [&](size_t x) {
    auto sum = hn::Zero(d16);
    for (int i = 0; i < K; ++i) sum = hn::Add(sum, hn::Mul(u[i], hn::PromoteTo(d16, hn::LoadU(d8, rows[i] + x))));
    hn::StoreU(sum, d16, sums + x);
  });
  for (int i = 1; i <= R; ++i) {
    sums[-i] = sums[0];
    sums[width - 1 + i] = sums[width - 1];
  }
  const Finish16 finish(plan);
  coverRange(0, width, lanes, [&](size_t x) {
    auto sum = finish.start();
    for (int j = 0; j < K; ++j) sum = hn::Add(sum, hn::Mul(v[j], hn::LoadU(d16, sums + x + j - R)));
    finish.store(sum, out + x);
  });
}

template <int K>
void convolveRowsK(const Conv2DParams& p, const ConvPlan& plan) {
  constexpr int R = K / 2;
  const size_t width = p.width;
  const size_t lanes16 = hn::Lanes(D16()), lanes32 = hn::Lanes(D32());
  const bool separable = plan.separable && width >= lanes16;
  const size_t lanes = plan.lanes == ConvLanes::k16 ? lanes16 : lanes32;
  const bool vectorInterior = plan.lanes != ConvLanes::k64 && width >= 2 * R + lanes;
  std::vector<int16_t> columnSums(separable ? width + 2 * R : 0);
  for (size_t y = p.rowBegin; y < p.rowEnd; ++y) {
    const uint8_t* rows[K];
    for (int i = 0; i < K; ++i) {
      const int64_t sy = std::clamp<int64_t>(static_cast<int64_t>(y) + i - R, 0, int64_t{p.height} - 1);
      rows[i] = p.src + static_cast<size_t>(sy) * p.srcStride;
    }
    uint8_t* out = p.dst + y * p.dstStride;
    if (separable) {
      separableRow16<K>(out, rows, width, plan, columnSums.data());
      continue;
    }
    if (!vectorInterior) {
      for (size_t x = 0; x < width; ++x) out[x] = convolvePixel(plan, rows, x, width);
      continue;
    }
    if (plan.lanes == ConvLanes::k16) {
      directRow<K, D16, Finish16>(out, rows, width, plan);
    } else {
      directRow<K, D32, Finish32>(out, rows, width, plan);
    }
    for (size_t x = 0; x < R; ++x) {
      out[x] = convolvePixel(plan, rows, x, width);
      out[width - 1 - x] = convolvePixel(plan, rows, width - 1 - x, width);
    }
  }
}

void ConvolveRows(const Conv2DParams& p, const ConvPlan& plan) {
  if (plan.k == 3) {
    convolveRowsK<3>(p, plan);
  } else {
    convolveRowsK<5>(p, plan);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace kesh::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kesh::kernels {

KESH_SIMD_EXPORT(ConvolveRows);

bool conv2d(const Conv2DParams& params) {
  if (params.k != 3 && params.k != 5) return false;
  if (params.width == 0 || params.height == 0 || params.rowBegin >= params.rowEnd) return true;
  KESH_SIMD_CALL(ConvolveRows)(params, planConv2d(params));
  return true;
}

}  // namespace kesh::kernels
#endif  // HWY_ONCE
