#include "program_builder.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "format/op_builder.h"
#include "format/reader.h"
#include "format/writer.h"

namespace kesh::gencases {
namespace {

using format::makeOp;
using format::Op;
using format::Opcode;

[[noreturn]] void die(const char* what, const std::string& why) {
  std::fprintf(stderr, "%s: %s\n", what, why.c_str());
  std::exit(1);
}

}  // namespace

uint32_t argBuffer(uint32_t position) { return format::bufferRef(format::Space::kArg, position); }
uint32_t internalBuffer(uint32_t number) { return format::bufferRef(format::Space::kInternal, number); }
uint32_t constBuffer() { return format::bufferRef(format::Space::kConst, 0); }

Op fillOp(At dst, uint32_t length, uint8_t value) {
  return makeOp(Opcode::kFill, {{"dst", dst}, {"length", length}, {"value", uint32_t{value}}});
}

Op copy2dOp(At dst, uint32_t dstStride, At src, uint32_t srcStride, uint32_t width, uint32_t rows) {
  return makeOp(Opcode::kCopy2D, {{"dst", dst}, {"dst_stride", dstStride}, {"src", src}, {"src_stride", srcStride},
                                  {"width", width}, {"rows", rows}});
}

Op unaryOp(format::UnaryFunc func, format::DType dtype, At dst, At src, uint32_t count, int32_t imm) {
  return makeOp(Opcode::kUnary,
                {{"func", func}, {"type", dtype}, {"dst", dst}, {"src", src}, {"count", count}, {"imm", imm}});
}

Op binaryOp(format::BinaryFunc func, format::DType dtype, At dst, At a, At b, uint32_t count) {
  return makeOp(Opcode::kBinary, {{"func", func}, {"type", dtype}, {"dst", dst}, {"a", a}, {"b", b}, {"count", count}});
}

Op lutOp(At dst, At src, uint32_t count, At table) {
  return makeOp(Opcode::kLut, {{"dst", dst}, {"src", src}, {"count", count}, {"table", table}});
}

Op conv2dOp(const Conv2dParams& c) {
  return makeOp(Opcode::kConv2D, {{"dst", c.dst}, {"dst_stride", c.stride}, {"src", c.src}, {"src_stride", c.stride},
                                  {"width", c.width}, {"height", c.height}, {"row_begin", c.rowBegin},
                                  {"row_end", c.rowEnd}, {"kernel", c.kernel}, {"k", c.k}, {"shift", c.shift},
                                  {"bias", c.bias}});
}

Op matmulOp(const MatMulParams& m) {
  return makeOp(Opcode::kMatMul, {{"dst", m.dst}, {"a", m.a}, {"b", m.b}, {"bias", m.bias}, {"m", m.m}, {"k", m.k},
                                  {"n", m.n}, {"multiplier", m.multiplier}, {"shift", m.shift},
                                  {"zero_point", m.zeroPoint}, {"out", m.outType}});
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
