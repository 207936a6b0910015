#include "kernels/lut.h"

#include <cstring>

namespace kesh::kernels {

void lut(uint8_t* dst, const uint8_t* src, size_t count, const uint8_t* table) {
  // A private copy tells the compiler that stores to dst cannot change the
  // table, so entries need not be reloaded after every store.
  uint8_t local[256];
  std::memcpy(local, table, sizeof local);
  for (size_t i = 0; i < count; ++i) dst[i] = local[src[i]];
}

}  // namespace kesh::kernels
