// The target-independent parts of the int8 matrix product: operands repacked
// for the micro-kernel, and the requantisation of finished sums. Stateless;
// the packed copies belong to the caller. Safe from any thread.
#ifndef KESH_EMULATOR_KERNELS_MATMUL_PACK_H_
#define KESH_EMULATOR_KERNELS_MATMUL_PACK_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "kernels/matmul.h"

namespace kesh::kernels {

/// Pairs of k summed per 32-bit block: 2^16 products of at most 2^14 each
/// stay within 2^30, so every lane is exact; longer sums are carried in 64
/// bits between blocks.
constexpr size_t kPairsPerBlock = size_t{1} << 15;

/// A and B of one product, laid out for pairwise 16-bit dot products.
struct PackedOperands {
  size_t pairsPerRow = 0;  ///< ceil(K / 2); an odd K gets a zero last term
  /// Row m, pair q: A[m][2q] in the low and A[m][2q+1] in the high 16 bits.
  std::vector<int32_t> a;
  /// Panels of `panelWidth` columns, zero-padded past N; within a panel,
  /// pair q, column c: B[2q][c], B[2q+1][c] as adjacent int16.
  std::vector<int16_t> b;
};

/// Packs the operands of `p` for panels of `panelWidth` columns.
PackedOperands packOperands(const MatMulParams& p, size_t panelWidth);

/// Writes C[row][col + c] for c < cols from the exact sums `sums[c]` (bias
/// not yet added): bias, saturation to i32, requantisation, saturation.
void requantiseRow(const MatMulParams& p, size_t row, size_t col, size_t cols, const int64_t* sums);

}  // namespace kesh::kernels

#endif  // KESH_EMULATOR_KERNELS_MATMUL_PACK_H_
