#include "kernels/matmul.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "test_support.h"

namespace kesh::kernels {
namespace {

using format::DType;
using namespace testing;  // NOLINT: the reference's integer steps

struct Requant {
  int32_t multiplier;
  uint32_t shift;
  int32_t zeroPoint;
};

int64_t i8(uint8_t b) { return static_cast<int8_t>(b); }

// The kernel against the definition, one element at a time in 64 bits; a
// guard byte follows the output.
void expectMatches(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b, const std::vector<uint8_t>* bias,
                   size_t M, size_t K, size_t N, Requant q, DType out) {
  std::vector<uint8_t> c(M * N + 1, 0xC3), expected = c;
  const int64_t lo = out == DType::kU8 ? 0 : -128, hi = lo + 255;
  for (size_t m = 0; m < M; ++m) {
    for (size_t n = 0; n < N; ++n) {
      int64_t acc = 0;
      for (size_t k = 0; k < 4 && bias; ++k) acc |= int64_t{(*bias)[4 * n + k]} << (8 * k);
      acc = static_cast<int32_t>(static_cast<uint32_t>(acc));
      for (size_t k = 0; k < K; ++k) acc += i8(a[m * K + k]) * i8(b[k * N + n]);
      const int64_t r = roundShift(clampTo(acc, INT32_MIN, INT32_MAX) * q.multiplier, q.shift) + q.zeroPoint;
      expected[m * N + n] = static_cast<uint8_t>(clampTo(r, lo, hi));
    }
  }
  ASSERT_TRUE(matmul({c.data(), a.data(), b.data(), bias ? bias->data() : nullptr, static_cast<uint32_t>(M),
                      static_cast<uint32_t>(K), static_cast<uint32_t>(N), q.multiplier, q.shift, q.zeroPoint, out}));
  ASSERT_EQ(c, expected) << M << "x" << K << "x" << N << " mult " << q.multiplier << " shift " << q.shift << " zp "
                         << q.zeroPoint << (bias ? " bias" : "") << (out == DType::kU8 ? " u8" : " i8");
}

TEST(MatMulTest, RandomOperandsMatchReferenceForEveryShapeAndRequantisation) {
  std::mt19937 rng(31);
  // Narrow outputs (N < 8) and wide ones take different paths; odd K leaves
  // remainders after any unrolling.
  const std::vector<std::array<size_t, 3>> shapes = {{1, 1, 1}, {4, 9, 1}, {5, 7, 7}, {2, 3, 8}, {7, 31, 17}, {9, 301, 33}};
  const std::vector<Requant> requants = {{1, 0, 0}, {1 << 30, 38, -3}, {INT32_MAX, 62, 0}, {INT32_MIN, 62, -128},
                                         {INT32_MIN, 31, 127}, {1518500250, 40, 17}};
  for (const auto& [M, K, N] : shapes) {
    const auto a = randomBytes(rng, M * K), b = randomBytes(rng, K * N), bias = randomBytes(rng, 4 * N);
    for (const Requant& q : requants) {
      for (DType out : {DType::kU8, DType::kI8}) {
        expectMatches(a, b, nullptr, M, K, N, q, out);
        expectMatches(a, b, &bias, M, K, N, q, out);
      }
    }
  }
}

TEST(MatMulTest, LongSumsSaturateTheAccumulatorExactly) {
  // Past 2^17 terms, -128 * -128 products overflow 32 bits; a second row of
  // alternating signs keeps its sum small. A bias of INT32_MIN pulls back.
  std::mt19937 rng(32);
  const size_t K = 140000;
  for (size_t N : {size_t{1}, size_t{3}, size_t{8}}) {
    std::vector<uint8_t> a(2 * K, 0x80), b(K * N, 0x80), minBias(4 * N, 0);
    for (size_t k = 1; k < K; k += 2) a[K + k] = 0x7F;
    for (size_t n = 0; n < N; ++n) minBias[4 * n + 3] = 0x80;
    const std::vector<uint8_t> bias = randomBytes(rng, 4 * N);
    for (const Requant& q : {Requant{1, 0, 0}, Requant{-1, 24, 5}}) {
      expectMatches(a, b, &bias, 2, K, N, q, DType::kU8);
      expectMatches(a, b, &minBias, 2, K, N, q, DType::kI8);
    }
  }
}

}  // namespace
}  // namespace kesh::kernels
