// Byte-range fill and copies. Callers pass ranges that lie inside their
// buffers. Stateless; the caller owns every buffer. Safe from any thread on
// distinct destinations.
#ifndef KESH_EMULATOR_KERNELS_FILL_COPY_H_
#define KESH_EMULATOR_KERNELS_FILL_COPY_H_

#include <cstddef>
#include <cstdint>

namespace kesh::kernels {

/// Sets the `length` bytes at `dst` to `value`.
void fill(uint8_t* dst, size_t length, uint8_t value);

/// Copies `length` bytes from `src` to `dst`; the two ranges may overlap.
void copy(uint8_t* dst, const uint8_t* src, size_t length);

/// Copies `rows` rows of `width` bytes; row r goes from `src + r*srcStride`
/// to `dst + r*dstStride`. Bytes between rows are left untouched.
void copy2d(uint8_t* dst, size_t dstStride, const uint8_t* src, size_t srcStride, size_t width,
            size_t rows);

}  // namespace kesh::kernels

#endif  // KESH_EMULATOR_KERNELS_FILL_COPY_H_
