#include "kernels/elementwise.h"
#include "kernels/lut.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

#include "test_support.h"

namespace kesh::kernels {
namespace {

using format::BinaryFunc;
using format::UnaryFunc;
using namespace testing;  // NOLINT: the references' integer steps

struct TypeInfo {
  format::DType type;
  size_t size;
  int64_t lo, hi;
};
constexpr TypeInfo kTypes[] = {{format::DType::kU8, 1, 0, 255}, {format::DType::kI8, 1, -128, 127},
                               {format::DType::kI16, 2, -32768, 32767}, {format::DType::kI32, 4, INT32_MIN, INT32_MAX}};

// The value whose two's-complement pattern in the type is the low bits of v.
int64_t wrap(uint64_t v, const TypeInfo& t) {
  const unsigned bits = static_cast<unsigned>(8 * t.size);
  const uint64_t u = v & ((uint64_t{1} << bits) - 1);
  return t.lo < 0 && u > static_cast<uint64_t>(t.hi) ? static_cast<int64_t>(u) - (int64_t{1} << bits)
                                                     : static_cast<int64_t>(u);
}

int64_t refUnary(UnaryFunc f, const TypeInfo& t, int64_t x, int64_t imm) {
  switch (f) {
    case UnaryFunc::kNeg: return clampTo(-x, t.lo, t.hi);
    case UnaryFunc::kAbs: return clampTo(x < 0 ? -x : x, t.lo, t.hi);
    case UnaryFunc::kNot: return wrap(~static_cast<uint64_t>(x), t);
    case UnaryFunc::kShlI: return clampTo(x * (int64_t{1} << imm), t.lo, t.hi);
    case UnaryFunc::kShrI: return floorDivPow2(x, static_cast<unsigned>(imm));
    case UnaryFunc::kAddI: return clampTo(x + imm, t.lo, t.hi);
    case UnaryFunc::kMulI: return clampTo(x * imm, t.lo, t.hi);
    case UnaryFunc::kMinI: return clampTo(std::min(x, imm), t.lo, t.hi);
    case UnaryFunc::kMaxI: return clampTo(std::max(x, imm), t.lo, t.hi);
  }
  return 0;
}

int64_t refBinary(BinaryFunc f, const TypeInfo& t, int64_t a, int64_t b) {
  const uint64_t ua = static_cast<uint64_t>(a), ub = static_cast<uint64_t>(b);
  switch (f) {
    case BinaryFunc::kAdd: return clampTo(a + b, t.lo, t.hi);
    case BinaryFunc::kSub: return clampTo(a - b, t.lo, t.hi);
    case BinaryFunc::kMul: return clampTo(a * b, t.lo, t.hi);
    case BinaryFunc::kMin: return std::min(a, b);
    case BinaryFunc::kMax: return std::max(a, b);
    case BinaryFunc::kAnd: return wrap(ua & ub, t);
    case BinaryFunc::kOr: return wrap(ua | ub, t);
    case BinaryFunc::kXor: return wrap(ua ^ ub, t);
    case BinaryFunc::kAbsDiff: return clampTo(a > b ? a - b : b - a, t.lo, t.hi);
    case BinaryFunc::kAvg: return floorDivPow2(a + b + 1, 1);
  }
  return 0;
}

// Every pair of edge values (range ends, their neighbours, values around
// zero), then random pairs.
std::pair<std::vector<int64_t>, std::vector<int64_t>> operands(const TypeInfo& t, std::mt19937& rng) {
  std::vector<int64_t> edges, x, y;
  for (int64_t v : {t.lo, t.lo + 1, int64_t{-2}, int64_t{-1}, int64_t{0}, int64_t{1}, t.hi - 1, t.hi}) {
    if (v >= t.lo && v <= t.hi) edges.push_back(v);
  }
  for (int64_t a : edges) x.insert(x.end(), edges.size(), a);
  for (size_t i = 0; i < edges.size(); ++i) y.insert(y.end(), edges.begin(), edges.end());
  for (int i = 0; i < 200; ++i) {
    x.push_back(randomIn(rng, t.lo, t.hi));
    y.push_back(randomIn(rng, t.lo, t.hi));
  }
  return {x, y};
}

// One byte in, so wide elements are misaligned, and guard bytes after.
std::vector<uint8_t> pack(const std::vector<int64_t>& values, const TypeInfo& t) {
  std::vector<uint8_t> bytes(1 + values.size() * t.size + 4, 0xA5);
  for (size_t i = 0; i < values.size() * t.size; ++i) {
    bytes[1 + i] = static_cast<uint8_t>(static_cast<uint64_t>(values[i / t.size]) >> (8 * (i % t.size)));
  }
  return bytes;
}

using Kernel = std::function<bool(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t count)>;

// The kernel, run apart and in place over its first source, must give the
// reference's values and leave the bytes around its range alone.
void expectMatches(const TypeInfo& t, std::mt19937& rng, const Kernel& kernel,
                   const std::function<int64_t(int64_t, int64_t)>& ref, const std::string& what) {
  const auto [x, y] = operands(t, rng);
  std::vector<int64_t> expected;
  for (size_t i = 0; i < x.size(); ++i) expected.push_back(ref(x[i], y[i]));
  const std::vector<uint8_t> xb = pack(x, t), yb = pack(y, t);
  std::vector<uint8_t> apart(xb.size(), 0xA5), inPlace = xb;
  ASSERT_TRUE(kernel(apart.data() + 1, xb.data() + 1, yb.data() + 1, x.size()));
  ASSERT_TRUE(kernel(inPlace.data() + 1, inPlace.data() + 1, yb.data() + 1, x.size()));
  EXPECT_EQ(apart, pack(expected, t)) << what;
  EXPECT_EQ(inPlace, apart) << what << " in place";
}

TEST(ElementwiseTest, EveryFunctionTypeAndImmediateMatchesReference) {
  std::mt19937 rng(11);
  const std::vector<int64_t> shifts = {0, 1, 7, 8, 15, 16, 31};
  const std::vector<int64_t> imms = {INT32_MIN, -65537, -32769, -129, -1, 0, 1, 255, 256, 32768, 131073, INT32_MAX};
  for (const TypeInfo& t : kTypes) {
    const std::string type = " size " + std::to_string(t.size);
    for (uint32_t func = 0; func <= static_cast<uint32_t>(UnaryFunc::kMaxI); ++func) {
      const auto f = static_cast<UnaryFunc>(func);
      const bool isShift = f == UnaryFunc::kShlI || f == UnaryFunc::kShrI;
      for (int64_t imm : f < UnaryFunc::kShlI ? std::vector<int64_t>{0} : isShift ? shifts : imms) {
        expectMatches(
            t, rng, [&](uint8_t* d, const uint8_t* a, const uint8_t*, size_t n) { return unary(f, t.type, d, a, n, int32_t(imm)); },
            [&](int64_t a, int64_t) { return refUnary(f, t, a, imm); }, "unary " + std::to_string(func) + type);
      }
    }
    for (uint32_t func = 0; func <= static_cast<uint32_t>(BinaryFunc::kAvg); ++func) {
      const auto f = static_cast<BinaryFunc>(func);
      expectMatches(
          t, rng, [&](uint8_t* d, const uint8_t* a, const uint8_t* b, size_t n) { return binary(f, t.type, d, a, b, n); },
          [&](int64_t a, int64_t b) { return refBinary(f, t, a, b); }, "binary " + std::to_string(func) + type);
    }
  }
}

TEST(LutTest, EveryByteMapsThroughTheTableOutOfPlaceAndInPlace) {
  std::mt19937 rng(41);
  const std::vector<uint8_t> table = randomBytes(rng, 256);
  std::vector<uint8_t> src(259), dst(262, 0xEE), expected = dst;  // every byte, and a tail past 256
  for (size_t i = 0; i < src.size(); ++i) expected[i] = table[src[i] = static_cast<uint8_t>(255 - i)];
  lut(dst.data(), src.data(), src.size(), table.data());
  lut(src.data(), src.data(), src.size(), table.data());
  EXPECT_EQ(dst, expected);
  EXPECT_TRUE(std::equal(src.begin(), src.end(), expected.begin())) << "in place";
}

}  // namespace
}  // namespace kesh::kernels
