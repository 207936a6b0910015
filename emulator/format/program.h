// The in-memory form of a validated pattern: what the reader produces, what
// the writer encodes and what the executor runs. Immutable once built;
// shared between threads through shared_ptr<const Program>.
#ifndef KESH_EMULATOR_FORMAT_PROGRAM_H_
#define KESH_EMULATOR_FORMAT_PROGRAM_H_

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "format/format_defs.h"

namespace kesh::format {

/// One argument of a pattern, in argument-table order.
struct ArgSpec {
  uint32_t index = 0;    ///< index used when memory is bound to the argument
  uint32_t size = 0;     ///< buffer size in bytes
  bool noAlloc = false;  ///< the library provides the buffer itself
  std::string name;      ///< 1..35 printable characters, no ';'
};

/// One operation: an opcode and its 15 parameters (see format_defs.h).
struct Op {
  Opcode opcode = Opcode::kFill;
  std::array<uint32_t, kOpParamCount> p{};
};

/// A whole pattern. Every operation of a Program that came from the reader
/// stays inside its buffers; the executor relies on that.
struct Program {
  std::vector<ArgSpec> args;
  std::vector<uint32_t> internalSizes;
  std::vector<Op> ops;
  std::vector<uint8_t> constData;
};

/// Field-by-field equality, for tests and round-trip checks.
inline bool operator==(const ArgSpec& a, const ArgSpec& b) {
  return a.index == b.index && a.size == b.size && a.noAlloc == b.noAlloc && a.name == b.name;
}
/// Same opcode and the same 15 parameters.
inline bool operator==(const Op& a, const Op& b) { return a.opcode == b.opcode && a.p == b.p; }
/// Same tables, operations and constant data.
inline bool operator==(const Program& a, const Program& b) {
  return a.args == b.args && a.internalSizes == b.internalSizes && a.ops == b.ops && a.constData == b.constData;
}

}  // namespace kesh::format

#endif  // KESH_EMULATOR_FORMAT_PROGRAM_H_
