#include "kernels/matmul.h"

#include <algorithm>
#include <vector>

#include "kernels/int_math.h"
#include "format/le_bytes.h"

namespace kesh::kernels {
namespace {

// A product of two i8 is at most 2^14 in magnitude, so 2^16 of them fit an
// int32 (2^30). Longer sums are carried into 64 bits one block at a time,
// which keeps the hot loops in 32-bit lanes and every sum exact.
constexpr size_t kBlockK = size_t{1} << 16;

// Below this many output columns a row of the i-k-j loop is too short to
// vectorise; dot products over a transposed B are faster there.
constexpr uint32_t kMinRowWidth = 8;

struct Requant {
  int32_t multiplier;
  uint32_t shift;
  int32_t zeroPoint;
};

template <typename Out>
Out requantise(int64_t sum, const Requant& q) {
  static_assert(sizeof(Out) == 1, "outputs are single bytes (u8 or i8)");
  const int64_t acc = saturate<int32_t>(sum);
  // |acc * multiplier| <= 2^62 and the rounding term adds at most 2^61.
  const int64_t scaled = roundingShift<int64_t>(acc * q.multiplier, q.shift);
  return saturate<Out>(scaled + q.zeroPoint);
}

int64_t biasAt(const uint8_t* bias, size_t j) {
  return bias == nullptr ? 0 : static_cast<int32_t>(format::loadLe32(bias + 4 * j));
}

int64_t dot(const int8_t* x, const int8_t* y, size_t length) {
  int64_t total = 0;
  for (size_t begin = 0; begin < length; begin += kBlockK) {
    const size_t end = std::min(length, begin + kBlockK);
    int32_t sum = 0;
    for (size_t i = begin; i < end; ++i) sum += x[i] * y[i];
    total += sum;
  }
  return total;
}

// Narrow outputs: C[m][j] = dot(A row m, B column j), with B's columns made
// contiguous first (a matrix-vector product needs no copy at all).
template <typename Out>
void narrowProduct(const MatMulParams& p, const Requant& q) {
  const size_t K = p.k;
  const size_t N = p.n;
  const int8_t* b = reinterpret_cast<const int8_t*>(p.b);
  std::vector<int8_t> columns;
  if (N > 1) {
    columns.resize(N * K);
    for (size_t kk = 0; kk < K; ++kk) {
      for (size_t j = 0; j < N; ++j) columns[j * K + kk] = b[kk * N + j];
    }
    b = columns.data();
  }
  const int8_t* a = reinterpret_cast<const int8_t*>(p.a);
  for (size_t i = 0; i < p.m; ++i) {
    for (size_t j = 0; j < N; ++j) {
      const int64_t sum = biasAt(p.bias, j) + dot(a + i * K, b + j * K, K);
      p.dst[i * N + j] = static_cast<uint8_t>(requantise<Out>(sum, q));
    }
  }
}

// acc[j] += a * row[j]: the streaming inner loop of the i-k-j order. An i8
// product always fits 16 bits; saying so lets the compiler multiply eight or
// more lanes at a time before widening.
void accumulateRow(int32_t* acc, int8_t a, const int8_t* row, size_t n) {
  for (size_t j = 0; j < n; ++j) acc[j] += static_cast<int16_t>(a * row[j]);
}

// Four rows of B per pass: one load and store of the accumulator serve four
// products. (Two products can already overflow 16 bits, so each is widened.)
void accumulateFourRows(int32_t* acc, const int8_t* a, const int8_t* rows, size_t n) {
  const int8_t a0 = a[0], a1 = a[1], a2 = a[2], a3 = a[3];
  const int8_t* r0 = rows;
  const int8_t* r1 = rows + n;
  const int8_t* r2 = rows + 2 * n;
  const int8_t* r3 = rows + 3 * n;
  for (size_t j = 0; j < n; ++j) {
    acc[j] += int32_t{static_cast<int16_t>(a0 * r0[j])} + static_cast<int16_t>(a1 * r1[j]) +
              static_cast<int16_t>(a2 * r2[j]) + static_cast<int16_t>(a3 * r3[j]);
  }
}

// acc[j] = sum over k in [begin, end) of aRow[k] * B[k][j].
void accumulateBlock(int32_t* acc, const int8_t* aRow, const int8_t* b, size_t begin, size_t end,
                     size_t n) {
  size_t kk = begin;
  for (; kk + 4 <= end; kk += 4) accumulateFourRows(acc, aRow + kk, b + kk * n, n);
  for (; kk < end; ++kk) accumulateRow(acc, aRow[kk], b + kk * n, n);
}

// Wide outputs: i-k-j order, so B is read row by row and C's row is built in
// an int32 accumulator without transposing anything.
template <typename Out>
void wideProduct(const MatMulParams& p, const Requant& q) {
  const size_t K = p.k;
  const size_t N = p.n;
  const int8_t* a = reinterpret_cast<const int8_t*>(p.a);
  const int8_t* b = reinterpret_cast<const int8_t*>(p.b);
  std::vector<int32_t> block(N);
  std::vector<int64_t> total(N);
  for (size_t i = 0; i < p.m; ++i) {
    for (size_t j = 0; j < N; ++j) total[j] = biasAt(p.bias, j);
    const int8_t* aRow = a + i * K;
    for (size_t begin = 0; begin < K; begin += kBlockK) {
      const size_t end = std::min(K, begin + kBlockK);
      std::fill(block.begin(), block.end(), 0);
      accumulateBlock(block.data(), aRow, b, begin, end, N);
      for (size_t j = 0; j < N; ++j) total[j] += block[j];
    }
    uint8_t* out = p.dst + i * N;
    for (size_t j = 0; j < N; ++j) out[j] = static_cast<uint8_t>(requantise<Out>(total[j], q));
  }
}

template <typename Out>
void product(const MatMulParams& p) {
  // Larger shifts are refused at load time; the clamp only keeps the
  // arithmetic defined.
  const Requant q{p.multiplier, std::min<uint32_t>(p.shift, 62), p.zeroPoint};
  if (p.n < kMinRowWidth) {
    narrowProduct<Out>(p, q);
  } else {
    wideProduct<Out>(p, q);
  }
}

}  // namespace

bool matmul(const MatMulParams& params) {
  switch (params.outType) {
    case format::DType::kU8: product<uint8_t>(params); return true;
    case format::DType::kI8: product<int8_t>(params); return true;
    case format::DType::kI16:
    case format::DType::kI32: break;
  }
  return false;
}

}  // namespace kesh::kernels
