// Element-wise unary and binary operations on u8/i8/i16/i32 vectors whose
// elements are stored little-endian at any byte offset. Every result is
// computed exactly and saturated to the element type. Stateless; the caller
// owns every buffer. Safe from any thread on distinct destinations.
#ifndef KESH_EMULATOR_KERNELS_ELEMENTWISE_H_
#define KESH_EMULATOR_KERNELS_ELEMENTWISE_H_

#include <cstddef>
#include <cstdint>

#include "format/format_defs.h"

namespace kesh::kernels {

/// dst[i] = func(src[i], imm) for `count` elements of `dtype`; `dst` may equal
/// `src`. Returns false, writing nothing, for an unknown func or dtype.
bool unary(format::UnaryFunc func, format::DType dtype, uint8_t* dst, const uint8_t* src,
           size_t count, int32_t imm);

/// dst[i] = func(a[i], b[i]) for `count` elements of `dtype`; `dst` may equal
/// `a` or `b`. Returns false, writing nothing, for an unknown func or dtype.
bool binary(format::BinaryFunc func, format::DType dtype, uint8_t* dst, const uint8_t* a,
            const uint8_t* b, size_t count);

}  // namespace kesh::kernels

#endif  // KESH_EMULATOR_KERNELS_ELEMENTWISE_H_
