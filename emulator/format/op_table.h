// The operation table: per opcode its mnemonic and its named parameters in
// encoding order, each with its kind and the parameter word it occupies. It
// is the one place that says where an operation keeps what; the validator,
// the executor, the text form and every builder of operations read it.
// Immutable constexpr data; safe from any thread.
//
// Readers resolve names at compile time, so a misspelled name does not build:
//   using P = OpParams<Opcode::kCopy>;
//   const P p(op);
//   uint32_t length = p.u32<P::at("length")>();
#ifndef KESH_EMULATOR_FORMAT_OP_TABLE_H_
#define KESH_EMULATOR_FORMAT_OP_TABLE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "format/format_defs.h"
#include "format/program.h"

namespace kesh::format {

/// What a parameter holds and how many words it takes.
enum class ParamKind : uint8_t {
  kBuffer,          ///< buffer reference, then byte offset: two words
  kOptionalBuffer,  ///< as kBuffer, or kNoBuffer (offset 0) when absent
  kU32,             ///< unsigned number
  kI32,             ///< signed number, stored as its bit pattern
  kUnaryFunc,       ///< a UnaryFunc
  kBinaryFunc,      ///< a BinaryFunc
  kDType,           ///< an element type
};

/// Whether pattern text may leave a parameter out.
enum class Presence : uint8_t { kRequired, kOptional };

/// One named parameter of an operation.
struct ParamDef {
  const char* name = "";                ///< lower-case key, unique within its operation
  ParamKind kind = ParamKind::kU32;     ///< what the word(s) hold
  Presence presence = Presence::kRequired;  ///< optional ones default as below
  const char* defaultFrom = nullptr;    ///< optional: copy this parameter's value; null: 0 (or no buffer)
  uint32_t position = 0;                ///< first word (p0..p14); derived from the order
};

/// True for the kinds that take a reference word and an offset word.
constexpr bool isBuffer(ParamKind kind) {
  return kind == ParamKind::kBuffer || kind == ParamKind::kOptionalBuffer;
}

/// The most named parameters a row can have.
inline constexpr size_t kMaxNamedParams = 12;

/// One row of the table.
struct OpRow {
  Opcode opcode = Opcode::kFill;                    ///< encoded value
  const char* mnemonic = "";                        ///< text name ("conv2d")
  size_t paramCount = 0;                            ///< named parameters in use
  std::array<ParamDef, kMaxNamedParams> params{};  ///< in encoding order
  uint32_t wordCount = 0;                           ///< words used; the rest must be 0
};

namespace op_rows {

/// A required buffer and its offset.
constexpr ParamDef buffer(const char* name) { return {name, ParamKind::kBuffer}; }
/// A buffer that may be absent (kNoBuffer).
constexpr ParamDef optionalBuffer(const char* name) {
  return {name, ParamKind::kOptionalBuffer, Presence::kOptional};
}
/// A required unsigned number.
constexpr ParamDef u32(const char* name) { return {name, ParamKind::kU32}; }
/// A required signed number.
constexpr ParamDef i32(const char* name) { return {name, ParamKind::kI32}; }
/// A required unary function.
constexpr ParamDef unaryFunc(const char* name) { return {name, ParamKind::kUnaryFunc}; }
/// A required binary function.
constexpr ParamDef binaryFunc(const char* name) { return {name, ParamKind::kBinaryFunc}; }
/// A required element type.
constexpr ParamDef dtype(const char* name) { return {name, ParamKind::kDType}; }
/// `param` made optional, defaulting to `defaultFrom`'s value or 0.
constexpr ParamDef optional(ParamDef param, const char* defaultFrom = nullptr) {
  param.presence = Presence::kOptional;
  param.defaultFrom = defaultFrom;
  return param;
}

/// The row of `opcode`, its parameters laid out one after the other (a
/// buffer takes two words).
template <size_t N>
constexpr OpRow row(Opcode opcode, const char* mnemonic, const ParamDef (&params)[N]) {
  static_assert(N <= kMaxNamedParams, "raise kMaxNamedParams");
  OpRow laidOut{opcode, mnemonic, N, {}, 0};
  for (size_t i = 0; i < N; ++i) {
    laidOut.params[i] = params[i];
    laidOut.params[i].position = laidOut.wordCount;
    laidOut.wordCount += isBuffer(params[i].kind) ? 2 : 1;
  }
  return laidOut;
}

}  // namespace op_rows

// Offsets are byte offsets into their buffer; counts are elements unless the
// operations' documentation says bytes. Adding an operation is one row here
// plus its kernel and its checks.
/// Every operation, one row each.
inline constexpr OpRow kOpTable[] = {
    op_rows::row(Opcode::kFill, "fill", {op_rows::buffer("dst"), op_rows::u32("length"), op_rows::u32("value")}),
    op_rows::row(Opcode::kCopy, "copy", {op_rows::buffer("dst"), op_rows::buffer("src"), op_rows::u32("length")}),
    op_rows::row(Opcode::kCopy2D, "copy2d",
                 {op_rows::buffer("dst"), op_rows::u32("dst_stride"), op_rows::buffer("src"),
                  op_rows::u32("src_stride"), op_rows::u32("width"), op_rows::u32("rows")}),
    op_rows::row(Opcode::kUnary, "unary",
                 {op_rows::unaryFunc("func"), op_rows::dtype("type"), op_rows::buffer("dst"), op_rows::buffer("src"),
                  op_rows::u32("count"), op_rows::optional(op_rows::i32("imm"))}),
    op_rows::row(Opcode::kBinary, "binary",
                 {op_rows::binaryFunc("func"), op_rows::dtype("type"), op_rows::buffer("dst"), op_rows::buffer("a"),
                  op_rows::buffer("b"), op_rows::u32("count")}),
    op_rows::row(Opcode::kLut, "lut",
                 {op_rows::buffer("dst"), op_rows::buffer("src"), op_rows::u32("count"), op_rows::buffer("table")}),
    op_rows::row(Opcode::kConv2D, "conv2d",
                 {op_rows::buffer("dst"), op_rows::u32("dst_stride"), op_rows::buffer("src"),
                  op_rows::u32("src_stride"), op_rows::u32("width"), op_rows::u32("height"),
                  op_rows::optional(op_rows::u32("row_begin")), op_rows::optional(op_rows::u32("row_end"), "height"),
                  op_rows::buffer("kernel"), op_rows::u32("k"), op_rows::u32("shift"),
                  op_rows::optional(op_rows::i32("bias"))}),
    op_rows::row(Opcode::kMatMul, "matmul",
                 {op_rows::buffer("dst"), op_rows::buffer("a"), op_rows::buffer("b"), op_rows::optionalBuffer("bias"),
                  op_rows::u32("m"), op_rows::u32("k"), op_rows::u32("n"), op_rows::i32("multiplier"),
                  op_rows::u32("shift"), op_rows::optional(op_rows::i32("zero_point")), op_rows::dtype("out")}),
};

/// The row of `opcode`, or nullptr for an unknown opcode.
constexpr const OpRow* findOp(Opcode opcode) {
  for (const OpRow& row : kOpTable) {
    if (row.opcode == opcode) return &row;
  }
  return nullptr;
}

/// The row whose mnemonic is `mnemonic`, or nullptr.
constexpr const OpRow* findOp(std::string_view mnemonic) {
  for (const OpRow& row : kOpTable) {
    if (mnemonic == row.mnemonic) return &row;
  }
  return nullptr;
}

/// The parameter called `name` of `row`, or nullptr.
constexpr const ParamDef* findParam(const OpRow& row, std::string_view name) {
  for (size_t i = 0; i < row.paramCount; ++i) {
    if (name == row.params[i].name) return &row.params[i];
  }
  return nullptr;
}

/// The value an optional parameter takes when pattern text leaves it out,
/// given the words filled so far.
constexpr uint32_t paramDefault(const OpRow& row, const ParamDef& param,
                                const std::array<uint32_t, kOpParamCount>& words) {
  if (param.kind == ParamKind::kOptionalBuffer) return kNoBuffer;
  const ParamDef* from = param.defaultFrom ? findParam(row, param.defaultFrom) : nullptr;
  return from ? words[from->position] : 0u;
}

/// Reached only while a name lookup is evaluated at compile time: calling a
/// function that is not constexpr stops the build there.
void unknownOperationOrParameter();

/// The table row of `opcode`; a build error for an opcode without a row.
constexpr OpRow rowOf(Opcode opcode) {
  // By value and without pointer tests, which some compilers (sanitizing
  // ones among them) do not evaluate at compile time.
  for (const OpRow& row : kOpTable) {
    if (row.opcode == opcode) return row;
  }
  unknownOperationOrParameter();
  return {};
}

/// The first word of parameter `name` of `opcode`; a build error for an
/// unknown name when evaluated at compile time.
constexpr uint32_t paramPosition(Opcode opcode, std::string_view name) {
  const OpRow row = rowOf(opcode);
  for (size_t i = 0; i < row.paramCount; ++i) {
    if (name == row.params[i].name) return row.params[i].position;
  }
  unknownOperationOrParameter();
  return kOpParamCount;
}

/// A buffer and a byte offset into it.
struct BufferAt {
  /// No buffer.
  constexpr BufferAt() = default;
  /// Byte `byteOffset` of `buffer`; a bare reference means its first byte.
  constexpr BufferAt(uint32_t buffer, uint32_t byteOffset = 0) : ref(buffer), offset(byteOffset) {}  // NOLINT: implicit

