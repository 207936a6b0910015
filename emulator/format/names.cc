#include "format/names.h"

#include "format/op_table.h"

namespace kesh::format {
namespace {

template <size_t N>
const char* lookup(const char* const (&table)[N], uint32_t value) {
  return value < N ? table[value] : nullptr;
}

constexpr const char* kUnaryNames[] = {"neg", "abs", "not", "shli", "shri", "addi", "muli", "mini", "maxi"};
constexpr const char* kBinaryNames[] = {"add", "sub", "mul", "min", "max", "and", "or", "xor", "absdiff", "avg"};
constexpr const char* kDTypeNames[] = {"u8", "i8", "i16", "i32"};

}  // namespace

const char* opcodeName(uint32_t value) {
  const OpRow* row = findOp(static_cast<Opcode>(value));
  return row ? row->mnemonic : nullptr;
}

const char* unaryFuncName(uint32_t value) { return lookup(kUnaryNames, value); }
const char* binaryFuncName(uint32_t value) { return lookup(kBinaryNames, value); }
const char* dtypeName(uint32_t value) { return lookup(kDTypeNames, value); }

}  // namespace kesh::format
