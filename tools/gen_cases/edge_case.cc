#include "edge_case.h"

#include <array>

#include "program_builder.h"
#include "reference_ops.h"
#include "test_picture.h"

namespace kesh::gencases {
namespace {

constexpr uint32_t kWidth = 1920;
constexpr uint32_t kHeight = 1080;
constexpr uint32_t kPlane = kWidth * kHeight;
constexpr uint32_t kPatternSize = 129404;
constexpr uint32_t kBlurBands = 4;

// A signed gradient g is stored as (g + 1024) / 8, so 128 stands for zero and
// the full Sobel range of a u8 picture fits in u8.
constexpr uint32_t kGradientShift = 3;
constexpr int32_t kGradientBias = 128 << kGradientShift;
constexpr uint8_t kGradientZero = 128;

const std::vector<int16_t> kGaussian = {1, 4,  6,  4,  1, 4, 16, 24, 16, 4, 6, 24, 36,
                                        24, 6, 4, 16, 24, 16, 4, 1, 4,  6,  4, 1};
const std::vector<int16_t> kSobelX = {-1, 0, 1, -2, 0, 2, -1, 0, 1};
const std::vector<int16_t> kSobelY = {-1, -2, -1, 0, 0, 0, 1, 2, 1};

// Constant data layout.
constexpr uint32_t kGaussianOffset = 0;
constexpr uint32_t kSobelXOffset = 64;
constexpr uint32_t kSobelYOffset = 96;
constexpr uint32_t kCurveOffset = 128;
constexpr uint32_t kConstSize = kCurveOffset + 256;

// Doubles the edge strength and lifts the weak edges, so that faint
// structure stays visible in the map.
std::array<uint8_t, 256> edgeCurve() {
  std::array<uint8_t, 256> curve{};
  for (int64_t v = 0; v < 256; ++v) {
    const int64_t doubled = saturate(2 * v, 0, 255);
    curve[static_cast<size_t>(v)] = static_cast<uint8_t>(255 - (255 - doubled) * (255 - doubled) / 255);
  }
  return curve;
}

std::vector<uint8_t> referenceEdges(const std::vector<uint8_t>& picture) {
  const std::vector<uint8_t> blurred = referenceConv2d(picture, kWidth, kHeight, kGaussian, 5, 8, 0);
  const std::vector<uint8_t> gx = referenceConv2d(blurred, kWidth, kHeight, kSobelX, 3, kGradientShift, kGradientBias);
  const std::vector<uint8_t> gy = referenceConv2d(blurred, kWidth, kHeight, kSobelY, 3, kGradientShift, kGradientBias);
  const std::array<uint8_t, 256> curve = edgeCurve();
  std::vector<uint8_t> edges(kPlane);
  for (uint32_t i = 0; i < kPlane; ++i) {
    const int64_t magnitude = absolute(int64_t{gx[i]} - kGradientZero) + absolute(int64_t{gy[i]} - kGradientZero);
    edges[i] = curve[static_cast<size_t>(saturate(magnitude, 0, 255))];
  }
  return edges;
}

void putKernel(std::vector<uint8_t>& data, uint32_t offset, const std::vector<int16_t>& kernel) {
  for (size_t i = 0; i < kernel.size(); ++i) {
    const auto word = static_cast<uint16_t>(kernel[i]);
    data[offset + 2 * i] = static_cast<uint8_t>(word);
    data[offset + 2 * i + 1] = static_cast<uint8_t>(word >> 8);
  }
}

std::vector<uint8_t> constantData() {
  std::vector<uint8_t> data(kConstSize, 0);
  putKernel(data, kGaussianOffset, kGaussian);
  putKernel(data, kSobelXOffset, kSobelX);
  putKernel(data, kSobelYOffset, kSobelY);
  const std::array<uint8_t, 256> curve = edgeCurve();
  for (size_t i = 0; i < curve.size(); ++i) data[kCurveOffset + i] = curve[i];
  return data;
}

Conv2dParams planeConv(At dst, At src, uint32_t kernelOffset, uint32_t k, uint32_t shift, int32_t bias) {
  return {dst, src, {constBuffer(), kernelOffset}, kWidth, kWidth, kHeight, 0, kHeight, k, shift, bias};
}

// Internal 0: blurred picture, 1 and 2: the gradients, 3: the gradient zero.
// The blur runs in horizontal bands, as it would be split over cores.
Program edgeProgram() {
  const At picture{argBuffer(0), 0};
  const At edges{argBuffer(1), 0};
  const At blurred{internalBuffer(0), 0};
  const At gx{internalBuffer(1), 0};
  const At gy{internalBuffer(2), 0};
  const At zero{internalBuffer(3), 0};

  Program program;
  program.args = {{65542, kPlane, false, "GI_65542"}, {65548, kPlane, false, "GO_65548"}};
  program.internalSizes = {kPlane, kPlane, kPlane, kPlane};
  program.constData = constantData();
  for (uint32_t band = 0; band < kBlurBands; ++band) {
    Conv2dParams blur = planeConv(blurred, picture, kGaussianOffset, 5, 8, 0);
    blur.rowBegin = band * kHeight / kBlurBands;
    blur.rowEnd = (band + 1) * kHeight / kBlurBands;
    program.ops.push_back(conv2dOp(blur));
  }
  program.ops.push_back(conv2dOp(planeConv(gx, blurred, kSobelXOffset, 3, kGradientShift, kGradientBias)));
  program.ops.push_back(conv2dOp(planeConv(gy, blurred, kSobelYOffset, 3, kGradientShift, kGradientBias)));
  program.ops.push_back(fillOp(zero, kPlane, kGradientZero));
  program.ops.push_back(binaryOp(BinaryFunc::kAbsDiff, DType::kU8, gx, gx, zero, kPlane));
  program.ops.push_back(binaryOp(BinaryFunc::kAbsDiff, DType::kU8, gy, gy, zero, kPlane));
  program.ops.push_back(binaryOp(BinaryFunc::kAdd, DType::kU8, gx, gx, gy, kPlane));
  program.ops.push_back(lutOp(edges, gx, kPlane, {constBuffer(), kCurveOffset}));
  return program;
}

}  // namespace

GeneratedCase makeEdgeCase() {
  const std::vector<uint8_t> picture = makeTestPicture(kWidth, kHeight);
  GeneratedCase made;
  made.pattern = encodeChecked(edgeProgram(), kPatternSize, "case 5");
  made.inputs = {{"GI_65542", picture}, {"GO_65548", std::vector<uint8_t>(kPlane, 0)}};
  // The source must come out unchanged.
  made.goldens = {{"GI_65542", picture}, {"GO_65548", referenceEdges(picture)}};
  return made;
}

}  // namespace kesh::gencases
