// Throughput of the heavy kernels, each next to memcpy of the same number of
// bytes measured in the same run, so the figures compare across machines.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "kernels/conv2d.h"
#include "kernels/matmul.h"
#include "random_bytes.h"

namespace {

using kesh::bench::randomBytes;

constexpr uint32_t kWidth = 1920, kHeight = 1080;  // conv2d 3x3 over a u8 plane
constexpr uint32_t kM = 256, kK = 1024, kN = 256;  // int8 matmul
constexpr int64_t kMatMulBytes = int64_t{kM} * kK + int64_t{kK} * kN + int64_t{kM} * kN;  // touched once each

template <typename Body>
void measure(benchmark::State& state, int64_t bytes, const std::vector<uint8_t>& out, Body body) {
  for (auto _ : state) {
    body();
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * bytes);
}

void BM_Memcpy(benchmark::State& state) {
  const size_t bytes = static_cast<size_t>(state.range(0));
  const std::vector<uint8_t> src = randomBytes(bytes, 1);
  std::vector<uint8_t> dst(bytes);
  measure(state, state.range(0), dst, [&] { std::memcpy(dst.data(), src.data(), bytes); });
}
BENCHMARK(BM_Memcpy)->Arg(int64_t{kWidth} * kHeight)->Arg(kMatMulBytes);

// Smoothing weights are rank 1 (the separable path); sharpening ones are
// general (16-bit lanes); large ones need 32-bit lanes.
const std::vector<int16_t>& convWeights(int64_t kind) {
  static const std::vector<int16_t> kinds[] = {{1, 2, 1, 2, 4, 2, 1, 2, 1},
                                               {-3, 5, -1, 7, 12, -6, 2, -4, 8},
                                               {-3000, 5000, -100, 7000, 12000, -6000, 2000, -4000, 8000}};
  return kinds[kind];
}

void BM_Conv2D3x3(benchmark::State& state) {
  const std::vector<uint8_t> src = randomBytes(size_t{kWidth} * kHeight, 2);
  std::vector<uint8_t> dst(src.size()), weights;
  for (int16_t w : convWeights(state.range(0))) weights.insert(weights.end(), {uint8_t(w & 0xFF), uint8_t(w >> 8)});
  const kesh::kernels::Conv2DParams p{dst.data(), kWidth, src.data(), kWidth, kWidth, kHeight, 0, kHeight,
                                      weights.data(), 3, 8, -3};
  measure(state, int64_t{kWidth} * kHeight, dst, [&] { kesh::kernels::conv2d(p); });
}
BENCHMARK(BM_Conv2D3x3)->ArgName("rank1_general_wide")->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

void BM_MatMulInt8(benchmark::State& state) {
  const std::vector<uint8_t> a = randomBytes(size_t{kM} * kK, 3), b = randomBytes(size_t{kK} * kN, 4);
  const std::vector<uint8_t> bias = randomBytes(size_t{kN} * 4, 5);
  std::vector<uint8_t> c(size_t{kM} * kN);
  const kesh::kernels::MatMulParams p{c.data(), a.data(), b.data(), bias.data(), kM, kK, kN, 1 << 30, 40, 3,
                                      kesh::format::DType::kI8};
  measure(state, kMatMulBytes, c, [&] { kesh::kernels::matmul(p); });
}
BENCHMARK(BM_MatMulInt8)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
