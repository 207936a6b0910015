#include "tone_case.h"

#include <array>

#include "program_builder.h"
#include "reference_ops.h"
#include "xorshift.h"

namespace kesh::gencases {
namespace {

constexpr uint32_t kWidth = 107;
constexpr uint32_t kHeight = 35;
constexpr uint32_t kPixels = kWidth * kHeight;
constexpr uint32_t kBytes = 3 * kPixels;
static_assert(kBytes == 11235, "the catalogue's size");
constexpr uint32_t kPatternSize = 25244;
constexpr int32_t kBlackLift = 12;
constexpr int32_t kWhiteCap = 240;

using Lut = std::array<uint8_t, 256>;
using Rgb = std::array<uint8_t, 3>;

// Hue (0..1535), saturation and value (0..255) to RGB, all in integers.
Rgb hsvToRgb(uint32_t hue, uint32_t sat, uint32_t val) {
  const uint32_t f = hue % 256;
  const auto p = static_cast<uint8_t>(val * (255 - sat) / 255);
  const auto q = static_cast<uint8_t>(val * (255 - sat * f / 255) / 255);
  const auto t = static_cast<uint8_t>(val * (255 - sat * (255 - f) / 255) / 255);
  const auto v = static_cast<uint8_t>(val);
  switch (hue / 256) {
    case 0: return {v, t, p};
    case 1: return {q, v, p};
    case 2: return {p, v, t};
    case 3: return {p, q, v};
    case 4: return {t, p, v};
    default: return {v, p, q};
  }
}

// Hue across, brightness down, a grey bar and a dark disc, lightly noisy.
std::vector<uint8_t> makePicture() {
  Xorshift64 rng(0x544F4E45u);
  std::vector<uint8_t> rgb(kBytes);
  for (uint32_t y = 0; y < kHeight; ++y) {
    for (uint32_t x = 0; x < kWidth; ++x) {
      Rgb pixel = hsvToRgb(x * 1535 / (kWidth - 1), 200, 60 + y * 195 / (kHeight - 1));
      if (x >= 90 && x < 100) pixel.fill(static_cast<uint8_t>(y * 255 / (kHeight - 1)));
      const int32_t dx = static_cast<int32_t>(x) - 30;
      const int32_t dy = static_cast<int32_t>(y) - 17;
      if (dx * dx + dy * dy <= 81) pixel = {40, 24, 30};
      for (uint32_t c = 0; c < 3; ++c) {
        rgb[3 * (y * kWidth + x) + c] = static_cast<uint8_t>(saturate(pixel[c] + rng.uniform(-3, 3), 0, 255));
      }
    }
  }
  return rgb;
}

// A gentle S-curve (half identity, half smoothstep) with a channel gain in
// sixteenths, which warms the picture.
Lut toneCurve(int32_t gainSixteenths) {
  Lut lut{};
  for (int64_t i = 0; i < 256; ++i) {
    const int64_t smooth = (3 * i * i * 255 - 2 * i * i * i) / (255 * 255);
    lut[static_cast<size_t>(i)] = static_cast<uint8_t>(saturate((i + smooth + 1) / 2 * gainSixteenths / 16, 0, 255));
  }
  return lut;
}

std::array<Lut, 3> channelCurves() { return {toneCurve(18), toneCurve(16), toneCurve(13)}; }

std::vector<uint8_t> referenceGrade(const std::vector<uint8_t>& rgb) {
  const std::array<Lut, 3> curves = channelCurves();
  std::vector<uint8_t> out(rgb.size());
  for (uint32_t i = 0; i < kPixels; ++i) {
    Rgb c;
    for (uint32_t ch = 0; ch < 3; ++ch) c[ch] = curves[ch][rgb[3 * i + ch]];
    const uint8_t luma = averageU8(averageU8(c[0], c[2]), c[1]);
    for (uint32_t ch = 0; ch < 3; ++ch) {
      out[3 * i + ch] = static_cast<uint8_t>(saturate(averageU8(c[ch], luma), kBlackLift, kWhiteCap));
    }
  }
  return out;
}

// Internal 0 holds the three planes (R, G, B), internal 1 the luma plane and
// internal 2 a scratch plane; the constant data hold the three curves.
Program gradeProgram() {
  const At source{argBuffer(0), 0};
  const uint32_t target = argBuffer(1);
  auto plane = [](uint32_t channel) { return At{internalBuffer(0), channel * kPixels}; };
  const At luma{internalBuffer(1), 0};
  const At scratch{internalBuffer(2), 0};

  Program program;
  program.args = {{65540, kBytes, false, "GI_65540"}, {65544, kBytes, false, "GO_65544"}};
  program.internalSizes = {kBytes, kPixels, kPixels};
  for (const Lut& curve : channelCurves()) program.constData.insert(program.constData.end(), curve.begin(), curve.end());
  for (uint32_t ch = 0; ch < 3; ++ch) {
    program.ops.push_back(copy2dOp(plane(ch), 1, {source.ref, ch}, 3, 1, kPixels));
    program.ops.push_back(lutOp(plane(ch), plane(ch), kPixels, {constBuffer(), ch * 256}));
  }
  program.ops.push_back(binaryOp(BinaryFunc::kAvg, DType::kU8, scratch, plane(0), plane(2), kPixels));
  program.ops.push_back(binaryOp(BinaryFunc::kAvg, DType::kU8, luma, scratch, plane(1), kPixels));
  for (uint32_t ch = 0; ch < 3; ++ch) {
    program.ops.push_back(binaryOp(BinaryFunc::kAvg, DType::kU8, plane(ch), plane(ch), luma, kPixels));
  }
  program.ops.push_back(unaryOp(UnaryFunc::kMaxI, DType::kU8, plane(0), plane(0), kBytes, kBlackLift));
  program.ops.push_back(unaryOp(UnaryFunc::kMinI, DType::kU8, plane(0), plane(0), kBytes, kWhiteCap));
  for (uint32_t ch = 0; ch < 3; ++ch) program.ops.push_back(copy2dOp({target, ch}, 3, plane(ch), 1, 1, kPixels));
  return program;
}

}  // namespace

GeneratedCase makeToneCase() {
  const std::vector<uint8_t> picture = makePicture();
  GeneratedCase made;
  made.pattern = encodeChecked(gradeProgram(), kPatternSize, "case 4");
  made.inputs = {{"GI_65540", picture}};
  made.goldens = {{"GO_65544", referenceGrade(picture)}};
  return made;
}

}  // namespace kesh::gencases
