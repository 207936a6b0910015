#include "reference_ops.h"

#include <algorithm>

namespace kesh::gencases {
namespace {

int64_t accumulator(const int8_t* a, const int8_t* b, const int32_t* bias, uint32_t row, uint32_t col,
                    uint32_t k, uint32_t n) {
  int64_t acc = bias != nullptr ? bias[col] : 0;
  for (uint32_t i = 0; i < k; ++i) acc += int64_t{a[size_t{row} * k + i]} * b[size_t{i} * n + col];
  return saturate(acc, INT32_MIN, INT32_MAX);
}

}  // namespace

int64_t saturate(int64_t value, int64_t lo, int64_t hi) { return std::min(std::max(value, lo), hi); }

int64_t roundingShift(int64_t value, uint32_t shift) {
  if (shift == 0) return value;
  return (value + (int64_t{1} << (shift - 1))) >> shift;
}

uint8_t requantize(int64_t acc, int32_t multiplier, uint32_t shift, int32_t zeroPoint, bool outU8) {
  const int64_t r = roundingShift(acc * multiplier, shift) + zeroPoint;
  if (outU8) return static_cast<uint8_t>(saturate(r, 0, 255));
  return static_cast<uint8_t>(static_cast<int8_t>(saturate(r, -128, 127)));
}

std::vector<uint8_t> referenceMatMul(const int8_t* a, const int8_t* b, const int32_t* bias, uint32_t m,
                                     uint32_t k, uint32_t n, int32_t multiplier, uint32_t shift,
                                     int32_t zeroPoint, bool outU8) {
  std::vector<uint8_t> out(size_t{m} * n);
  for (uint32_t row = 0; row < m; ++row) {
    for (uint32_t col = 0; col < n; ++col) {
      out[size_t{row} * n + col] =
          requantize(accumulator(a, b, bias, row, col, k, n), multiplier, shift, zeroPoint, outU8);
    }
  }
  return out;
}

int64_t maxAbsAccumulator(const int8_t* a, const int8_t* b, const int32_t* bias, uint32_t m, uint32_t k,
                          uint32_t n) {
  int64_t best = 1;
  for (uint32_t row = 0; row < m; ++row) {
    for (uint32_t col = 0; col < n; ++col) best = std::max(best, absolute(accumulator(a, b, bias, row, col, k, n)));
  }
  return best;
}

std::vector<uint8_t> referenceConv2d(const std::vector<uint8_t>& src, uint32_t width, uint32_t height,
                                     const std::vector<int16_t>& kernel, uint32_t k, uint32_t shift, int32_t bias) {
  std::vector<uint8_t> out(src.size());
  const int64_t half = k / 2;
  for (int64_t y = 0; y < height; ++y) {
    for (int64_t x = 0; x < width; ++x) {
      int64_t acc = bias;
      for (int64_t i = 0; i < k; ++i) {
        const int64_t sy = saturate(y + i - half, 0, height - 1);
        for (int64_t j = 0; j < k; ++j) {
          const int64_t sx = saturate(x + j - half, 0, width - 1);
          acc += int64_t{kernel[static_cast<size_t>(i * k + j)]} * src[static_cast<size_t>(sy * width + sx)];
        }
      }
      out[static_cast<size_t>(y * width + x)] = static_cast<uint8_t>(saturate(roundingShift(acc, shift), 0, 255));
    }
  }
  return out;
}

ElementRange elementRange(format::DType type) {
  switch (type) {
    case format::DType::kU8: return {0, 255, 8};
    case format::DType::kI8: return {-128, 127, 8};
    case format::DType::kI16: return {-32768, 32767, 16};
    case format::DType::kI32: break;
  }
  return {INT32_MIN, INT32_MAX, 32};
}

int64_t wrapTo(uint64_t v, const ElementRange& range) {
  const uint64_t u = v & ((uint64_t{1} << range.bits) - 1);
  const bool negative = range.lo < 0 && u > static_cast<uint64_t>(range.hi);
  return negative ? static_cast<int64_t>(u) - (int64_t{1} << range.bits) : static_cast<int64_t>(u);
}

// x / 2^s rounded towards minus infinity, by division rather than shifting.
static int64_t floorDivPow2(int64_t x, int64_t s) {
  const int64_t d = int64_t{1} << s;
  return x / d - ((x % d != 0 && x < 0) ? 1 : 0);
}

int64_t referenceUnary(format::UnaryFunc func, format::DType type, int64_t x, int64_t imm) {
  const ElementRange t = elementRange(type);
  using format::UnaryFunc;
  switch (func) {
    case UnaryFunc::kNeg: return saturate(-x, t.lo, t.hi);
    case UnaryFunc::kAbs: return saturate(absolute(x), t.lo, t.hi);
    case UnaryFunc::kNot: return wrapTo(~static_cast<uint64_t>(x), t);
    case UnaryFunc::kShlI: return saturate(x * (int64_t{1} << imm), t.lo, t.hi);
    case UnaryFunc::kShrI: return floorDivPow2(x, imm);
    case UnaryFunc::kAddI: return saturate(x + imm, t.lo, t.hi);
    case UnaryFunc::kMulI: return saturate(x * imm, t.lo, t.hi);
    case UnaryFunc::kMinI: return saturate(std::min(x, imm), t.lo, t.hi);
    case UnaryFunc::kMaxI: return saturate(std::max(x, imm), t.lo, t.hi);
  }
  return 0;
}

int64_t referenceBinary(format::BinaryFunc func, format::DType type, int64_t a, int64_t b) {
  const ElementRange t = elementRange(type);
  const uint64_t ua = static_cast<uint64_t>(a), ub = static_cast<uint64_t>(b);
  using format::BinaryFunc;
  switch (func) {
    case BinaryFunc::kAdd: return saturate(a + b, t.lo, t.hi);
    case BinaryFunc::kSub: return saturate(a - b, t.lo, t.hi);
    case BinaryFunc::kMul: return saturate(a * b, t.lo, t.hi);
    case BinaryFunc::kMin: return std::min(a, b);
    case BinaryFunc::kMax: return std::max(a, b);
    case BinaryFunc::kAnd: return wrapTo(ua & ub, t);
    case BinaryFunc::kOr: return wrapTo(ua | ub, t);
    case BinaryFunc::kXor: return wrapTo(ua ^ ub, t);
    case BinaryFunc::kAbsDiff: return saturate(absolute(a - b), t.lo, t.hi);
    case BinaryFunc::kAvg: return floorDivPow2(a + b + 1, 1);
  }
  return 0;
}

}  // namespace kesh::gencases
