// One convolution output computed exactly in 64 bits, edges clamped: the
// border columns, planes narrower than a vector and sums too wide for 32-bit
// lanes. Stateless; safe from any thread.
#ifndef KESH_EMULATOR_KERNELS_CONV2D_PIXEL_H_
#define KESH_EMULATOR_KERNELS_CONV2D_PIXEL_H_

#include <cstddef>
#include <cstdint>

#include "kernels/conv2d_plan.h"

namespace kesh::kernels {

/// The output at column x of the row whose k source rows (already clamped
/// to the plane) are `rows`.
uint8_t convolvePixel(const ConvPlan& plan, const uint8_t* const* rows, size_t x, size_t width);

}  // namespace kesh::kernels

#endif  // KESH_EMULATOR_KERNELS_CONV2D_PIXEL_H_
