// Throughput of the heavy kernels, each next to memcpy of the same number of
// bytes measured in the same run, so the figures compare across machines.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "format/format_defs.h"
#include "kernels/conv2d.h"
#include "kernels/matmul.h"

namespace {

using kesh::kernels::Conv2DParams;
using kesh::kernels::MatMulParams;

constexpr uint32_t kWidth = 1920, kHeight = 1080;

std::vector<uint8_t> randomBytes(size_t count, uint32_t seed) {
  std::mt19937 rng(seed);
  std::vector<uint8_t> bytes(count);
  for (uint8_t& b : bytes) b = static_cast<uint8_t>(rng());
  return bytes;
}

// Bytes a product touches once: both operands and the result.
int64_t matMulBytes(int64_t m, int64_t k, int64_t n) { return m * k + k * n + m * n; }

void BM_Memcpy(benchmark::State& state) {
  const size_t bytes = static_cast<size_t>(state.range(0));
  const std::vector<uint8_t> src = randomBytes(bytes, 1);
  std::vector<uint8_t> dst(bytes);
  for (auto _ : state) {
    std::memcpy(dst.data(), src.data(), bytes);
    benchmark::DoNotOptimize(dst.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Memcpy)
    ->Arg(int64_t{kWidth} * kHeight)
    ->Arg(matMulBytes(256, 1024, 256))
    ->Arg(matMulBytes(1024, 4096, 1));

// A separable-looking smoothing kernel: small positive weights, shift 8.
void BM_Conv2D(benchmark::State& state) {
  const uint32_t k = static_cast<uint32_t>(state.range(0));
  const std::vector<uint8_t> src = randomBytes(size_t{kWidth} * kHeight, 2);
  std::vector<uint8_t> dst(src.size());
  std::vector<uint8_t> weights;
  for (uint32_t i = 0; i < k * k; ++i) {
    weights.push_back(static_cast<uint8_t>(1 + i % 7));
    weights.push_back(0);
  }
  Conv2DParams p;
  p.dst = dst.data();
  p.dstStride = kWidth;
  p.src = src.data();
  p.srcStride = kWidth;
  p.width = kWidth;
  p.height = kHeight;
  p.rowEnd = kHeight;
  p.weights = weights.data();
  p.k = k;
  p.shift = 8;
  p.bias = -3;
  for (auto _ : state) {
    kesh::kernels::conv2d(p);
    benchmark::DoNotOptimize(dst.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * int64_t{kWidth} * kHeight);
}
BENCHMARK(BM_Conv2D)->Arg(3)->Arg(5)->Unit(benchmark::kMillisecond);

void BM_MatMul(benchmark::State& state) {
  const uint32_t m = static_cast<uint32_t>(state.range(0)), k = static_cast<uint32_t>(state.range(1)),
                 n = static_cast<uint32_t>(state.range(2));
  const std::vector<uint8_t> a = randomBytes(size_t{m} * k, 3), b = randomBytes(size_t{k} * n, 4);
  const std::vector<uint8_t> bias = randomBytes(size_t{n} * 4, 5);
  std::vector<uint8_t> c(size_t{m} * n);
  MatMulParams p;
  p.dst = c.data();
  p.a = a.data();
  p.b = b.data();
  p.bias = bias.data();
  p.m = m;
  p.k = k;
  p.n = n;
  p.multiplier = 1 << 30;
  p.shift = 40;
  p.zeroPoint = 3;
  p.outType = kesh::format::DType::kI8;
  for (auto _ : state) {
    kesh::kernels::matmul(p);
    benchmark::DoNotOptimize(c.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * matMulBytes(m, k, n));
}
BENCHMARK(BM_MatMul)->Args({256, 1024, 256})->Args({1024, 4096, 1})->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
