// Deterministic pseudo-random data shared by the benchmarks. Stateless.
#ifndef KESH_BENCH_RANDOM_BYTES_H_
#define KESH_BENCH_RANDOM_BYTES_H_

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace kesh::bench {

/// `count` bytes drawn from `seed`, each XORed with `mask` (so two masks give buffers differing everywhere).
inline std::vector<uint8_t> randomBytes(size_t count, uint32_t seed, uint8_t mask = 0) {
  std::mt19937 engine(seed);
  std::vector<uint8_t> bytes(count);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(engine() ^ mask);
  return bytes;
}

}  // namespace kesh::bench

#endif  // KESH_BENCH_RANDOM_BYTES_H_
