// Exact integer helpers shared by the kernels: saturation to a narrower type
// and the rounding shift. Stateless; safe from any thread.
#ifndef KESH_EMULATOR_KERNELS_INT_MATH_H_
#define KESH_EMULATOR_KERNELS_INT_MATH_H_

#include <cstdint>
#include <limits>

namespace kesh::kernels {

/// Clamps `v` to the range of T and converts it (exact for every input).
template <typename T, typename Wide>
inline T saturate(Wide v) {
  constexpr Wide lo = static_cast<Wide>(std::numeric_limits<T>::min());
  constexpr Wide hi = static_cast<Wide>(std::numeric_limits<T>::max());
  return static_cast<T>(v < lo ? lo : (v > hi ? hi : v));
}

/// Rounds `v / 2^shift` half up: `(v + 2^(shift-1)) >> shift`, or `v` when
/// shift is 0. The caller keeps `v + 2^(shift-1)` inside Wide.
template <typename Wide>
inline Wide roundingShift(Wide v, uint32_t shift) {
  if (shift == 0) return v;
  return (v + (Wide{1} << (shift - 1))) >> shift;
}

}  // namespace kesh::kernels

#endif  // KESH_EMULATOR_KERNELS_INT_MATH_H_
