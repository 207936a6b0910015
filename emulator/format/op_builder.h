// Builds operations by parameter name, for code that writes patterns (the
// case generator, tests, benchmarks). Stateless; safe from any thread.
#ifndef KESH_EMULATOR_FORMAT_OP_BUILDER_H_
#define KESH_EMULATOR_FORMAT_OP_BUILDER_H_

#include <cstdint>
#include <initializer_list>

#include "format/op_table.h"

namespace kesh::format {

/// One parameter given by name: a number, a function, an element type or a
/// buffer (a bare reference means offset 0).
class NamedParam {
 public:
  /// An unsigned number, or a buffer reference at offset 0.
  NamedParam(const char* name, uint32_t value) : name_(name), value_(value) {}
  /// A signed number, stored as its bit pattern.
  NamedParam(const char* name, int32_t value) : name_(name), value_(static_cast<uint32_t>(value)) {}
  /// A buffer and an offset into it.
  NamedParam(const char* name, BufferAt at) : name_(name), value_(at.ref), offset_(at.offset), isBuffer_(true) {}
  /// A unary function.
  NamedParam(const char* name, UnaryFunc func) : NamedParam(name, ParamKind::kUnaryFunc, static_cast<uint32_t>(func)) {}
  /// A binary function.
  NamedParam(const char* name, BinaryFunc func)
      : NamedParam(name, ParamKind::kBinaryFunc, static_cast<uint32_t>(func)) {}
  /// An element type.
  NamedParam(const char* name, DType dtype) : NamedParam(name, ParamKind::kDType, static_cast<uint32_t>(dtype)) {}

  /// Stores the value into `op`'s words; ends the process when `row` has no
  /// such parameter or it takes another kind of value (a bug in the caller).
  void storeInto(const OpRow& row, Op* op) const;

 private:
  NamedParam(const char* name, ParamKind kind, uint32_t value) : name_(name), value_(value), enumKind_(kind) {}

  const char* name_;
  uint32_t value_;
  uint32_t offset_ = 0;
  bool isBuffer_ = false;
  ParamKind enumKind_ = ParamKind::kU32;  // kU32 for numbers and buffers
};

/// The operation `opcode` with the given parameters; the others are 0, an
/// optional buffer absent. Ends the process on an unknown opcode or name.
Op makeOp(Opcode opcode, std::initializer_list<NamedParam> params);

}  // namespace kesh::format

#endif  // KESH_EMULATOR_FORMAT_OP_BUILDER_H_
