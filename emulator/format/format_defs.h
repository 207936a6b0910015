// Binary layout of a KESH host pattern: the constants every reader and
// writer of the format shares. docs/pattern_format.md is the prose version.
//
// All integers are little-endian. A pattern is laid out as:
//   header (32 bytes)
//   argument table   (arg_count entries of 48 bytes)
//   internal table   (internal_count entries of 4 bytes: buffer size)
//   program          (op_count entries of 64 bytes)
//   constant data    (const_size bytes)
//   padding          (any bytes, up to total_size)
#ifndef KESH_EMULATOR_FORMAT_FORMAT_DEFS_H_
#define KESH_EMULATOR_FORMAT_FORMAT_DEFS_H_

#include <cstdint>

namespace kesh::format {

inline constexpr char kMagic[4] = {'K', 'P', 'A', 'T'};
inline constexpr uint16_t kVersion = 1;

// Header field offsets.
inline constexpr uint32_t kHeaderSize = 32;
inline constexpr uint32_t kOffMagic = 0;          // char[4] "KPAT"
inline constexpr uint32_t kOffVersion = 4;        // u16, must be kVersion
inline constexpr uint32_t kOffHeaderSize = 6;     // u16, must be kHeaderSize
inline constexpr uint32_t kOffTotalSize = 8;      // u32, equals the binary's size
inline constexpr uint32_t kOffArgCount = 12;      // u32
inline constexpr uint32_t kOffInternalCount = 16; // u32
inline constexpr uint32_t kOffOpCount = 20;       // u32
inline constexpr uint32_t kOffConstSize = 24;     // u32
inline constexpr uint32_t kOffReserved = 28;      // u32, must be 0

// Argument entry: u32 index, u32 size, u32 flags, char name[36].
// The name is 1..35 bytes of printable ASCII other than ';', NUL-terminated,
// and the bytes after the terminator are zero.
inline constexpr uint32_t kArgEntrySize = 48;
inline constexpr uint32_t kArgNameField = 36;
inline constexpr uint32_t kArgFlagNoAlloc = 1u;  // the only defined flag bit

// Internal buffer entry: u32 size in bytes.
inline constexpr uint32_t kInternalEntrySize = 4;

// Operation entry: u32 opcode, then 15 u32 parameters p0..p14.
// Parameters an operation does not use must be zero.
inline constexpr uint32_t kOpEntrySize = 64;
inline constexpr uint32_t kOpParamCount = 15;

// Limits enforced by the reader.
inline constexpr uint32_t kMaxArgs = 256;
inline constexpr uint32_t kMaxInternals = 64;
inline constexpr uint32_t kMaxOps = 65536;
inline constexpr uint32_t kMaxBufferSize = 1u << 28;    // per argument or internal buffer
inline constexpr uint32_t kMaxInternalTotal = 1u << 28; // all internal buffers together
inline constexpr uint32_t kMaxConstSize = 1u << 28;     // constant data
inline constexpr uint32_t kMaxMatMulK = 1u << 20;      // inner dimension of matmul

// A buffer reference (u32): space in the top 8 bits, number in the low 24.
//   space 0: argument, number = position in the argument table (not its index)
//   space 1: internal buffer, number = position in the internal table
//   space 2: constant data, number must be 0 (read-only)
// kNoBuffer (0xFFFFFFFF) marks an optional operand that is absent.
enum class Space : uint32_t { kArg = 0, kInternal = 1, kConst = 2 };
inline constexpr uint32_t kNoBuffer = 0xFFFFFFFFu;
inline constexpr uint32_t kSpaceShift = 24;
inline constexpr uint32_t kNumberMask = (1u << kSpaceShift) - 1;

/// The reference to buffer `number` of `space`.
constexpr uint32_t bufferRef(Space space, uint32_t number) {
  return (static_cast<uint32_t>(space) << kSpaceShift) | (number & kNumberMask);
}
/// The space of reference `ref`, as encoded (it may name no known space).
constexpr uint32_t refSpace(uint32_t ref) { return ref >> kSpaceShift; }
/// The buffer number of reference `ref` within its space.
constexpr uint32_t refNumber(uint32_t ref) { return ref & kNumberMask; }
/// True when `ref` names buffer space `space`.
constexpr bool inSpace(uint32_t ref, Space space) { return refSpace(ref) == static_cast<uint32_t>(space); }

// Element types of element-wise operations.
enum class DType : uint32_t { kU8 = 0, kI8 = 1, kI16 = 2, kI32 = 3 };

/// Bytes per element of element type `dtype`, or 0 for an unknown type.
constexpr uint32_t elementSize(uint32_t dtype) {
  switch (static_cast<DType>(dtype)) {
    case DType::kU8:
    case DType::kI8: return 1;
    case DType::kI16: return 2;
    case DType::kI32: return 4;
  }
  return 0;
}

// Opcodes. Their parameters, in order, are listed in op_table.h.
enum class Opcode : uint32_t {
  kFill = 0x01,    // byte fill
  kCopy = 0x02,    // byte copy; overlap-safe
  kCopy2D = 0x03,  // rows of bytes, each side with its own stride
  kUnary = 0x10,   // element-wise func(src, imm)
  kBinary = 0x11,  // element-wise func(a, b)
  kLut = 0x20,     // dst[i] = table[src[i]] with a 256-byte table
  // 2-D convolution of a u8 plane with a k x k kernel of little-endian i16
  // weights (row-major), edge clamp, rounding shift, saturation to u8.
  kConv2D = 0x30,
  // int8 matrix product C[M][N] = requant(bias[n] + sum_k A[m][k] * B[k][n]);
  // a matrix-vector product is N = 1.
  kMatMul = 0x40,
};

enum class UnaryFunc : uint32_t {
  kNeg = 0, kAbs = 1, kNot = 2, kShlI = 3, kShrI = 4, kAddI = 5, kMulI = 6, kMinI = 7, kMaxI = 8,
};

enum class BinaryFunc : uint32_t {
  kAdd = 0, kSub = 1, kMul = 2, kMin = 3, kMax = 4, kAnd = 5, kOr = 6, kXor = 7, kAbsDiff = 8, kAvg = 9,
};

}  // namespace kesh::format

#endif  // KESH_EMULATOR_FORMAT_FORMAT_DEFS_H_
