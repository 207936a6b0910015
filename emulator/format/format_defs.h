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

// A buffer reference (u32): space in bits 31..24, number in bits 23..0.
//   space 0: argument, number = position in the argument table (not its index)
//   space 1: internal buffer, number = position in the internal table
//   space 2: constant data, number must be 0 (read-only)
// kNoBuffer (0xFFFFFFFF) marks an optional operand that is absent.
enum class Space : uint32_t { kArg = 0, kInternal = 1, kConst = 2 };
inline constexpr uint32_t kNoBuffer = 0xFFFFFFFFu;
constexpr uint32_t bufferRef(Space space, uint32_t number) {
  return (static_cast<uint32_t>(space) << 24) | (number & 0xFFFFFFu);
}

// Element types of element-wise operations.
enum class DType : uint32_t { kU8 = 0, kI8 = 1, kI16 = 2, kI32 = 3 };

// Opcodes and their parameters. Offsets are byte offsets into the buffer;
// counts are element counts unless stated otherwise.
enum class Opcode : uint32_t {
  // p0 dst, p1 dst_off, p2 length (bytes), p3 value (0..255)
  kFill = 0x01,
  // p0 dst, p1 dst_off, p2 src, p3 src_off, p4 length (bytes); overlap-safe
  kCopy = 0x02,
  // p0 dst, p1 dst_off, p2 dst_stride, p3 src, p4 src_off, p5 src_stride,
  // p6 width (bytes per row), p7 rows; strides >= width
  kCopy2D = 0x03,
  // p0 func (UnaryFunc), p1 dtype, p2 dst, p3 dst_off, p4 src, p5 src_off,
  // p6 count, p7 imm (i32, used by the *I functions)
  kUnary = 0x10,
  // p0 func (BinaryFunc), p1 dtype, p2 dst, p3 dst_off, p4 a, p5 a_off,
  // p6 b, p7 b_off, p8 count
  kBinary = 0x11,
  // p0 dst, p1 dst_off, p2 src, p3 src_off, p4 count (bytes),
  // p5 table, p6 table_off (256 bytes): dst[i] = table[src[i]]
  kLut = 0x20,
  // 2-D convolution of a u8 plane with a k x k kernel of little-endian i16
  // weights (row-major), edge clamp, rounding shift, saturation to u8:
  // p0 dst, p1 dst_off, p2 dst_stride, p3 src, p4 src_off, p5 src_stride,
  // p6 width, p7 height, p8 row_begin, p9 row_end (rows written),
  // p10 kernel, p11 kernel_off, p12 k (3 or 5), p13 shift (0..31), p14 bias (i32)
  kConv2D = 0x30,
  // int8 matrix product C[M][N] = requant(bias[n] + sum_k A[m][k] * B[k][n]):
  // p0 dst, p1 dst_off, p2 a, p3 a_off, p4 b, p5 b_off, p6 bias (i32 per n,
  // or kNoBuffer), p7 bias_off, p8 M, p9 K, p10 N, p11 multiplier (i32),
  // p12 shift (0..62), p13 zero_point (i32), p14 out dtype (kU8 or kI8).
  // A matrix-vector product is N = 1.
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
