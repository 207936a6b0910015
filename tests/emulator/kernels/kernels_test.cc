// Each kernel against the reference arithmetic, bit for bit: the SIMD ones (convolution,
// matrix product) once per target built and supported here; and what the executor adds.
#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <array>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "format/op_builder.h"
#include "kernels/conv2d.h"
#include "kernels/elementwise.h"
#include "kernels/executor.h"
#include "kernels/matmul.h"
#include "reference_ops.h"
#include "testing/sample_patterns.h"

namespace kesh::kernels {
namespace {

using format::BinaryFunc;
using format::DType;
using format::makeOp;
using format::Opcode;
using format::UnaryFunc;
using kesh::testing::argRef;

std::vector<uint8_t> randomBytes(std::mt19937& rng, size_t count) {
  std::vector<uint8_t> bytes(count);
  for (uint8_t& b : bytes) b = static_cast<uint8_t>(rng());
  return bytes;
}

// The kernels dispatch to the parameter's target for the test's duration.
// Not thread-safe: the target is process-wide.
class SimdKernelTest : public ::testing::TestWithParam<int64_t> {
#ifdef KESH_SIMD_DYNAMIC_DISPATCH
 protected:
  void SetUp() override { hwy::SetSupportedTargetsForTest(GetParam()); }
  void TearDown() override { hwy::SetSupportedTargetsForTest(0); }
};
const std::vector<int64_t> kTargets = hwy::SupportedAndGeneratedTargets();
#else
};
const std::vector<int64_t> kTargets = {HWY_STATIC_TARGET};
#endif

struct Case {
  uint32_t width, height, k;
  std::vector<int16_t> weights;
  uint32_t shift;
  int32_t bias;
  uint32_t rowBegin, rowEnd;
  size_t pad;  // bytes between rows beyond the width, on both planes
};

// The kernel against the reference on a random plane (or `plane` when
// given); every byte it must not write keeps the fill value 0x5A.
void expectMatchesReference(const Case& c, std::mt19937& rng, std::vector<uint8_t> plane = {}) {
  const size_t stride = c.width + c.pad;
  if (plane.empty()) plane = randomBytes(rng, size_t{c.width} * c.height);
  std::vector<uint8_t> src(stride * c.height, 0xEE), weights, dst(src.size(), 0x5A), expected = dst;
  for (size_t y = 0; y < c.height; ++y) std::copy_n(plane.begin() + y * c.width, c.width, src.begin() + y * stride);
  for (int16_t w : c.weights) weights.insert(weights.end(), {uint8_t(w & 0xFF), uint8_t((w >> 8) & 0xFF)});
  const std::vector<uint8_t> ref = gencases::referenceConv2d(plane, c.width, c.height, c.weights, c.k, c.shift, c.bias);
  for (size_t y = c.rowBegin; y < c.rowEnd; ++y) {
    std::copy_n(ref.begin() + y * c.width, c.width, expected.begin() + y * stride);
  }
  ASSERT_TRUE(conv2d({dst.data(), stride, src.data(), stride, c.width, c.height, c.rowBegin, c.rowEnd, weights.data(),
                      c.k, c.shift, c.bias}));
  ASSERT_EQ(dst, expected) << c.width << "x" << c.height << " shift " << c.shift << " bias " << c.bias << " rows "
                           << c.rowBegin << ".." << c.rowEnd << " weights " << ::testing::PrintToString(c.weights);
}

std::vector<int16_t> randomWeights(std::mt19937& rng, uint32_t k, int lo, int hi) {
  std::vector<int16_t> w(k * k);
  for (int16_t& v : w) v = static_cast<int16_t>(std::uniform_int_distribution<int>(lo, hi)(rng));
  return w;
}

TEST_P(SimdKernelTest, Conv2DMatchesReferenceAtEverySizeBorderRowRangeAndExtreme) {
  std::mt19937 rng(21);
  for (uint32_t k : {3u, 5u}) {
    // Widths below, at and past two radii plus one vector of every target.
    for (const auto& [w, h] : {std::pair{1u, 1u}, {1u, 7u}, {7u, 1u}, {2u, 2u}, {5u, 4u}, {17u, 9u}, {20u, 3u},
                               {36u, 5u}, {37u, 2u}, {70u, 13u}, {131u, 4u}}) {
      for (const auto& [begin, end] : {std::pair{0u, h}, {0u, 1u}, {h - 1, h}, {h / 3, h / 3 + 1}}) {
        // Small weights keep most outputs inside 0..255, so rounding shows.
        expectMatchesReference({w, h, k, randomWeights(rng, k, -6, 9), begin == 0 ? 1u : 4u, 7, begin, end, w % 3}, rng);
      }
    }
    // All weights at one end of the i16 range give the largest sums, and
    // the bias at the int32 ends forces exact 64-bit sums.
    for (uint32_t shift : {0u, 16u, 31u}) {
      for (int32_t bias : {INT32_MIN, INT32_MAX}) {
        expectMatchesReference({45, 11, k, randomWeights(rng, k, -32768, 32767), shift, bias, 0, 11, 0}, rng);
        expectMatchesReference({45, 11, k, std::vector<int16_t>(k * k, bias < 0 ? 32767 : -32768), shift, bias, 0, 11, 0},
                               rng);
      }
    }
  }
}

// Weights and biases at the edges of the 16-bit window: the widest sums that
// still fit it, one step past, and shifts whose halves round upwards for
// negative sums too. Rank-1 weights take the separable path.
TEST_P(SimdKernelTest, Conv2DSumsAtTheEdgesOfSixteenBitLanesAndSeparableWeightsStayExact) {
  std::mt19937 rng(22);
  struct Row {
    std::vector<int16_t> weights;
    uint32_t shift;
    int32_t bias;
  };
  const std::vector<Row> rows = {
      {{128, 0, 0, 0, 0, 0, 0, 0, 128}, 8, 0},       // range 65280: fits with an offset
      {{128, 0, 0, 0, 1, 0, 0, 0, 128}, 8, 0},       // 65535: fits only just
      {{128, 0, 0, 0, 2, 0, 0, 0, 128}, 8, 0},       // 65790: needs 32 bits
      {{-128, 0, 0, 0, 0, 0, 0, 0, -129}, 0, 65535},  // all negative, bias pulls back
      {{1, -2, 1, -2, 4, -2, 1, -2, 1}, 1, -1},      // halves of negative sums
      {{-1, -1, -1, -1, 8, -1, -1, -1, -1}, 2, 2},   // sharpening, saturates both ways
      {{0, 0, 0, 0, 1, 0, 0, 0, 0}, 15, 16383},      // largest 16-bit shift
      {{0, 0, 0, 0, 1, 0, 0, 0, 0}, 16, 0},          // first shift past 16 bits
      {{0, 0, 0, 0, 0, 0, 0, 0, 0}, 3, -4},          // bias only: rounds -4 / 8 to 0
      {{-1, -2, -1, 0, 0, 0, 1, 2, 1}, 4, -700},     // rank 1
      {{-1, -2, -1, 0, 0, 0, 1, 2, 2}, 4, 900},      // rank 1 but for the last weight
      {{-6, 12, -6, 12, -24, 12, -6, 12, -6}, 4, 0},  // rank 1, a common factor in the pivot row
      {{1, 4, 6, 4, 1, 4, 16, 24, 16, 4, 6, 24, 36, 24, 6, 4, 16, 24, 16, 4, 1, 4, 6, 4, 1}, 8, 0},  // 5x5 binomial
      {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7, -3, 0, 3, -7, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 4, 9},  // pivot in row 2
  };
  std::vector<uint8_t> stripes(61 * 6);
  for (size_t i = 0; i < stripes.size(); ++i) stripes[i] = (i / 3) % 2 ? 255 : 0;
  for (const Row& r : rows) {
    const uint32_t k = r.weights.size() == 9 ? 3 : 5;
    expectMatchesReference({61, 6, k, r.weights, r.shift, r.bias, 0, 6, 1}, rng);
    expectMatchesReference({61, 6, k, r.weights, r.shift, r.bias, 1, 6, 0}, rng, stripes);
  }
}

struct Requant {
  int32_t multiplier;
  uint32_t shift;
  int32_t zeroPoint;
};

// The kernel against the reference; a guard byte follows the output.
void expectMatches(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b, const std::vector<uint8_t>* bias,
                   size_t M, size_t K, size_t N, Requant q, DType out) {
  std::vector<uint8_t> c(M * N + 1, 0xC3);
  std::vector<int32_t> biasValues(N);
  if (bias != nullptr) std::memcpy(biasValues.data(), bias->data(), 4 * N);  // little-endian host
  std::vector<uint8_t> expected = gencases::referenceMatMul(
      reinterpret_cast<const int8_t*>(a.data()), reinterpret_cast<const int8_t*>(b.data()),
      bias ? biasValues.data() : nullptr, static_cast<uint32_t>(M), static_cast<uint32_t>(K), static_cast<uint32_t>(N),
      q.multiplier, q.shift, q.zeroPoint, out == DType::kU8);
  expected.push_back(0xC3);
  ASSERT_TRUE(matmul({c.data(), a.data(), b.data(), bias ? bias->data() : nullptr, static_cast<uint32_t>(M),
                      static_cast<uint32_t>(K), static_cast<uint32_t>(N), q.multiplier, q.shift, q.zeroPoint, out}));
  ASSERT_EQ(c, expected) << M << "x" << K << "x" << N << " mult " << q.multiplier << " shift " << q.shift << " zp "
                         << q.zeroPoint << (bias ? " bias" : "") << (out == DType::kU8 ? " u8" : " i8");
}

TEST_P(SimdKernelTest, MatMulRandomOperandsMatchReferenceForEveryShapeAndRequantisation) {
  std::mt19937 rng(31);
  // Rows around the row blocks (1, 4, 8), columns around the panel widths
  // (8 to 32), odd K for the zero-padded last pair.
  const std::vector<std::array<size_t, 3>> shapes = {{1, 1, 1},    {4, 9, 1},   {5, 7, 7},  {2, 3, 8},  {7, 31, 17},
                                                     {9, 301, 33}, {13, 2, 64}, {8, 16, 65}, {12, 5, 31}, {3, 0, 5}};
  const std::vector<Requant> requants = {{1, 0, 0}, {1 << 30, 38, -3}, {INT32_MAX, 62, 0}, {INT32_MIN, 62, -128},
                                         {INT32_MIN, 31, 127}, {1518500250, 40, 17}};
  for (const auto& [M, K, N] : shapes) {
    const auto a = randomBytes(rng, M * K), b = randomBytes(rng, K * N), bias = randomBytes(rng, 4 * N);
    for (const Requant& q : requants) {
      for (DType out : {DType::kU8, DType::kI8}) {
        expectMatches(a, b, nullptr, M, K, N, q, out);
        expectMatches(a, b, &bias, M, K, N, q, out);
      }
    }
  }
}

TEST_P(SimdKernelTest, MatMulExtremeOperandsAndLongSumsSaturateTheAccumulatorExactly) {
  // -128 * -128 in both halves of a pair is the one sum of two products that
  // leaves 16 bits; 127 * -128 the most negative.
  for (const auto& [x, y] : {std::pair<uint8_t, uint8_t>{0x80, 0x80}, {0x7F, 0x80}, {0x7F, 0x7F}}) {
    expectMatches(std::vector<uint8_t>(9 * 64, x), std::vector<uint8_t>(64 * 40, y), nullptr, 9, 64, 40, {1, 20, 0},
                  DType::kI8);
  }
  // Past 2^17 terms, -128 * -128 products overflow 32 bits; a second row of
  // alternating signs keeps its sum small. A bias of INT32_MIN pulls back.
  std::mt19937 rng(32);
  const size_t K = 140001;
  for (size_t N : {size_t{1}, size_t{3}, size_t{17}}) {
    std::vector<uint8_t> a(2 * K, 0x80), b(K * N, 0x80), minBias(4 * N, 0);
    for (size_t k = 1; k < K; k += 2) a[K + k] = 0x7F;
    for (size_t n = 0; n < N; ++n) minBias[4 * n + 3] = 0x80;
    const std::vector<uint8_t> bias = randomBytes(rng, 4 * N);
    for (const Requant& q : {Requant{1, 0, 0}, Requant{-1, 24, 5}}) {
      expectMatches(a, b, &bias, 2, K, N, q, DType::kU8);
      expectMatches(a, b, &minBias, 2, K, N, q, DType::kI8);
    }
  }
}

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

INSTANTIATE_TEST_SUITE_P(Targets, SimdKernelTest, ::testing::ValuesIn(kTargets),
                         [](const ::testing::TestParamInfo<int64_t>& target) { return hwy::TargetName(target.param); });

}  // namespace
}  // namespace kesh::kernels
