// Straightforward reference arithmetic of the pattern operations, written
// from their definitions and kept apart from the host library's kernels, so
// that a kernel fault shows up as a failing case instead of a wrong golden.
// The case generator, the kernel tests and the benchmarks all use this one
// copy. Stateless; safe from any thread.
#ifndef KESH_TOOLS_GEN_CASES_REFERENCE_OPS_H_
#define KESH_TOOLS_GEN_CASES_REFERENCE_OPS_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "format/format_defs.h"

namespace kesh::gencases {

/// Clamps `value` to [lo, hi].
int64_t saturate(int64_t value, int64_t lo, int64_t hi);

/// `value` shifted right by `shift` with rounding half up; unchanged for 0.
int64_t roundingShift(int64_t value, uint32_t shift);

/// Requantisation of one matmul accumulator to u8 (outU8) or i8.
uint8_t requantize(int64_t acc, int32_t multiplier, uint32_t shift, int32_t zeroPoint, bool outU8);

/// A row-major i8 matrix product with optional i32 bias and requantisation;
/// returns the M x N result bytes.
std::vector<uint8_t> referenceMatMul(const int8_t* a, const int8_t* b, const int32_t* bias, uint32_t m,
                                     uint32_t k, uint32_t n, int32_t multiplier, uint32_t shift,
                                     int32_t zeroPoint, bool outU8);

/// The largest |accumulator| of a product, for choosing its requantisation.
int64_t maxAbsAccumulator(const int8_t* a, const int8_t* b, const int32_t* bias, uint32_t m, uint32_t k,
                          uint32_t n);

/// A k x k convolution of a u8 plane (edges clamped, rounding shift,
/// saturated to u8); returns the whole filtered plane.
std::vector<uint8_t> referenceConv2d(const std::vector<uint8_t>& src, uint32_t width, uint32_t height,
                                     const std::vector<int16_t>& kernel, uint32_t k, uint32_t shift, int32_t bias);

/// |value|, in 64 bits on every platform.
inline int64_t absolute(int64_t value) { return value < 0 ? -value : value; }

/// Rounded mean of two u8 values.
inline uint8_t averageU8(uint8_t a, uint8_t b) { return static_cast<uint8_t>((a + b + 1) >> 1); }

/// The range and width of an element type.
struct ElementRange {
  int64_t lo;     ///< smallest value
  int64_t hi;     ///< largest value
  unsigned bits;  ///< storage width
};

/// The range of `type`.
ElementRange elementRange(format::DType type);

/// The element of `range` whose two's-complement pattern is the low bits of v.
int64_t wrapTo(uint64_t v, const ElementRange& range);

/// One element of a unary operation on an element x of `type`; shift
/// immediates are 0..31.
int64_t referenceUnary(format::UnaryFunc func, format::DType type, int64_t x, int64_t imm);

/// One element of a binary operation on elements a and b of `type`.
int64_t referenceBinary(format::BinaryFunc func, format::DType type, int64_t a, int64_t b);

}  // namespace kesh::gencases

#endif  // KESH_TOOLS_GEN_CASES_REFERENCE_OPS_H_
