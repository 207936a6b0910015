#include "kernels/conv2d_pixel.h"

#include "kernels/int_math.h"

namespace kesh::kernels {

uint8_t convolvePixel(const ConvPlan& plan, const uint8_t* const* rows, size_t x, size_t width) {
  const int64_t r = plan.k / 2;
  int64_t sum = plan.add;
  for (int j = 0; j < plan.k; ++j) {
    int64_t col = static_cast<int64_t>(x) + j - r;
    col = col < 0 ? 0 : (col >= static_cast<int64_t>(width) ? static_cast<int64_t>(width) - 1 : col);
    for (int i = 0; i < plan.k; ++i) sum += int64_t{plan.w[i * plan.k + j]} * rows[i][col];
  }
  return saturate<uint8_t>(sum >> plan.shift);
}

}  // namespace kesh::kernels
