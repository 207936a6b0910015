#include "format/op_validator.h"

#include <cstdint>

#include "format/format_defs.h"
#include "format/names.h"
#include "format/op_table.h"

namespace kesh::format {
namespace {

constexpr uint64_t kSaturated = UINT64_MAX;

// a * b + c, saturated so that a huge request can never wrap into a small one.
uint64_t mulAdd(uint64_t a, uint64_t b, uint64_t c) {
  if (a != 0 && b > (kSaturated - c) / a) return kSaturated;
  return a * b + c;
}

// Bytes [begin, end) of one buffer that an operation reads or writes.
struct Span {
  uint32_t ref = kNoBuffer;
  uint64_t begin = 0;
  uint64_t end = 0;
};

bool usesImmediate(uint32_t func) {
  return func >= static_cast<uint32_t>(UnaryFunc::kShlI);
}

class Checker {
 public:
  Checker(const Op& op, const Program& program, std::string* error) : op_(op), program_(program), error_(error) {}

  bool run();

 private:
  bool fail(const std::string& message) {
    if (error_) *error_ = message;
    return false;
  }

  bool bufferSize(const char* role, uint32_t ref, uint64_t* size);
  bool span(const char* role, uint32_t ref, uint64_t off, uint64_t length, bool written, Span* out);
  bool rows(const char* role, uint32_t ref, uint64_t off, uint64_t stride, uint64_t width, uint64_t firstRow,
            uint64_t rowCount, bool written, Span* out);
  bool span(const char* role, BufferAt at, uint64_t length, bool written, Span* out) {
    return span(role, at.ref, at.offset, length, written, out);
  }
  bool rows(const char* role, BufferAt at, uint64_t stride, uint64_t width, uint64_t firstRow, uint64_t rowCount,
            bool written, Span* out) {
    return rows(role, at.ref, at.offset, stride, width, firstRow, rowCount, written, out);
  }
  bool disjoint(const Span& dst, const Span& src, const char* srcRole);
  bool disjointOrSame(const Span& dst, const Span& src, const char* srcRole);
  bool nonZero(const char* what, uint32_t value);
  bool atMost(const char* what, uint32_t value, uint32_t limit);

  bool fill();
  bool copy();
  bool copy2D();
  bool unary();
  bool binary();
  bool lut();
  bool conv2D();
  bool matMul();

