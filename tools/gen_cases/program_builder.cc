#include "program_builder.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "format/reader.h"
#include "format/writer.h"

namespace kesh::gencases {
namespace {

using format::Op;
using format::Opcode;

Op makeOp(Opcode opcode, std::initializer_list<uint32_t> params) {
  Op op;
  op.opcode = opcode;
  size_t i = 0;
  for (uint32_t value : params) op.p[i++] = value;
  return op;
}

uint32_t bits(int32_t value) { return static_cast<uint32_t>(value); }

[[noreturn]] void die(const char* what, const std::string& why) {
  std::fprintf(stderr, "%s: %s\n", what, why.c_str());
  std::exit(1);
}

}  // namespace

uint32_t argBuffer(uint32_t position) { return format::bufferRef(format::Space::kArg, position); }
uint32_t internalBuffer(uint32_t number) { return format::bufferRef(format::Space::kInternal, number); }
uint32_t constBuffer() { return format::bufferRef(format::Space::kConst, 0); }

Op fillOp(At dst, uint32_t length, uint8_t value) {
  return makeOp(Opcode::kFill, {dst.buffer, dst.offset, length, value});
}

Op copy2dOp(At dst, uint32_t dstStride, At src, uint32_t srcStride, uint32_t width, uint32_t rows) {
  return makeOp(Opcode::kCopy2D, {dst.buffer, dst.offset, dstStride, src.buffer, src.offset, srcStride, width, rows});
}

Op unaryOp(format::UnaryFunc func, format::DType dtype, At dst, At src, uint32_t count, int32_t imm) {
  return makeOp(Opcode::kUnary, {static_cast<uint32_t>(func), static_cast<uint32_t>(dtype), dst.buffer, dst.offset,
                                 src.buffer, src.offset, count, bits(imm)});
}

Op binaryOp(format::BinaryFunc func, format::DType dtype, At dst, At a, At b, uint32_t count) {
  return makeOp(Opcode::kBinary, {static_cast<uint32_t>(func), static_cast<uint32_t>(dtype), dst.buffer, dst.offset,
                                  a.buffer, a.offset, b.buffer, b.offset, count});
}

Op lutOp(At dst, At src, uint32_t count, At table) {
  return makeOp(Opcode::kLut, {dst.buffer, dst.offset, src.buffer, src.offset, count, table.buffer, table.offset});
}

Op conv2dOp(const Conv2dParams& c) {
  return makeOp(Opcode::kConv2D, {c.dst.buffer, c.dst.offset, c.stride, c.src.buffer, c.src.offset, c.stride,
                                  c.width, c.height, c.rowBegin, c.rowEnd, c.kernel.buffer, c.kernel.offset, c.k,
                                  c.shift, bits(c.bias)});
}

Op matmulOp(const MatMulParams& m) {
  return makeOp(Opcode::kMatMul, {m.dst.buffer, m.dst.offset, m.a.buffer, m.a.offset, m.b.buffer, m.b.offset,
                                  m.bias.buffer, m.bias.offset, m.m, m.k, m.n, bits(m.multiplier), m.shift,
                                  bits(m.zeroPoint), static_cast<uint32_t>(m.outType)});
}

std::vector<uint8_t> encodeChecked(const format::Program& program, uint32_t padTo, const char* what) {
  std::vector<uint8_t> binary = format::encodePattern(program, padTo);
  if (binary.size() != padTo) die(what, "the program does not fit in " + std::to_string(padTo) + " bytes");
  format::Program decoded;
  std::string error;
  if (!format::decodePattern(binary.data(), binary.size(), &decoded, &error)) die(what, error);
  if (!(decoded == program)) die(what, "the decoded program differs from the one encoded");
  return binary;
}

}  // namespace kesh::gencases
