#include "format/names.h"

#include <iterator>

#include "format/format_defs.h"

namespace kesh::format {
namespace {

template <size_t N>
const char* lookup(const char* const (&table)[N], uint32_t value) {
  return value < N ? table[value] : nullptr;
}

constexpr const char* kUnaryNames[] = {"neg", "abs", "not", "shli", "shri", "addi", "muli", "mini", "maxi"};
constexpr const char* kBinaryNames[] = {"add", "sub", "mul", "min", "max", "and", "or", "xor", "absdiff", "avg"};
constexpr const char* kDTypeNames[] = {"u8", "i8", "i16", "i32"};
constexpr uint32_t kDTypeSizes[] = {1, 1, 2, 4};

}  // namespace

const char* opcodeName(uint32_t value) {
  switch (static_cast<Opcode>(value)) {
    case Opcode::kFill: return "fill";
    case Opcode::kCopy: return "copy";
    case Opcode::kCopy2D: return "copy2d";
    case Opcode::kUnary: return "unary";
    case Opcode::kBinary: return "binary";
    case Opcode::kLut: return "lut";
    case Opcode::kConv2D: return "conv2d";
    case Opcode::kMatMul: return "matmul";
  }
  return nullptr;
}

const char* unaryFuncName(uint32_t value) { return lookup(kUnaryNames, value); }
const char* binaryFuncName(uint32_t value) { return lookup(kBinaryNames, value); }
const char* dtypeName(uint32_t value) { return lookup(kDTypeNames, value); }
uint32_t dtypeSize(uint32_t value) { return value < std::size(kDTypeSizes) ? kDTypeSizes[value] : 0; }

}  // namespace kesh::format
