#include "kernels/elementwise.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>

#include "format/op_builder.h"
#include "kernels/executor.h"
#include "reference_ops.h"
#include "testing/sample_patterns.h"

namespace kesh::kernels {
namespace {

using format::BinaryFunc;
using format::makeOp;
using format::Opcode;
using format::UnaryFunc;
using kesh::testing::argRef;

struct TypeInfo {
  format::DType type;
  size_t size;
  int64_t lo, hi;
};
constexpr TypeInfo kTypes[] = {{format::DType::kU8, 1, 0, 255}, {format::DType::kI8, 1, -128, 127},
                               {format::DType::kI16, 2, -32768, 32767}, {format::DType::kI32, 4, INT32_MIN, INT32_MAX}};

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
    x.push_back(std::uniform_int_distribution<int64_t>(t.lo, t.hi)(rng));
    y.push_back(std::uniform_int_distribution<int64_t>(t.lo, t.hi)(rng));
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

// The kernel must give the reference's values and leave the bytes around its range alone.
void expectMatches(const TypeInfo& t, std::mt19937& rng, const Kernel& kernel,
                   const std::function<int64_t(int64_t, int64_t)>& ref, const std::string& what) {
  const auto [x, y] = operands(t, rng);
  std::vector<int64_t> expected;
  for (size_t i = 0; i < x.size(); ++i) expected.push_back(ref(x[i], y[i]));
  const std::vector<uint8_t> xb = pack(x, t), yb = pack(y, t);
  std::vector<uint8_t> out(xb.size(), 0xA5);
  ASSERT_TRUE(kernel(out.data() + 1, xb.data() + 1, yb.data() + 1, x.size()));
  EXPECT_EQ(out, pack(expected, t)) << what;
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
            [&](int64_t a, int64_t) { return gencases::referenceUnary(f, t.type, a, imm); }, "unary " + std::to_string(func) + type);
      }
    }
    for (uint32_t func = 0; func <= static_cast<uint32_t>(BinaryFunc::kAvg); ++func) {
      const auto f = static_cast<BinaryFunc>(func);
      expectMatches(
          t, rng, [&](uint8_t* d, const uint8_t* a, const uint8_t* b, size_t n) { return binary(f, t.type, d, a, b, n); },
          [&](int64_t a, int64_t b) { return gencases::referenceBinary(f, t.type, a, b); }, "binary " + std::to_string(func) + type);
    }
  }
}

// A sum into an internal buffer, copied out, shows what the buffer started with.
TEST(ExecutorTest, InternalBuffersStartZeroedOnEveryCall) {
  format::Program program;
  program.args = {{5, 8, false, "in"}, {2, 8, false, "out"}};
  program.internalSizes = {8};
  const uint32_t tmp = format::bufferRef(format::Space::kInternal, 0);
  program.ops = {makeOp(Opcode::kBinary, {{"func", BinaryFunc::kAdd}, {"type", format::DType::kU8}, {"dst", tmp},
                                          {"a", tmp}, {"b", argRef(0)}, {"count", 8}}),
                 makeOp(Opcode::kCopy, {{"dst", argRef(1)}, {"src", tmp}, {"length", 8}})};
  std::vector<uint8_t> in = {1, 2, 3, 4, 5, 100, 127, 200}, out(8);
  for (int call = 0; call < 2; ++call) {
    executeProgram(program, {{in.data(), in.size()}, {out.data(), out.size()}});
    EXPECT_EQ(out, in) << "call " << call;
  }
}

}  // namespace
}  // namespace kesh::kernels
