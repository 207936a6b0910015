// Our conv2d and matmul kernels next to the libraries a user would pick, single thread, in one run: each
// pair is first checked to agree bit for bit where both compute the same thing, then timed alternately.
#include <dnnl.h>
#include <gemmlowp/public/gemmlowp.h>
#include <unistd.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
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
using Clock = std::chrono::steady_clock;

// Times the two alternately and prints a table row of the medians (ms, ms, ours / theirs).
void race(const std::string& work, const std::string& peer, int rounds, const std::function<void()>& ours,
          const std::function<void()>& theirs) {
  ours();
  theirs();  // warm caches and lazy initialisation
  std::vector<double> a, b, r;
  const auto seconds = [](const std::function<void()>& body) {
    const auto start = Clock::now();
    body();
    return std::chrono::duration<double>(Clock::now() - start).count();
  };
  for (int i = 0; i < rounds; ++i) {
    a.push_back(seconds(ours));
    b.push_back(seconds(theirs));
    r.push_back(a.back() / b.back());
  }
  const auto median = [](std::vector<double> v) {
    std::nth_element(v.begin(), v.begin() + v.size() / 2, v.end());
    return v[v.size() / 2];
  };
  std::printf("| %-46s | %-26s | %8.3f | %8.3f | %5.2f |\n", work.c_str(), peer.c_str(), median(a) * 1e3,
              median(b) * 1e3, median(r));
}

[[noreturn]] void fail(const std::string& what) {
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
};

// OpenCV computes in float: with these weights every sum is exact, so the two differ only where
// the exact result is a half, which it rounds to even and we round up.
void checkAgainstOpenCV(const ConvCase& c, const std::string& peer, const std::vector<uint8_t>& ours,
                        const cv::Mat& theirs, const std::vector<uint8_t>& src) {
  const std::vector<uint8_t> ref = kesh::gencases::referenceConv2d(src, kWidth, kHeight, c.weights, c.k, c.shift, c.bias);
  if (ours != ref) fail(c.name + ": kernel against the reference");
  size_t ties = 0;
  for (size_t i = 0; i < ours.size(); ++i) {
    if (ours[i] == theirs.data[i]) continue;
    // Recompute the exact sum to see whether this pixel is a tie.
    const int y = static_cast<int>(i / kWidth), x = static_cast<int>(i % kWidth), r = c.k / 2;
    int64_t acc = c.bias;
    for (int a = 0; a < c.k; ++a) {
      for (int b = 0; b < c.k; ++b) {
        const int sy = std::clamp(y + a - r, 0, kHeight - 1), sx = std::clamp(x + b - r, 0, kWidth - 1);
        acc += int64_t{c.weights[a * c.k + b]} * src[size_t(sy) * kWidth + sx];
      }
    }
    const int64_t mask = (int64_t{1} << c.shift) - 1;
    if ((acc & mask) != (int64_t{1} << (c.shift - 1)) || ours[i] != theirs.data[i] + 1) fail(c.name + " vs " + peer);
    ++ties;
  }
  std::printf("  %s: identical to %s except %zu exact halves (rounded to even there)\n", c.name.c_str(),
              peer.c_str(), ties);
}

void convRow(const ConvCase& c, const std::vector<uint8_t>& src, bool separable, const std::vector<float>& factor) {
  std::vector<uint8_t> ours(src.size());
  std::vector<uint8_t> w;  // little-endian i16
  for (int16_t v : c.weights) w.insert(w.end(), {uint8_t(v & 0xFF), uint8_t((v >> 8) & 0xFF)});
  const kesh::kernels::Conv2DParams p{ours.data(), kWidth, src.data(), kWidth, kWidth, kHeight, 0, kHeight,
                                      w.data(), static_cast<uint32_t>(c.k), c.shift, c.bias};
  const cv::Mat in(kHeight, kWidth, CV_8U, const_cast<uint8_t*>(src.data()));
  cv::Mat out;
  const float scale = 1.0f / static_cast<float>(1 << c.shift);
  std::function<void()> theirs;
  if (separable) {
    const cv::Mat kx(1, c.k, CV_32F, const_cast<float*>(factor.data()));
    theirs = [&, kx] { cv::sepFilter2D(in, out, CV_8U, kx, kx, cv::Point(-1, -1), c.bias * scale, cv::BORDER_REPLICATE); };
  } else {
    cv::Mat kernel(c.k, c.k, CV_32F);
    for (int i = 0; i < c.k * c.k; ++i) kernel.at<float>(i / c.k, i % c.k) = c.weights[i] * scale;
    theirs = [&, kernel] { cv::filter2D(in, out, CV_8U, kernel, cv::Point(-1, -1), c.bias * scale, cv::BORDER_REPLICATE); };
  }
  const auto oursRun = [&] { kesh::kernels::conv2d(p); };
  oursRun();
  theirs();
  const std::string peer = separable ? "OpenCV sepFilter2D" : "OpenCV filter2D";
  checkAgainstOpenCV(c, peer, ours, out, src);
  race(c.name, peer, 21, oursRun, theirs);
}

struct Shape {
  uint32_t m, k, n;
};

// The same requantisation as the operation, applied to a peer's int32 sums.
void requantise(const std::vector<int32_t>& sums, const std::vector<int32_t>& bias, uint32_t n, uint8_t* out) {
  for (size_t i = 0; i < sums.size(); ++i) {
    out[i] = kesh::gencases::requantize(int64_t{sums[i]} + bias[i % n], 1 << 30, 40, 3, false);
  }
}

