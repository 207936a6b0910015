// Little-endian loads and stores of the pattern format, independent of the
// host's byte order and alignment. Stateless; safe from any thread.
#ifndef KESH_EMULATOR_FORMAT_LE_BYTES_H_
#define KESH_EMULATOR_FORMAT_LE_BYTES_H_

#include <cstdint>

namespace kesh::format {

/// Reads a little-endian u16 from two bytes at `p`.
inline uint16_t loadLe16(const uint8_t* p) {
  return static_cast<uint16_t>(p[0] | (p[1] << 8));
}

/// Reads a little-endian u32 from four bytes at `p`.
inline uint32_t loadLe32(const uint8_t* p) {
  return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
         (static_cast<uint32_t>(p[2]) << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

/// Writes `v` as a little-endian u16 into two bytes at `p`.
inline void storeLe16(uint8_t* p, uint16_t v) {
  p[0] = static_cast<uint8_t>(v);
  p[1] = static_cast<uint8_t>(v >> 8);
}

/// Writes `v` as a little-endian u32 into four bytes at `p`.
inline void storeLe32(uint8_t* p, uint32_t v) {
  for (int i = 0; i < 4; ++i) p[i] = static_cast<uint8_t>(v >> (8 * i));
}

}  // namespace kesh::format

#endif  // KESH_EMULATOR_FORMAT_LE_BYTES_H_
