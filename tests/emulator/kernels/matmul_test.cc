#include "kernels/matmul.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

#include "reference_ops.h"
#include "test_support.h"

namespace kesh::kernels {
namespace {

using format::DType;
using namespace testing;  // NOLINT: random data and the per-target fixture

struct Requant {
  int32_t multiplier;
  uint32_t shift;
  int32_t zeroPoint;
};

// The kernel against the reference; a guard byte follows the output.
void expectMatches(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b, const std::vector<uint8_t>* bias,
                   size_t M, size_t K, size_t N, Requant q, DType out) {
  std::vector<uint8_t> c(M * N + 1, 0xC3);
  std::vector<int32_t> biasValues(N);
  if (bias != nullptr) std::memcpy(biasValues.data(), bias->data(), 4 * N);  // little-endian host
  std::vector<uint8_t> expected = gencases::referenceMatMul(
      reinterpret_cast<const int8_t*>(a.data()), reinterpret_cast<const int8_t*>(b.data()),
      bias ? biasValues.data() : nullptr, static_cast<uint32_t>(M), static_cast<uint32_t>(K), static_cast<uint32_t>(N),
      q.multiplier, q.shift, q.zeroPoint, out == DType::kU8);
  expected.push_back(0xC3);
  ASSERT_TRUE(matmul({c.data(), a.data(), b.data(), bias ? bias->data() : nullptr, static_cast<uint32_t>(M),
                      static_cast<uint32_t>(K), static_cast<uint32_t>(N), q.multiplier, q.shift, q.zeroPoint, out}));
  ASSERT_EQ(c, expected) << M << "x" << K << "x" << N << " mult " << q.multiplier << " shift " << q.shift << " zp "
                         << q.zeroPoint << (bias ? " bias" : "") << (out == DType::kU8 ? " u8" : " i8");
}

class MatMulTest : public EveryTarget {};

TEST_P(MatMulTest, RandomOperandsMatchReferenceForEveryShapeAndRequantisation) {
  std::mt19937 rng(31);
  // Rows around the row blocks (1, 4, 8), columns around the panel widths
  // (8 to 32), odd K for the zero-padded last pair.
  const std::vector<std::array<size_t, 3>> shapes = {{1, 1, 1},   {4, 9, 1},   {5, 7, 7},    {2, 3, 8},
                                                     {7, 31, 17}, {9, 301, 33}, {13, 2, 64}, {8, 16, 65},
                                                     {12, 5, 31}, {3, 0, 5}};
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

TEST_P(MatMulTest, ExtremeOperandsAndLongSumsSaturateTheAccumulatorExactly) {
  // -128 * -128 in both halves of a pair is the one sum of two products that
  // leaves 16 bits; 127 * -128 the most negative.
  for (const auto& [x, y] : {std::pair<uint8_t, uint8_t>{0x80, 0x80}, {0x7F, 0x80}, {0x7F, 0x7F}}) {
    expectMatches(std::vector<uint8_t>(9 * 64, x), std::vector<uint8_t>(64 * 40, y), nullptr, 9, 64, 40, {1, 20, 0},
                  DType::kI8);
  }
  // Past 2^17 terms, -128 * -128 products overflow 32 bits; a second row of
  // alternating signs keeps its sum small. A bias of INT32_MIN pulls back.
  std::mt19937 rng(32);
  const size_t K = 140001;
  for (size_t N : {size_t{1}, size_t{3}, size_t{17}}) {
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

KESH_INSTANTIATE_FOR_EVERY_TARGET(MatMulTest);

}  // namespace
}  // namespace kesh::kernels