  uint32_t ref = kNoBuffer;  ///< buffer reference (see bufferRef)
  uint32_t offset = 0;       ///< byte offset
};

/// Named, typed, zero-cost read access to the parameters of one operation
/// whose opcode is `kOp`. Holds a reference to the operation's words.
template <Opcode kOp>
class OpParams {
 public:
  /// The table row of kOp.
  static constexpr OpRow kRow = rowOf(kOp);

  /// Index of parameter `name` in the row; use it as a template argument so
  /// that an unknown name is a build error.
  static constexpr size_t at(std::string_view name) {
    for (size_t i = 0; i < kRow.paramCount; ++i) {
      if (name == kRow.params[i].name) return i;
    }
    unknownOperationOrParameter();
    return kMaxNamedParams;
  }

  /// Reads `op`, whose opcode must be kOp.
  explicit OpParams(const Op& op) : words_(op.p) {}

  /// An unsigned number parameter.
  template <size_t kI>
  uint32_t u32() const {
    static_assert(kRow.params[kI].kind == ParamKind::kU32, "not an unsigned parameter");
    return word<kI>();
  }
  /// A signed number parameter.
  template <size_t kI>
  int32_t i32() const {
    static_assert(kRow.params[kI].kind == ParamKind::kI32, "not a signed parameter");
    return static_cast<int32_t>(word<kI>());
  }
  /// A buffer parameter (ref is kNoBuffer for an absent optional one).
  template <size_t kI>
  BufferAt buffer() const {
    static_assert(isBuffer(kRow.params[kI].kind), "not a buffer parameter");
    return {word<kI>(), words_[kRow.params[kI].position + 1]};
  }
  /// A function or element-type parameter, as encoded (it may be unknown).
  template <size_t kI>
  uint32_t code() const {
    constexpr ParamKind kind = kRow.params[kI].kind;
    static_assert(kind == ParamKind::kUnaryFunc || kind == ParamKind::kBinaryFunc || kind == ParamKind::kDType,
                  "not a function or element type parameter");
    return word<kI>();
  }

 private:
  template <size_t kI>
  uint32_t word() const {
    static_assert(kI < kRow.paramCount, "no such parameter");
    return words_[kRow.params[kI].position];
  }

  const std::array<uint32_t, kOpParamCount>& words_;
};

}  // namespace kesh::format

#endif  // KESH_EMULATOR_FORMAT_OP_TABLE_H_
