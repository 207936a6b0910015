#include "kernels/fill_copy.h"

#include <cstring>

namespace kesh::kernels {

void fill(uint8_t* dst, size_t length, uint8_t value) {
  if (length != 0) std::memset(dst, value, length);
}

void copy(uint8_t* dst, const uint8_t* src, size_t length) {
  if (length != 0) std::memmove(dst, src, length);
}

void copy2d(uint8_t* dst, size_t dstStride, const uint8_t* src, size_t srcStride, size_t width,
            size_t rows) {
  if (width == 0) return;
  // Overlapping planes are refused at load time; memmove keeps a row that
  // overlaps itself well defined all the same.
  for (size_t r = 0; r < rows; ++r) {
    std::memmove(dst + r * dstStride, src + r * srcStride, width);
  }
}

}  // namespace kesh::kernels
