// A small fixed-seed generator whose sequence is the same on every platform
// and standard library, so the generated case data never drift. Not
// thread-safe: one instance per user.
#ifndef KESH_TOOLS_GEN_CASES_XORSHIFT_H_
#define KESH_TOOLS_GEN_CASES_XORSHIFT_H_

#include <cstdint>

namespace kesh::gencases {

/// Marsaglia's xorshift64 with a nonzero seed.
class Xorshift64 {
 public:
  /// Starts the sequence at `seed` (0 is replaced by a fixed nonzero value).
  explicit Xorshift64(uint64_t seed) : state_(seed != 0 ? seed : 0x9E3779B97F4A7C15ull) {}

  /// Returns the next 32 random bits.
  uint32_t next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return static_cast<uint32_t>(state_ >> 32);
  }

  /// Returns a value in [lo, hi]; the slight modulo bias does not matter here.
  int32_t uniform(int32_t lo, int32_t hi) {
    const uint32_t span = static_cast<uint32_t>(hi - lo) + 1u;
    return lo + static_cast<int32_t>(next() % span);
  }

  /// Returns a bell-shaped value in [-4*halfWidth, 4*halfWidth]: the sum of
  /// four uniform draws, the way trained weights are spread.
  int32_t bell(int32_t halfWidth) {
    int32_t sum = 0;
    for (int i = 0; i < 4; ++i) sum += uniform(-halfWidth, halfWidth);
    return sum;
  }

 private:
  uint64_t state_;
};

}  // namespace kesh::gencases

#endif  // KESH_TOOLS_GEN_CASES_XORSHIFT_H_
