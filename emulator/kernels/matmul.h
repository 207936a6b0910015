// int8 matrix product with i32 accumulation and requantisation to u8 or i8.
// Stateless; the caller owns every buffer. Safe from any thread on distinct
// destinations.
#ifndef KESH_EMULATOR_KERNELS_MATMUL_H_
#define KESH_EMULATOR_KERNELS_MATMUL_H_

#include <cstdint>

#include "format/format_defs.h"

namespace kesh::kernels {

/// Operands of C = requant(bias + A x B). All matrices are dense and
/// row-major; the output must not overlap any input.
struct MatMulParams {
  uint8_t* dst = nullptr;        ///< M x N elements of outType
  const uint8_t* a = nullptr;    ///< M x K i8
  const uint8_t* b = nullptr;    ///< K x N i8
  const uint8_t* bias = nullptr; ///< N little-endian i32, or null for zero
  uint32_t m = 0;                ///< rows of A and C
  uint32_t k = 0;                ///< columns of A, rows of B
  uint32_t n = 0;                ///< columns of B and C
  int32_t multiplier = 1;        ///< requantisation multiplier
  uint32_t shift = 0;            ///< rounding shift after the multiplier, 0..62
  int32_t zeroPoint = 0;         ///< added after the shift
  format::DType outType = format::DType::kI8;  ///< kU8 or kI8
};

/// Computes every element of C. Returns false, writing nothing, when outType
/// is neither kU8 nor kI8.
bool matmul(const MatMulParams& params);

}  // namespace kesh::kernels

#endif  // KESH_EMULATOR_KERNELS_MATMUL_H_
