// Little-endian loads and stores of integers at any byte address. Buffers
// hold elements at arbitrary byte offsets, so every access goes through
// memcpy: no alignment is assumed and the compiler still emits plain loads.
// Stateless; safe from any thread.
#ifndef KESH_EMULATOR_KERNELS_LE_BYTES_H_
#define KESH_EMULATOR_KERNELS_LE_BYTES_H_

#include <cstdint>
#include <cstring>

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error "The kernels read little-endian data with host loads; port le_bytes.h first."
#endif

namespace kesh::kernels {

/// Reads a T stored little-endian at `p`.
template <typename T>
inline T loadLe(const uint8_t* p) {
  T value;
  std::memcpy(&value, p, sizeof(T));
  return value;
}

/// Writes `value` little-endian at `p`.
template <typename T>
inline void storeLe(uint8_t* p, T value) {
  std::memcpy(p, &value, sizeof(T));
}

}  // namespace kesh::kernels

#endif  // KESH_EMULATOR_KERNELS_LE_BYTES_H_
