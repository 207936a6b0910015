// How each operation is spelled in pattern text: its keys, what kind of value
// each key takes and which parameters it fills. Immutable tables; safe from
// any thread.
#ifndef KESH_TOOLS_PATTERN_ASM_OP_SYNTAX_H_
#define KESH_TOOLS_PATTERN_ASM_OP_SYNTAX_H_

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "format/format_defs.h"

namespace kesh::pattern_text {

/// What a key's value is and how it is written.
enum class FieldKind {
  kBuffer,          ///< buffer and offset: two parameters
  kOptionalBuffer,  ///< a buffer or `none` (kNoBuffer, offset 0)
  kU32,             ///< unsigned decimal or hex
  kI32,             ///< signed; printed as signed decimal
  kUnaryFunc,       ///< name of a UnaryFunc
  kBinaryFunc,      ///< name of a BinaryFunc
  kDType,           ///< u8, i8, i16 or i32
};

/// One key of an operation's text.
struct Field {
  const char* key;
  FieldKind kind;
  int param;           ///< parameter the value goes to (the buffer reference for buffers)
  int offsetParam;     ///< parameter of the buffer's offset, or -1
  bool optional;       ///< may be left out; printed only when it differs from its default
  int defaultFrom;     ///< default copied from this parameter, or -1 for 0 (or `none`)
};

/// The text form of one opcode.
struct OpSyntax {
  format::Opcode opcode;
  const char* name;
  std::vector<Field> fields;  ///< in the order they are printed
};

/// The syntax of `opcode`, or nullptr for an unknown opcode.
const OpSyntax* findSyntax(format::Opcode opcode);
/// The syntax of the operation called `name` ("conv2d"), or nullptr.
const OpSyntax* findSyntax(const std::string& name);
/// The default value of an optional field, given the parameters read so far.
uint32_t fieldDefault(const Field& field, const std::array<uint32_t, format::kOpParamCount>& params);

}  // namespace kesh::pattern_text

#endif  // KESH_TOOLS_PATTERN_ASM_OP_SYNTAX_H_
