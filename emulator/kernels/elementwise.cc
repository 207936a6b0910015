#include "kernels/elementwise.h"

#include <algorithm>
#include <limits>
#include <type_traits>

#include "kernels/int_math.h"
#include "format/le_bytes.h"

namespace kesh::kernels {
namespace {

using format::BinaryFunc;
using format::DType;
using format::UnaryFunc;

// The narrowest signed type in which every operation on T is exact. 32 bits
// keep the 8- and 16-bit loops vectorisable; i32 needs 64.
template <typename T>
using Acc = std::conditional_t<(sizeof(T) < 4), int32_t, int64_t>;

// Immediates are clamped to a range that gives the same saturated result
// while keeping the arithmetic inside Acc<T>. For 8/16-bit types:
//   x + imm: |x| <= 2^16, so any |imm| beyond 2^17 saturates the same way;
//   x * imm: a nonzero x times |imm| >= 2^15 already saturates;
//   x << s : a nonzero x shifted by 16 already saturates.
template <typename T>
Acc<T> addImm(int32_t imm) {
  if constexpr (sizeof(T) < 4) return std::clamp<int32_t>(imm, -(1 << 17), 1 << 17);
  return imm;
}

template <typename T>
Acc<T> mulImm(int32_t imm) {
  if constexpr (sizeof(T) < 4) return std::clamp<int32_t>(imm, -(1 << 15), 1 << 15);
  return imm;
}

// A shift count beyond `cap` acts like `cap`: the value is already saturated
// (left shift) or reduced to its sign (right shift).
uint32_t shiftImm(int32_t imm, uint32_t cap) {
  return std::min(static_cast<uint32_t>(imm), cap);
}

// Element T at `p`, little-endian at any alignment.
template <typename T>
T loadElement(const uint8_t* p) {
  if constexpr (sizeof(T) == 1) return static_cast<T>(*p);
  else if constexpr (sizeof(T) == 2) return static_cast<T>(format::loadLe16(p));
  else return static_cast<T>(format::loadLe32(p));
}

template <typename T>
void storeElement(uint8_t* p, T v) {
  if constexpr (sizeof(T) == 1) *p = static_cast<uint8_t>(v);
  else if constexpr (sizeof(T) == 2) format::storeLe16(p, static_cast<uint16_t>(v));
  else format::storeLe32(p, static_cast<uint32_t>(v));
}

template <typename T, typename Fn>
void mapUnary(uint8_t* dst, const uint8_t* src, size_t count, Fn fn) {
  for (size_t i = 0; i < count; ++i) {
    const size_t at = i * sizeof(T);
    storeElement<T>(dst + at, fn(loadElement<T>(src + at)));
  }
}

template <typename T, typename Fn>
void mapBinary(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t count, Fn fn) {
  for (size_t i = 0; i < count; ++i) {
    const size_t at = i * sizeof(T);
    storeElement<T>(dst + at, fn(loadElement<T>(a + at), loadElement<T>(b + at)));
  }
}

template <typename T>
bool unaryTyped(UnaryFunc func, uint8_t* dst, const uint8_t* src, size_t count, int32_t imm) {
  using W = Acc<T>;
  switch (func) {
    case UnaryFunc::kNeg:
      mapUnary<T>(dst, src, count, [](T x) { return saturate<T>(-W{x}); });
      return true;
    case UnaryFunc::kAbs:
      mapUnary<T>(dst, src, count, [](T x) { return saturate<T>(x < 0 ? -W{x} : W{x}); });
      return true;
    case UnaryFunc::kNot:
      mapUnary<T>(dst, src, count, [](T x) { return static_cast<T>(~x); });
      return true;
    case UnaryFunc::kShlI: {
      const W factor = W{1} << shiftImm(imm, sizeof(T) < 4 ? 16 : 31);
      mapUnary<T>(dst, src, count, [factor](T x) { return saturate<T>(W{x} * factor); });
      return true;
    }
    case UnaryFunc::kShrI: {
      // u8 values are never negative, so the arithmetic shift is also the
      // logical one there.
      const uint32_t s = shiftImm(imm, 31);
      mapUnary<T>(dst, src, count, [s](T x) { return static_cast<T>(W{x} >> s); });
      return true;
    }
    case UnaryFunc::kAddI: {
      const W add = addImm<T>(imm);
      mapUnary<T>(dst, src, count, [add](T x) { return saturate<T>(W{x} + add); });
      return true;
    }
    case UnaryFunc::kMulI: {
      const W mul = mulImm<T>(imm);
      mapUnary<T>(dst, src, count, [mul](T x) { return saturate<T>(W{x} * mul); });
      return true;
    }
    case UnaryFunc::kMinI: {
      const T bound = saturate<T>(int64_t{imm});
      mapUnary<T>(dst, src, count, [bound](T x) { return std::min(x, bound); });
      return true;
    }
    case UnaryFunc::kMaxI: {
      const T bound = saturate<T>(int64_t{imm});
      mapUnary<T>(dst, src, count, [bound](T x) { return std::max(x, bound); });
      return true;
    }
  }
  return false;
}

template <typename T>
bool binaryTyped(BinaryFunc func, uint8_t* dst, const uint8_t* a, const uint8_t* b,
                 size_t count) {
  using W = Acc<T>;
  switch (func) {
    case BinaryFunc::kAdd:
      mapBinary<T>(dst, a, b, count, [](T x, T y) { return saturate<T>(W{x} + W{y}); });
      return true;
    case BinaryFunc::kSub:
      mapBinary<T>(dst, a, b, count, [](T x, T y) { return saturate<T>(W{x} - W{y}); });
      return true;
    case BinaryFunc::kMul:
      mapBinary<T>(dst, a, b, count, [](T x, T y) { return saturate<T>(W{x} * W{y}); });
      return true;
    case BinaryFunc::kMin:
      mapBinary<T>(dst, a, b, count, [](T x, T y) { return std::min(x, y); });
      return true;
    case BinaryFunc::kMax:
      mapBinary<T>(dst, a, b, count, [](T x, T y) { return std::max(x, y); });
      return true;
    case BinaryFunc::kAnd:
      mapBinary<T>(dst, a, b, count, [](T x, T y) { return static_cast<T>(x & y); });
      return true;
    case BinaryFunc::kOr:
      mapBinary<T>(dst, a, b, count, [](T x, T y) { return static_cast<T>(x | y); });
      return true;
    case BinaryFunc::kXor:
      mapBinary<T>(dst, a, b, count, [](T x, T y) { return static_cast<T>(x ^ y); });
      return true;
    case BinaryFunc::kAbsDiff:
      mapBinary<T>(dst, a, b, count, [](T x, T y) {
        const W d = W{x} - W{y};
        return saturate<T>(d < 0 ? -d : d);
      });
      return true;
    case BinaryFunc::kAvg:
      mapBinary<T>(dst, a, b, count,
                   [](T x, T y) { return static_cast<T>((W{x} + W{y} + 1) >> 1); });
      return true;
  }
  return false;
}

// fn(T{}) with T the element type of `dtype`.
template <typename Fn>
bool withElementType(DType dtype, Fn fn) {
  switch (dtype) {
    case DType::kU8: return fn(uint8_t{});
    case DType::kI8: return fn(int8_t{});
    case DType::kI16: return fn(int16_t{});
    case DType::kI32: return fn(int32_t{});
  }
  return false;
}

}  // namespace

bool unary(UnaryFunc func, DType dtype, uint8_t* dst, const uint8_t* src, size_t count,
           int32_t imm) {
  return withElementType(dtype, [&](auto zero) { return unaryTyped<decltype(zero)>(func, dst, src, count, imm); });
}

bool binary(BinaryFunc func, DType dtype, uint8_t* dst, const uint8_t* a, const uint8_t* b,
            size_t count) {
  return withElementType(dtype, [&](auto zero) { return binaryTyped<decltype(zero)>(func, dst, a, b, count); });
}

}  // namespace kesh::kernels