  const Op& op_;
  const Program& program_;
  std::string* error_;
};

bool Checker::bufferSize(const char* role, uint32_t ref, uint64_t* size) {
  const uint32_t space = refSpace(ref);
  const uint32_t number = refNumber(ref);
  const std::string prefix = std::string(role) + ": ";
  switch (space) {
    case static_cast<uint32_t>(Space::kArg):
      if (number >= program_.args.size()) return fail(prefix + "no argument " + std::to_string(number));
      *size = program_.args[number].size;
      return true;
    case static_cast<uint32_t>(Space::kInternal):
      if (number >= program_.internalSizes.size()) {
        return fail(prefix + "no internal buffer " + std::to_string(number));
      }
      *size = program_.internalSizes[number];
      return true;
    case static_cast<uint32_t>(Space::kConst):
      if (number != 0) return fail(prefix + "constant data has no number " + std::to_string(number));
      *size = program_.constData.size();
      return true;
    default:
      return fail(prefix + "no buffer space " + std::to_string(space));
  }
}

bool Checker::span(const char* role, uint32_t ref, uint64_t off, uint64_t length, bool written, Span* out) {
  uint64_t size = 0;
  if (!bufferSize(role, ref, &size)) return false;
  if (written && inSpace(ref, Space::kConst)) {
    return fail(std::string(role) + ": constant data is read-only");
  }
  const uint64_t end = mulAdd(1, length, off);
  if (end > size) {
    return fail(std::string(role) + ": bytes " + std::to_string(off) + ".." + std::to_string(end) +
                " outside its buffer of " + std::to_string(size) + " bytes");
  }
  *out = Span{ref, off, end};
  return true;
}

// Rows [firstRow, firstRow + rowCount) of `width` bytes, `stride` apart,
// starting at `off`; the span runs from the first byte of the first row to
// the last byte of the last row.
bool Checker::rows(const char* role, uint32_t ref, uint64_t off, uint64_t stride, uint64_t width,
                   uint64_t firstRow, uint64_t rowCount, bool written, Span* out) {
  const uint64_t begin = mulAdd(firstRow, stride, off);
  const uint64_t last = mulAdd(rowCount - 1, stride, begin);
  if (last == kSaturated) return fail(std::string(role) + ": rows outside its buffer");
  return span(role, ref, begin, mulAdd(1, width, last) - begin, written, out);
}

bool Checker::disjoint(const Span& dst, const Span& src, const char* srcRole) {
  if (dst.ref != src.ref || dst.end <= src.begin || src.end <= dst.begin) return true;
  return fail(std::string("dst overlaps ") + srcRole);
}

// Element-wise operations may work in place: dst exactly over a source.
bool Checker::disjointOrSame(const Span& dst, const Span& src, const char* srcRole) {
  if (dst.ref == src.ref && dst.begin == src.begin) return true;
  return disjoint(dst, src, srcRole);
}

bool Checker::nonZero(const char* what, uint32_t value) {
  return value != 0 || fail(std::string(what) + " is 0");
}

bool Checker::atMost(const char* what, uint32_t value, uint32_t limit) {
  if (value <= limit) return true;
  return fail(std::string(what) + " " + std::to_string(value) + " over " + std::to_string(limit));
}

bool Checker::fill() {
  using P = OpParams<Opcode::kFill>;
  const P p(op_);
  const uint32_t length = p.u32<P::at("length")>();
  Span dst;
  return nonZero("length", length) && span("dst", p.buffer<P::at("dst")>(), length, true, &dst) &&
         atMost("value", p.u32<P::at("value")>(), 255);
}

bool Checker::copy() {
  using P = OpParams<Opcode::kCopy>;
  const P p(op_);
  const uint32_t length = p.u32<P::at("length")>();
  Span dst, src;
  return nonZero("length", length) && span("dst", p.buffer<P::at("dst")>(), length, true, &dst) &&
         span("src", p.buffer<P::at("src")>(), length, false, &src);
}

bool Checker::copy2D() {
  using P = OpParams<Opcode::kCopy2D>;
  const P p(op_);
  const uint32_t width = p.u32<P::at("width")>(), rowCount = p.u32<P::at("rows")>();
  const uint32_t dstStride = p.u32<P::at("dst_stride")>(), srcStride = p.u32<P::at("src_stride")>();
  if (!nonZero("width", width) || !nonZero("rows", rowCount)) return false;
  if (dstStride < width) return fail("dst_stride below width");
  if (srcStride < width) return fail("src_stride below width");
  Span dst, src;
  return rows("dst", p.buffer<P::at("dst")>(), dstStride, width, 0, rowCount, true, &dst) &&
         rows("src", p.buffer<P::at("src")>(), srcStride, width, 0, rowCount, false, &src) &&
         disjoint(dst, src, "src");
}

bool Checker::unary() {
  using P = OpParams<Opcode::kUnary>;
  const P p(op_);
  const uint32_t func = p.code<P::at("func")>(), dtype = p.code<P::at("type")>(), count = p.u32<P::at("count")>();
  const auto imm = static_cast<uint32_t>(p.i32<P::at("imm")>());
  if (!unaryFuncName(func)) return fail("unknown unary function " + std::to_string(func));
  if (elementSize(dtype) == 0) return fail("unknown element type " + std::to_string(dtype));
  if (!nonZero("count", count)) return false;
  const uint64_t length = uint64_t{count} * elementSize(dtype);
  Span dst, src;
  if (!span("dst", p.buffer<P::at("dst")>(), length, true, &dst) ||
      !span("src", p.buffer<P::at("src")>(), length, false, &src) || !disjointOrSame(dst, src, "src")) {
    return false;
  }
  if (!usesImmediate(func)) return imm == 0 || fail("imm is not used by " + std::string(unaryFuncName(func)));
  const bool isShift = func == static_cast<uint32_t>(UnaryFunc::kShlI) ||
                       func == static_cast<uint32_t>(UnaryFunc::kShrI);
  return !isShift || atMost("imm", imm, 31);
}

bool Checker::binary() {
  using P = OpParams<Opcode::kBinary>;
  const P p(op_);
  const uint32_t func = p.code<P::at("func")>(), dtype = p.code<P::at("type")>(), count = p.u32<P::at("count")>();
  if (!binaryFuncName(func)) return fail("unknown binary function " + std::to_string(func));
  if (elementSize(dtype) == 0) return fail("unknown element type " + std::to_string(dtype));
  if (!nonZero("count", count)) return false;
  const uint64_t length = uint64_t{count} * elementSize(dtype);
  Span dst, a, b;
  return span("dst", p.buffer<P::at("dst")>(), length, true, &dst) &&
         span("a", p.buffer<P::at("a")>(), length, false, &a) && span("b", p.buffer<P::at("b")>(), length, false, &b) &&
         disjointOrSame(dst, a, "a") && disjointOrSame(dst, b, "b");
}

bool Checker::lut() {
  using P = OpParams<Opcode::kLut>;
  const P p(op_);
  const uint32_t count = p.u32<P::at("count")>();
  Span dst, src, table;
  return nonZero("count", count) && span("dst", p.buffer<P::at("dst")>(), count, true, &dst) &&
         span("src", p.buffer<P::at("src")>(), count, false, &src) &&
         span("table", p.buffer<P::at("table")>(), 256, false, &table) && disjointOrSame(dst, src, "src") &&
         disjoint(dst, table, "table");
}

bool Checker::conv2D() {
  using P = OpParams<Opcode::kConv2D>;
  const P p(op_);
  const uint32_t width = p.u32<P::at("width")>(), height = p.u32<P::at("height")>();
  const uint32_t rowBegin = p.u32<P::at("row_begin")>(), rowEnd = p.u32<P::at("row_end")>();
  const uint32_t dstStride = p.u32<P::at("dst_stride")>(), srcStride = p.u32<P::at("src_stride")>();
  const uint32_t k = p.u32<P::at("k")>();
  if (!nonZero("width", width) || !nonZero("height", height)) return false;
  if (dstStride < width) return fail("dst_stride below width");
  if (srcStride < width) return fail("src_stride below width");
  if (rowBegin >= rowEnd || rowEnd > height) {
    return fail("rows " + std::to_string(rowBegin) + ".." + std::to_string(rowEnd) + " not inside height " +
                std::to_string(height));
  }
  if (k != 3 && k != 5) return fail("k " + std::to_string(k) + " is not 3 or 5");
  if (!atMost("shift", p.u32<P::at("shift")>(), 31)) return false;
  Span dst, src, kernel;
  return rows("dst", p.buffer<P::at("dst")>(), dstStride, width, rowBegin, rowEnd - rowBegin, true, &dst) &&
         rows("src", p.buffer<P::at("src")>(), srcStride, width, 0, height, false, &src) &&
         span("kernel", p.buffer<P::at("kernel")>(), uint64_t{k} * k * 2, false, &kernel) &&
         disjoint(dst, src, "src") && disjoint(dst, kernel, "kernel");
}

bool Checker::matMul() {
  using P = OpParams<Opcode::kMatMul>;
  const P p(op_);
  const uint32_t m = p.u32<P::at("m")>(), k = p.u32<P::at("k")>(), n = p.u32<P::at("n")>();
  const uint32_t out = p.code<P::at("out")>();
  if (!nonZero("m", m) || !nonZero("k", k) || !nonZero("n", n) || !atMost("k", k, kMaxMatMulK) ||
      !atMost("shift", p.u32<P::at("shift")>(), 62)) {
    return false;
  }
  if (out != static_cast<uint32_t>(DType::kU8) && out != static_cast<uint32_t>(DType::kI8)) {
    return fail("output type " + std::to_string(out) + " is not u8 or i8");
  }
  Span dst, a, b, bias;
  if (!span("dst", p.buffer<P::at("dst")>(), mulAdd(m, n, 0), true, &dst) ||
      !span("a", p.buffer<P::at("a")>(), mulAdd(m, k, 0), false, &a) ||
      !span("b", p.buffer<P::at("b")>(), mulAdd(k, n, 0), false, &b) || !disjoint(dst, a, "a") ||
      !disjoint(dst, b, "b")) {
    return false;
  }
  const BufferAt biasAt = p.buffer<P::at("bias")>();
  if (biasAt.ref == kNoBuffer) return biasAt.offset == 0 || fail("bias_off without a bias");
  return span("bias", biasAt, uint64_t{n} * 4, false, &bias) && disjoint(dst, bias, "bias");
}

bool Checker::run() {
  const uint32_t opcode = static_cast<uint32_t>(op_.opcode);
  if (!opcodeName(opcode)) return fail("unknown opcode " + std::to_string(opcode));
  for (uint32_t i = findOp(op_.opcode)->wordCount; i < kOpParamCount; ++i) {
    if (op_.p[i] != 0) return fail("unused parameter p" + std::to_string(i) + " is not 0");
  }
  switch (op_.opcode) {
    case Opcode::kFill: return fill();
    case Opcode::kCopy: return copy();
    case Opcode::kCopy2D: return copy2D();
    case Opcode::kUnary: return unary();
    case Opcode::kBinary: return binary();
    case Opcode::kLut: return lut();
    case Opcode::kConv2D: return conv2D();
    case Opcode::kMatMul: return matMul();
  }
  return false;
}

}  // namespace

bool validateOp(const Op& op, const Program& program, std::string* error) {
  return Checker(op, program, error).run();
}

}  // namespace kesh::format
