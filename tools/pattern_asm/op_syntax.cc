#include "pattern_asm/op_syntax.h"

#include <array>
#include <string>

namespace kesh::pattern_text {
namespace {

using format::Opcode;

Field buffer(const char* key, int param) { return {key, FieldKind::kBuffer, param, param + 1, false, -1}; }
Field number(const char* key, int param) { return {key, FieldKind::kU32, param, -1, false, -1}; }
Field signedNumber(const char* key, int param) { return {key, FieldKind::kI32, param, -1, false, -1}; }
Field kind(const char* key, FieldKind fieldKind, int param) { return {key, fieldKind, param, -1, false, -1}; }
Field optional(Field field, int defaultFrom = -1) {
  field.optional = true;
  field.defaultFrom = defaultFrom;
  return field;
}

const std::vector<OpSyntax>& allSyntax() {
  static const std::vector<OpSyntax> table = {
      {Opcode::kFill, "fill", {buffer("dst", 0), number("length", 2), number("value", 3)}},
      {Opcode::kCopy, "copy", {buffer("dst", 0), buffer("src", 2), number("length", 4)}},
      {Opcode::kCopy2D,
       "copy2d",
       {buffer("dst", 0), number("dst_stride", 2), buffer("src", 3), number("src_stride", 5), number("width", 6),
        number("rows", 7)}},
      {Opcode::kUnary,
       "unary",
       {kind("func", FieldKind::kUnaryFunc, 0), kind("type", FieldKind::kDType, 1), buffer("dst", 2),
        buffer("src", 4), number("count", 6), optional(signedNumber("imm", 7))}},
      {Opcode::kBinary,
       "binary",
       {kind("func", FieldKind::kBinaryFunc, 0), kind("type", FieldKind::kDType, 1), buffer("dst", 2),
        buffer("a", 4), buffer("b", 6), number("count", 8)}},
      {Opcode::kLut, "lut", {buffer("dst", 0), buffer("src", 2), number("count", 4), buffer("table", 5)}},
      {Opcode::kConv2D,
       "conv2d",
       {buffer("dst", 0), number("dst_stride", 2), buffer("src", 3), number("src_stride", 5), number("width", 6),
        number("height", 7), optional(number("row_begin", 8)), optional(number("row_end", 9), 7),
        buffer("kernel", 10), number("k", 12), number("shift", 13), optional(signedNumber("bias", 14))}},
      {Opcode::kMatMul,
       "matmul",
       {buffer("dst", 0), buffer("a", 2), buffer("b", 4),
        optional({"bias", FieldKind::kOptionalBuffer, 6, 7, false, -1}), number("m", 8), number("k", 9),
        number("n", 10), signedNumber("multiplier", 11), number("shift", 12),
        optional(signedNumber("zero_point", 13)), kind("out", FieldKind::kDType, 14)}},
  };
  return table;
}

}  // namespace

const OpSyntax* findSyntax(format::Opcode opcode) {
  for (const OpSyntax& syntax : allSyntax()) {
    if (syntax.opcode == opcode) return &syntax;
  }
  return nullptr;
}

const OpSyntax* findSyntax(const std::string& name) {
  for (const OpSyntax& syntax : allSyntax()) {
    if (name == syntax.name) return &syntax;
  }
  return nullptr;
}

uint32_t fieldDefault(const Field& field, const std::array<uint32_t, format::kOpParamCount>& params) {
  if (field.kind == FieldKind::kOptionalBuffer) return format::kNoBuffer;
  return field.defaultFrom >= 0 ? params[static_cast<size_t>(field.defaultFrom)] : 0u;
}

}  // namespace kesh::pattern_text
