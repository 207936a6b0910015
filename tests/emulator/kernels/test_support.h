// Helpers of the kernel tests: deterministic random data and the exact
// integer steps the references are written with. Not thread-safe: each test
// owns its generator.
#ifndef KESH_TESTS_EMULATOR_KERNELS_TEST_SUPPORT_H_
#define KESH_TESTS_EMULATOR_KERNELS_TEST_SUPPORT_H_

#include <cstdint>
#include <random>
#include <vector>

namespace kesh::kernels::testing {

inline std::vector<uint8_t> randomBytes(std::mt19937& rng, size_t count) {
  std::vector<uint8_t> bytes(count);
  for (uint8_t& b : bytes) b = static_cast<uint8_t>(rng());
  return bytes;
}

inline int64_t randomIn(std::mt19937& rng, int64_t lo, int64_t hi) {
  return std::uniform_int_distribution<int64_t>(lo, hi)(rng);
}

inline int64_t clampTo(int64_t v, int64_t lo, int64_t hi) { return v < lo ? lo : (v > hi ? hi : v); }

// v / 2^s rounded down, by division rather than by shifting.
inline int64_t floorDivPow2(int64_t v, unsigned s) {
  const int64_t d = int64_t{1} << s;
  return v / d - ((v % d != 0 && v < 0) ? 1 : 0);
}

// The rounding shift: (v + 2^(s-1)) / 2^s rounded down, or v when s is 0.
inline int64_t roundShift(int64_t v, unsigned s) { return s == 0 ? v : floorDivPow2(v + (int64_t{1} << (s - 1)), s); }

}  // namespace kesh::kernels::testing

#endif  // KESH_TESTS_EMULATOR_KERNELS_TEST_SUPPORT_H_
