// 2-D convolution of a u8 plane with a 3x3 or 5x5 kernel of i16 weights: edge
// clamp, bias, rounding shift, saturation to u8. Stateless; the caller owns
// every buffer. Safe from any thread on distinct destinations.
#ifndef KESH_EMULATOR_KERNELS_CONV2D_H_
#define KESH_EMULATOR_KERNELS_CONV2D_H_

#include <cstddef>
#include <cstdint>

namespace kesh::kernels {

/// Where a convolution reads and writes, and its kernel. The source plane
/// and the destination rows must not overlap.
struct Conv2DParams {
  uint8_t* dst = nullptr;           ///< output row y starts at dst + y*dstStride
  size_t dstStride = 0;             ///< bytes between output rows
  const uint8_t* src = nullptr;     ///< plane row y starts at src + y*srcStride
  size_t srcStride = 0;             ///< bytes between plane rows
  uint32_t width = 0;               ///< plane width in pixels
  uint32_t height = 0;              ///< plane height in rows
  uint32_t rowBegin = 0;            ///< first output row written
  uint32_t rowEnd = 0;              ///< one past the last output row written
  const uint8_t* weights = nullptr; ///< k*k little-endian i16, row-major
  uint32_t k = 3;                   ///< kernel size: 3 or 5
  uint32_t shift = 0;               ///< rounding shift, 0..31
  int32_t bias = 0;                 ///< added to every sum before the shift
};

/// Writes rows [rowBegin, rowEnd) of the convolution, x in [0, width).
/// Returns false, writing nothing, when k is neither 3 nor 5.
bool conv2d(const Conv2DParams& params);

}  // namespace kesh::kernels

#endif  // KESH_EMULATOR_KERNELS_CONV2D_H_