void matmulRow(const Shape& s) {
  const std::vector<uint8_t> a = randomBytes(size_t{s.m} * s.k, 3), b = randomBytes(size_t{s.k} * s.n, 4);
  std::vector<int32_t> bias(s.n);
  for (uint32_t j = 0; j < s.n; ++j) bias[j] = static_cast<int32_t>(j * 7919 % 20001) - 10000;
  std::vector<uint8_t> ours(size_t{s.m} * s.n), lowp(ours.size()), dnnl(ours.size());
  const kesh::kernels::MatMulParams p{ours.data(), a.data(), b.data(), reinterpret_cast<const uint8_t*>(bias.data()),
                                      s.m, s.k, s.n, 1 << 30, 40, 3, kesh::format::DType::kI8};
  const auto oursRun = [&] { kesh::kernels::matmul(p); };

  // gemmlowp takes u8 with offsets: (x ^ 0x80) - 128 is the i8 value x.
  // B goes in column-major, the layout gemmlowp packs fastest.
  std::vector<uint8_t> aU(a), bU(b.size());
  for (uint8_t& v : aU) v ^= 0x80;
  for (size_t k = 0; k < s.k; ++k) {
    for (size_t j = 0; j < s.n; ++j) bU[j * s.k + k] = b[k * s.n + j] ^ 0x80;
  }
  std::vector<int32_t> sums(ours.size());
  gemmlowp::GemmContext context;
  context.set_max_num_threads(1);
  const auto lowpRun = [&] {
    const gemmlowp::MatrixMap<const uint8_t, gemmlowp::MapOrder::RowMajor> lhs(aU.data(), s.m, s.k);
    const gemmlowp::MatrixMap<const uint8_t, gemmlowp::MapOrder::ColMajor> rhs(bU.data(), s.k, s.n);
    gemmlowp::MatrixMap<int32_t, gemmlowp::MapOrder::RowMajor> result(sums.data(), s.m, s.n);
    gemmlowp::GemmWithOutputPipeline<uint8_t, int32_t, gemmlowp::DefaultL8R8BitDepthParams>(
        &context, lhs, rhs, &result, -128, -128, std::make_tuple());
    requantise(sums, bias, s.n, lowp.data());
  };
  std::vector<int32_t> dsums(ours.size());
  const int32_t zero = 0;
  const auto dnnlRun = [&] {
    dnnl_gemm_s8s8s32('N', 'N', 'F', s.m, s.n, s.k, 1.0f, reinterpret_cast<const int8_t*>(a.data()), s.k, 0,
                      reinterpret_cast<const int8_t*>(b.data()), s.n, 0, 0.0f, dsums.data(), s.n, &zero);
    requantise(dsums, bias, s.n, dnnl.data());
  };
  oursRun();
  lowpRun();
  dnnlRun();
  const std::vector<uint8_t> ref =
      kesh::gencases::referenceMatMul(reinterpret_cast<const int8_t*>(a.data()), reinterpret_cast<const int8_t*>(b.data()),
                                      bias.data(), s.m, s.k, s.n, 1 << 30, 40, 3, false);
  const std::string name = "int8 matmul + requant " + std::to_string(s.m) + "x" + std::to_string(s.k) + "x" +
                           std::to_string(s.n);
  if (ours != ref) fail(name + ": kernel against the reference");
  if (lowp != ours) fail(name + " vs gemmlowp");
  if (dnnl != ours) fail(name + " vs oneDNN");
  std::printf("  %s: identical to gemmlowp and oneDNN\n", name.c_str());
  const int rounds = s.m * s.k * s.n > (1u << 24) ? 11 : 51;
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
  const std::vector<uint8_t> src = randomBytes(size_t{kWidth} * kHeight, 2);
  std::printf("Checks:\n");
  std::printf("| %-46s | %-26s | %8s | %8s | %5s |\n", "work (1920x1080 u8 for conv)", "peer", "ours ms", "peer ms",
              "ratio");
  std::printf("|%s|%s|----------|----------|-------|\n", std::string(48, '-').c_str(), std::string(28, '-').c_str());
  convRow({"conv 3x3 general signed weights", 3, {-3, 5, -1, 7, 12, -6, 2, -4, 8}, 4, -5}, src, false, {});
  convRow({"conv 5x5 general signed weights", 5,
           {1, -2, 3, -1, 2, -3, 5, -7, 4, 1, 2, 9, 16, -8, 3, -1, 6, -5, 2, -2, 1, 3, -4, 2, 1}, 5, 7},
          src, false, {});
  convRow({"conv 3x3 binomial (rank 1)", 3, {1, 2, 1, 2, 4, 2, 1, 2, 1}, 4, 0}, src, true, {0.25f, 0.5f, 0.25f});
  convRow({"conv 5x5 binomial (rank 1)", 5, {1, 4, 6, 4, 1, 4, 16, 24, 16, 4, 6, 24, 36, 24, 6, 4, 16, 24, 16, 4, 1, 4, 6, 4, 1},
           8, 0},
          src, true, {1 / 16.f, 4 / 16.f, 6 / 16.f, 4 / 16.f, 1 / 16.f});
  for (const Shape& s : {Shape{256, 1024, 256}, Shape{192, 192, 192}, Shape{16, 256, 204}}) matmulRow(s);
  return 0;
}
