#include "format/op_validator.h"

#include <cstdint>

#include "format/format_defs.h"
#include "format/names.h"

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

// Number of leading parameters each opcode uses; the rest must be zero.
uint32_t usedParams(Opcode opcode) {
  switch (opcode) {
    case Opcode::kFill: return 4;
    case Opcode::kCopy: return 5;
    case Opcode::kCopy2D: return 8;
    case Opcode::kUnary: return 8;
    case Opcode::kBinary: return 9;
    case Opcode::kLut: return 7;
    case Opcode::kConv2D: return 15;
    case Opcode::kMatMul: return 15;
  }
  return 0;
}

bool usesImmediate(uint32_t func) {
  return func >= static_cast<uint32_t>(UnaryFunc::kShlI);
}

class Checker {
 public:
  Checker(const Op& op, const Program& program, std::string* error) : op_(op), program_(program), error_(error) {}

  bool run();

 private:
  uint32_t p(int i) const { return op_.p[static_cast<size_t>(i)]; }
  int32_t signedP(int i) const { return static_cast<int32_t>(p(i)); }

  bool fail(const std::string& message) {
    if (error_) *error_ = message;
    return false;
  }

  bool bufferSize(const char* role, uint32_t ref, uint64_t* size);
  bool span(const char* role, uint32_t ref, uint64_t off, uint64_t length, bool written, Span* out);
  bool rows(const char* role, uint32_t ref, uint64_t off, uint64_t stride, uint64_t width, uint64_t firstRow,
            uint64_t rowCount, bool written, Span* out);
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
  const uint32_t space = ref >> 24;
  const uint32_t number = ref & 0xFFFFFFu;
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
  if (written && (ref >> 24) == static_cast<uint32_t>(Space::kConst)) {
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
  Span dst;
  return nonZero("length", p(2)) && span("dst", p(0), p(1), p(2), true, &dst) && atMost("value", p(3), 255);
}

bool Checker::copy() {
  Span dst, src;
  return nonZero("length", p(4)) && span("dst", p(0), p(1), p(4), true, &dst) &&
         span("src", p(2), p(3), p(4), false, &src);
}

bool Checker::copy2D() {
  const uint32_t width = p(6), rowCount = p(7);
  if (!nonZero("width", width) || !nonZero("rows", rowCount)) return false;
  if (p(2) < width) return fail("dst_stride below width");
  if (p(5) < width) return fail("src_stride below width");
  Span dst, src;
  return rows("dst", p(0), p(1), p(2), width, 0, rowCount, true, &dst) &&
         rows("src", p(3), p(4), p(5), width, 0, rowCount, false, &src) && disjoint(dst, src, "src");
}

bool Checker::unary() {
  const uint32_t func = p(0);
  if (!unaryFuncName(func)) return fail("unknown unary function " + std::to_string(func));
  const uint32_t elementSize = dtypeSize(p(1));
  if (elementSize == 0) return fail("unknown element type " + std::to_string(p(1)));
  if (!nonZero("count", p(6))) return false;
  const uint64_t length = uint64_t{p(6)} * elementSize;
  Span dst, src;
  if (!span("dst", p(2), p(3), length, true, &dst) || !span("src", p(4), p(5), length, false, &src) ||
      !disjointOrSame(dst, src, "src")) {
    return false;
  }
  if (!usesImmediate(func)) return p(7) == 0 || fail("imm is not used by " + std::string(unaryFuncName(func)));
  const bool isShift = func == static_cast<uint32_t>(UnaryFunc::kShlI) ||
                       func == static_cast<uint32_t>(UnaryFunc::kShrI);
  return !isShift || atMost("imm", p(7), 31);
}

bool Checker::binary() {
  if (!binaryFuncName(p(0))) return fail("unknown binary function " + std::to_string(p(0)));
  const uint32_t elementSize = dtypeSize(p(1));
  if (elementSize == 0) return fail("unknown element type " + std::to_string(p(1)));
  if (!nonZero("count", p(8))) return false;
  const uint64_t length = uint64_t{p(8)} * elementSize;
  Span dst, a, b;
  return span("dst", p(2), p(3), length, true, &dst) && span("a", p(4), p(5), length, false, &a) &&
         span("b", p(6), p(7), length, false, &b) && disjointOrSame(dst, a, "a") && disjointOrSame(dst, b, "b");
}

bool Checker::lut() {
  Span dst, src, table;
  return nonZero("count", p(4)) && span("dst", p(0), p(1), p(4), true, &dst) &&
         span("src", p(2), p(3), p(4), false, &src) && span("table", p(5), p(6), 256, false, &table) &&
         disjointOrSame(dst, src, "src") && disjoint(dst, table, "table");
}

bool Checker::conv2D() {
  const uint32_t width = p(6), height = p(7), rowBegin = p(8), rowEnd = p(9), k = p(12);
  if (!nonZero("width", width) || !nonZero("height", height)) return false;
  if (p(2) < width) return fail("dst_stride below width");
  if (p(5) < width) return fail("src_stride below width");
  if (rowBegin >= rowEnd || rowEnd > height) {
    return fail("rows " + std::to_string(rowBegin) + ".." + std::to_string(rowEnd) + " not inside height " +
                std::to_string(height));
  }
  if (k != 3 && k != 5) return fail("k " + std::to_string(k) + " is not 3 or 5");
  if (!atMost("shift", p(13), 31)) return false;
  Span dst, src, kernel;
  return rows("dst", p(0), p(1), p(2), width, rowBegin, rowEnd - rowBegin, true, &dst) &&
         rows("src", p(3), p(4), p(5), width, 0, height, false, &src) &&
         span("kernel", p(10), p(11), uint64_t{k} * k * 2, false, &kernel) && disjoint(dst, src, "src") &&
         disjoint(dst, kernel, "kernel");
}

bool Checker::matMul() {
  const uint64_t m = p(8), k = p(9), n = p(10);
  if (!nonZero("m", p(8)) || !nonZero("k", p(9)) || !nonZero("n", p(10)) || !atMost("k", p(9), kMaxMatMulK) ||
      !atMost("shift", p(12), 62)) {
    return false;
  }
  if (p(14) != static_cast<uint32_t>(DType::kU8) && p(14) != static_cast<uint32_t>(DType::kI8)) {
    return fail("output type " + std::to_string(p(14)) + " is not u8 or i8");
  }
  Span dst, a, b, bias;
  if (!span("dst", p(0), p(1), mulAdd(m, n, 0), true, &dst) || !span("a", p(2), p(3), mulAdd(m, k, 0), false, &a) ||
      !span("b", p(4), p(5), mulAdd(k, n, 0), false, &b) || !disjoint(dst, a, "a") || !disjoint(dst, b, "b")) {
    return false;
  }
  if (p(6) == kNoBuffer) return p(7) == 0 || fail("bias_off without a bias");
  return span("bias", p(6), p(7), n * 4, false, &bias) && disjoint(dst, bias, "bias");
}

bool Checker::run() {
  const uint32_t opcode = static_cast<uint32_t>(op_.opcode);
  if (!opcodeName(opcode)) return fail("unknown opcode " + std::to_string(opcode));
  for (uint32_t i = usedParams(op_.opcode); i < kOpParamCount; ++i) {
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
