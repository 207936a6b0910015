// Our conv2d and matmul kernels next to the libraries a user would pick, single thread, in one run: each
// pair is first checked to agree bit for bit where both compute the same thing, then timed alternately.
#include <dnnl.h>
#include <gemmlowp/public/gemmlowp.h>
#include <unistd.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "kernels/conv2d.h"
#include "kernels/matmul.h"
#include "random_bytes.h"
#include "reference_ops.h"

namespace {

using kesh::bench::randomBytes;
using Bytes = std::vector<uint8_t>;

double median(std::vector<double> v) {
  std::nth_element(v.begin(), v.begin() + v.size() / 2, v.end());
  return v[v.size() / 2];
}

// Times the two alternately and prints a table row of the medians (ms, ms, ours / theirs).
void race(const std::string& work, const std::string& peer, int rounds, const std::function<void()>& ours,
          const std::function<void()>& theirs) {
  const auto seconds = [](const std::function<void()>& body) {
    const auto start = std::chrono::steady_clock::now();
    body();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  std::vector<double> a, b, r;
  for (int i = 0; i < rounds; ++i) {
    a.push_back(seconds(ours));
    b.push_back(seconds(theirs));
    r.push_back(a.back() / b.back());
  }
  std::printf("| %-46s | %-26s | %8.3f | %8.3f | %5.2f |\n", work.c_str(), peer.c_str(), median(a) * 1e3,
              median(b) * 1e3, median(r));
}

void check(bool agree, const std::string& what) {
  if (agree) return;
  std::fprintf(stderr, "results disagree: %s\n", what.c_str());
  std::exit(1);
}

constexpr int kWidth = 1920, kHeight = 1080;

struct ConvCase {
  std::string name;
  int k;
  std::vector<int16_t> weights;
  uint32_t shift;
  int32_t bias;
  std::vector<float> factor;  // the 1-D factor of rank-1 weights; empty for general ones
};

// OpenCV computes in float: with these weights every sum is exact, so the two may differ only where
// the exact result is a half, which it rounds to even and we round up. A pixel is such a half exactly
// when one less in the sum rounds one lower.
void convRow(const ConvCase& c, const Bytes& src) {
  const auto k = static_cast<uint32_t>(c.k);
  Bytes ours(src.size()), w;  // w: the weights as little-endian i16
  for (int16_t v : c.weights) w.insert(w.end(), {uint8_t(v & 0xFF), uint8_t((v >> 8) & 0xFF)});
  const auto oursRun = [&] {
    kesh::kernels::conv2d(
        {ours.data(), kWidth, src.data(), kWidth, kWidth, kHeight, 0, kHeight, w.data(), k, c.shift, c.bias});
  };
  const cv::Mat in(kHeight, kWidth, CV_8U, const_cast<uint8_t*>(src.data()));
  cv::Mat out, kernel(c.k, c.k, CV_32F);
  for (int i = 0; i < c.k * c.k; ++i) kernel.at<float>(i / c.k, i % c.k) = c.weights[i] / float(1 << c.shift);
  const cv::Mat kx = c.factor.empty() ? cv::Mat() : cv::Mat(1, c.k, CV_32F, const_cast<float*>(c.factor.data()));
  const std::string peer = c.factor.empty() ? "OpenCV filter2D" : "OpenCV sepFilter2D";
  const double delta = c.bias / double(1 << c.shift);
  const auto theirs = [&] {
    if (c.factor.empty()) cv::filter2D(in, out, CV_8U, kernel, cv::Point(-1, -1), delta, cv::BORDER_REPLICATE);
    if (!c.factor.empty()) cv::sepFilter2D(in, out, CV_8U, kx, kx, cv::Point(-1, -1), delta, cv::BORDER_REPLICATE);
  };
  oursRun();
  theirs();
  const auto reference = [&](int32_t bias) {
    return kesh::gencases::referenceConv2d(src, kWidth, kHeight, c.weights, k, c.shift, bias);
  };
  check(ours == reference(c.bias), c.name + ": reference");
  const Bytes lower = reference(c.bias - 1);
  size_t ties = 0;
  for (size_t i = 0; i < ours.size(); ++i) {
    if (ours[i] == out.data[i]) continue;
    check(ours[i] == out.data[i] + 1 && lower[i] == out.data[i], c.name + " vs " + peer);
    ++ties;
  }
  std::printf("  %s: identical to %s except %zu exact halves (rounded to even there)\n", c.name.c_str(),
              peer.c_str(), ties);
  race(c.name, peer, 21, oursRun, theirs);
}

// The same requantisation as the operation, applied to a peer's int32 sums.
void requantise(const std::vector<int32_t>& sums, const std::vector<int32_t>& bias, uint32_t n, Bytes* out) {
  for (size_t i = 0; i < sums.size(); ++i) {
    (*out)[i] = kesh::gencases::requantize(int64_t{sums[i]} + bias[i % n], 1 << 30, 40, 3, false);
  }
}

void matmulRow(uint32_t m, uint32_t k, uint32_t n) {
  const Bytes a = randomBytes(size_t{m} * k, 3), b = randomBytes(size_t{k} * n, 4);
  std::vector<int32_t> bias(n), sums(size_t{m} * n), dsums(sums.size());
  for (uint32_t j = 0; j < n; ++j) bias[j] = static_cast<int32_t>(j * 7919 % 20001) - 10000;
  Bytes ours(sums.size()), lowp(sums.size()), dnnl(sums.size());
  const auto* a8 = reinterpret_cast<const int8_t*>(a.data());
  const auto* b8 = reinterpret_cast<const int8_t*>(b.data());
  const auto oursRun = [&] {
    kesh::kernels::matmul({ours.data(), a.data(), b.data(), reinterpret_cast<const uint8_t*>(bias.data()), m, k, n,
                           1 << 30, 40, 3, kesh::format::DType::kI8});
  };
  // gemmlowp takes u8 with offsets: (x ^ 0x80) - 128 is the i8 value x.
  // B goes in column-major, the layout gemmlowp packs fastest.
  Bytes aU(a), bU(b.size());
  for (uint8_t& v : aU) v ^= 0x80;
  for (size_t i = 0; i < b.size(); ++i) bU[i % n * k + i / n] = b[i] ^ 0x80;
  gemmlowp::GemmContext context;
  context.set_max_num_threads(1);
  const auto lowpRun = [&] {
    const gemmlowp::MatrixMap<const uint8_t, gemmlowp::MapOrder::RowMajor> lhs(aU.data(), m, k);
    const gemmlowp::MatrixMap<const uint8_t, gemmlowp::MapOrder::ColMajor> rhs(bU.data(), k, n);
    gemmlowp::MatrixMap<int32_t, gemmlowp::MapOrder::RowMajor> result(sums.data(), m, n);
    gemmlowp::GemmWithOutputPipeline<uint8_t, int32_t, gemmlowp::DefaultL8R8BitDepthParams>(
        &context, lhs, rhs, &result, -128, -128, std::make_tuple());
    requantise(sums, bias, n, &lowp);
  };
  const int32_t zero = 0;
  const auto dnnlRun = [&] {
    dnnl_gemm_s8s8s32('N', 'N', 'F', m, n, k, 1.0f, a8, k, 0, b8, n, 0, 0.0f, dsums.data(), n, &zero);
    requantise(dsums, bias, n, &dnnl);
  };
  oursRun();
  lowpRun();
  dnnlRun();
  const std::string name =
      "int8 matmul + requant " + std::to_string(m) + "x" + std::to_string(k) + "x" + std::to_string(n);
  check(ours == kesh::gencases::referenceMatMul(a8, b8, bias.data(), m, k, n, 1 << 30, 40, 3, false), name);
  check(lowp == ours, name + " vs gemmlowp");
  check(dnnl == ours, name + " vs oneDNN");
  std::printf("  %s: identical to gemmlowp and oneDNN\n", name.c_str());
  const int rounds = m * k * n > (1u << 24) ? 11 : 51;
  race(name, "gemmlowp", rounds, oursRun, lowpRun);
  race(name, "oneDNN gemm_s8s8s32", rounds, oursRun, dnnlRun);
}

}  // namespace

int main(int, char** argv) {
  // OpenMP reads its thread count when the process starts, so the single
  // thread is set for a fresh copy of this process.
  const char* threads = std::getenv("OMP_NUM_THREADS");
  if (threads == nullptr || std::string(threads) != "1") {
    setenv("OMP_NUM_THREADS", "1", 1);
    execv("/proc/self/exe", argv);
    std::perror("execv");
    return 1;
  }
  cv::setNumThreads(1);
  const Bytes src = randomBytes(size_t{kWidth} * kHeight, 2);
  std::printf("Checks, then | work (1920x1080 u8 for conv) | peer | ours ms | peer ms | ours / peer |:\n");
  convRow({"conv 3x3 general signed weights", 3, {-3, 5, -1, 7, 12, -6, 2, -4, 8}, 4, -5, {}}, src);
  convRow({"conv 5x5 general signed weights", 5,
           {1, -2, 3, -1, 2, -3, 5, -7, 4, 1, 2, 9, 16, -8, 3, -1, 6, -5, 2, -2, 1, 3, -4, 2, 1}, 5, 7, {}}, src);
  convRow({"conv 3x3 binomial (rank 1)", 3, {1, 2, 1, 2, 4, 2, 1, 2, 1}, 4, 0, {0.25f, 0.5f, 0.25f}}, src);
  convRow({"conv 5x5 binomial (rank 1)", 5,
           {1, 4, 6, 4, 1, 4, 16, 24, 16, 4, 6, 24, 36, 24, 6, 4, 16, 24, 16, 4, 1, 4, 6, 4, 1}, 8, 0,
           {1 / 16.f, 4 / 16.f, 6 / 16.f, 4 / 16.f, 1 / 16.f}}, src);
  for (const auto& [m, k, n] : {std::array<uint32_t, 3>{256, 1024, 256}, {192, 192, 192}, {16, 256, 204}}) {
    matmulRow(m, k, n);
  }
  return 0;
}
