// The operations the generated cases use, spelled by parameter name, and the final
// encoding step of a generated pattern. Stateless; safe from any thread.
#ifndef KESH_TOOLS_GEN_CASES_PROGRAM_BUILDER_H_
#define KESH_TOOLS_GEN_CASES_PROGRAM_BUILDER_H_

#include <cstdint>
#include <vector>

#include "format/op_table.h"
#include "format/program.h"

namespace kesh::gencases {

// The format's vocabulary, as every case spells its program with it.
using format::BinaryFunc;
using format::DType;
using format::Program;
using format::UnaryFunc;

/// Buffer reference of the argument at table position `position`.
uint32_t argBuffer(uint32_t position);
/// Buffer reference of internal buffer `number`.
uint32_t internalBuffer(uint32_t number);
/// Buffer reference of the pattern's constant data.
uint32_t constBuffer();

/// A buffer and a byte offset into it.
using At = format::BufferAt;

/// `length` bytes at `dst` set to `value`.
format::Op fillOp(At dst, uint32_t length, uint8_t value);
/// `rows` rows of `width` bytes, each side with its own row stride.
format::Op copy2dOp(At dst, uint32_t dstStride, At src, uint32_t srcStride, uint32_t width, uint32_t rows);
/// Element-wise `func(src, imm)` over `count` elements of `dtype`.
format::Op unaryOp(format::UnaryFunc func, format::DType dtype, At dst, At src, uint32_t count, int32_t imm);
/// Element-wise `func(a, b)` over `count` elements of `dtype`.
format::Op binaryOp(format::BinaryFunc func, format::DType dtype, At dst, At a, At b, uint32_t count);
/// `dst[i] = table[src[i]]` over `count` bytes.
format::Op lutOp(At dst, At src, uint32_t count, At table);

/// Parameters of a convolution over a u8 plane.
struct Conv2dParams {
  At dst, src, kernel;
  uint32_t stride, width, height, rowBegin, rowEnd, k, shift;
  int32_t bias;
};
/// The conv2d operation of `params`.
format::Op conv2dOp(const Conv2dParams& params);

/// Parameters of a quantised int8 matrix product.
struct MatMulParams {
  At dst, a, b;
  At bias;  ///< bias.ref == kNoBuffer for none
  uint32_t m, k, n;
  int32_t multiplier;
  uint32_t shift;
  int32_t zeroPoint;
  format::DType outType;
};
/// The matmul operation of `params`.
format::Op matmulOp(const MatMulParams& params);

/// Encodes `program` padded to exactly `padTo` bytes, after checking that the
/// pattern reader accepts it; ends the process with a message otherwise.
std::vector<uint8_t> encodeChecked(const format::Program& program, uint32_t padTo, const char* what);

}  // namespace kesh::gencases

#endif  // KESH_TOOLS_GEN_CASES_PROGRAM_BUILDER_H_
