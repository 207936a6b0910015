// The 256-entry byte lookup. Stateless; the caller owns every buffer. Safe
// from any thread on distinct destinations.
#ifndef KESH_EMULATOR_KERNELS_LUT_H_
#define KESH_EMULATOR_KERNELS_LUT_H_

#include <cstddef>
#include <cstdint>

namespace kesh::kernels {

/// dst[i] = table[src[i]] for `count` bytes; `table` holds 256 bytes and
/// `dst` may equal `src`.
void lut(uint8_t* dst, const uint8_t* src, size_t count, const uint8_t* table);

}  // namespace kesh::kernels

#endif  // KESH_EMULATOR_KERNELS_LUT_H_
