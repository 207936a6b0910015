#include "mlp_cases.h"

#include <algorithm>

#include "program_builder.h"
#include "reference_ops.h"
#include "xorshift.h"

namespace kesh::gencases {
namespace {

constexpr uint32_t kRows = 16;
constexpr uint32_t kInputs = 256;
constexpr uint32_t kHidden = 204;
constexpr uint32_t kOutputs = 192;
constexpr uint32_t kShift = 24;
constexpr int32_t kOutputZeroPoint = 128;
constexpr uint32_t kPatternSize = 25312;

// auto_buf_name_1 holds, back to back: W1 (inputs x hidden), W2 (hidden x
// outputs) and the output bias (one i32 per output). The first layer has no
// bias of its own; the sizes are chosen so the three fill the buffer exactly.
constexpr uint32_t kW1Offset = 0;
constexpr uint32_t kW2Offset = kW1Offset + kInputs * kHidden;
constexpr uint32_t kBiasOffset = kW2Offset + kHidden * kOutputs;
constexpr uint32_t kParamsSize = kBiasOffset + 4 * kOutputs;
static_assert(kRows * kInputs == 4096 && kParamsSize == 92160 && kRows * kOutputs == 3072,
              "the buffers must keep the catalogue's sizes");

constexpr uint32_t kFeatures = 0;  // argument table positions
constexpr uint32_t kParams = 1;
constexpr uint32_t kResult = 2;

/// The layer's data and the requantisation chosen for it.
struct Model {
  std::vector<uint8_t> features;  // kRows x kInputs i8
  std::vector<uint8_t> params;    // W1, W2, bias as laid out above
  int32_t hiddenMultiplier = 0;
  int32_t outputMultiplier = 0;
};

At arg(uint32_t position, uint32_t offset) { return {argBuffer(position), offset}; }
At internal(uint32_t number, uint32_t offset) { return {internalBuffer(number), offset}; }
const At kNoBias{format::kNoBuffer, 0};

// Feature rows look like sampled periodic signals of different frequencies
// with a little sensor noise.
std::vector<uint8_t> makeFeatures(Xorshift64& rng) {
  std::vector<uint8_t> features(kRows * kInputs);
  for (uint32_t row = 0; row < kRows; ++row) {
    for (uint32_t col = 0; col < kInputs; ++col) {
      const int32_t phase = static_cast<int32_t>((col * (row + 2) * 3 + row * 29) % 256);
      const int32_t triangle = phase < 128 ? phase - 64 : 191 - phase;
      const int32_t value = triangle * 3 / 2 + rng.uniform(-10, 10);
      features[row * kInputs + col] = static_cast<uint8_t>(static_cast<int8_t>(saturate(value, -128, 127)));
    }
  }
  return features;
}

std::vector<uint8_t> makeParams(Xorshift64& rng) {
  std::vector<uint8_t> params(kParamsSize);
  for (uint32_t i = kW1Offset; i < kBiasOffset; ++i) params[i] = static_cast<uint8_t>(static_cast<int8_t>(rng.bell(10)));
  for (uint32_t n = 0; n < kOutputs; ++n) {
    const uint32_t bias = static_cast<uint32_t>(rng.uniform(-3000, 3000));
    for (uint32_t byte = 0; byte < 4; ++byte) params[kBiasOffset + 4 * n + byte] = static_cast<uint8_t>(bias >> (8 * byte));
  }
  return params;
}

const int8_t* asI8(const std::vector<uint8_t>& bytes, uint32_t offset = 0) {
  return reinterpret_cast<const int8_t*>(bytes.data() + offset);
}

std::vector<int32_t> outputBias(const std::vector<uint8_t>& params) {
  std::vector<int32_t> bias(kOutputs);
  for (uint32_t n = 0; n < kOutputs; ++n) {
    uint32_t word = 0;
    for (uint32_t byte = 0; byte < 4; ++byte) word |= uint32_t{params[kBiasOffset + 4 * n + byte]} << (8 * byte);
    bias[n] = static_cast<int32_t>(word);
  }
  return bias;
}

// The multiplier that maps the largest accumulator to about `target`.
int32_t multiplierFor(int64_t maxAbs, int64_t target) {
  return static_cast<int32_t>((target << kShift) / maxAbs);
}

std::vector<uint8_t> hiddenLayer(const Model& model) {
  std::vector<uint8_t> hidden = referenceMatMul(asI8(model.features), asI8(model.params, kW1Offset), nullptr, kRows,
                                                kInputs, kHidden, model.hiddenMultiplier, kShift, 0, false);
  for (uint8_t& value : hidden) value = static_cast<uint8_t>(std::max<int8_t>(static_cast<int8_t>(value), 0));
  return hidden;
}

Model makeModel() {
  Xorshift64 rng(0x4B455348u);
  Model model;
  model.features = makeFeatures(rng);
  model.params = makeParams(rng);
  model.hiddenMultiplier = multiplierFor(
      maxAbsAccumulator(asI8(model.features), asI8(model.params, kW1Offset), nullptr, kRows, kInputs, kHidden), 120);
  const std::vector<uint8_t> hidden = hiddenLayer(model);
  const std::vector<int32_t> bias = outputBias(model.params);
  model.outputMultiplier = multiplierFor(
      maxAbsAccumulator(asI8(hidden), asI8(model.params, kW2Offset), bias.data(), kRows, kHidden, kOutputs), 127);
  return model;
}

std::vector<uint8_t> referenceResult(const Model& model) {
  const std::vector<uint8_t> hidden = hiddenLayer(model);
  const std::vector<int32_t> bias = outputBias(model.params);
  return referenceMatMul(asI8(hidden), asI8(model.params, kW2Offset), bias.data(), kRows, kHidden, kOutputs,
                         model.outputMultiplier, kShift, kOutputZeroPoint, true);
}

Program programShell() {
  Program program;
  program.args = {{0, kRows * kInputs, false, "auto_buf_name_0"},
                  {1, kParamsSize, false, "auto_buf_name_1"},
                  {2, kRows * kOutputs, false, "auto_buf_name_2"}};
  return program;
}

// Layer 1 for `rows` rows from `firstRow`, into the hidden buffer (internal 0).
format::Op hiddenRows(const Model& model, uint32_t firstRow, uint32_t rows) {
  return matmulOp({internal(0, firstRow * kHidden), arg(kFeatures, firstRow * kInputs), arg(kParams, kW1Offset),
                   kNoBias, rows, kInputs, kHidden, model.hiddenMultiplier, kShift, 0, DType::kI8});
}

format::Op reluRows(uint32_t firstRow, uint32_t rows) {
  const At hidden = internal(0, firstRow * kHidden);
  return unaryOp(UnaryFunc::kMaxI, DType::kI8, hidden, hidden, rows * kHidden, 0);
}

format::Op outputRows(const Model& model, uint32_t firstRow, uint32_t rows) {
  return matmulOp({arg(kResult, firstRow * kOutputs), internal(0, firstRow * kHidden), arg(kParams, kW2Offset),
                   arg(kParams, kBiasOffset), rows, kHidden, kOutputs, model.outputMultiplier, kShift,
                   kOutputZeroPoint, DType::kU8});
}

// Each layer in one operation.
Program wholeProgram(const Model& model) {
  Program program = programShell();
  program.internalSizes = {kRows * kHidden};
  program.ops = {hiddenRows(model, 0, kRows), reluRows(0, kRows), outputRows(model, 0, kRows)};
  return program;
}

// Both layers per block of four rows, block after block, as a scheduler that
// spreads rows over cores would issue them.
Program rowBlockProgram(const Model& model) {
  constexpr uint32_t kBlock = 4;
  Program program = programShell();
  program.internalSizes = {kRows * kHidden};
  for (uint32_t row = 0; row < kRows; row += kBlock) {
    program.ops.push_back(hiddenRows(model, row, kBlock));
    program.ops.push_back(reluRows(row, kBlock));
    program.ops.push_back(outputRows(model, row, kBlock));
  }
  return program;
}

// Layer 1 in two halves, last half first; layer 2 in column tiles from the
// last tile to the first: each tile gathers its weight columns (internal 1),
// multiplies into a tile buffer (internal 2) and scatters the tile into place.
Program columnTileProgram(const Model& model) {
  constexpr uint32_t kTile = 48;
  constexpr uint32_t kHalf = kRows / 2;
  Program program = programShell();
  program.internalSizes = {kRows * kHidden, kHidden * kTile, kRows * kTile};
  program.ops = {hiddenRows(model, kHalf, kHalf), hiddenRows(model, 0, kHalf), reluRows(0, kRows)};
  for (uint32_t tile = kOutputs / kTile; tile-- > 0;) {
    const uint32_t col = tile * kTile;
    program.ops.push_back(copy2dOp(internal(1, 0), kTile, arg(kParams, kW2Offset + col), kOutputs, kTile, kHidden));
    program.ops.push_back(matmulOp({internal(2, 0), internal(0, 0), internal(1, 0), arg(kParams, kBiasOffset + 4 * col),
                                    kRows, kHidden, kTile, model.outputMultiplier, kShift, kOutputZeroPoint,
                                    DType::kU8}));
    program.ops.push_back(copy2dOp(arg(kResult, col), kOutputs, internal(2, 0), kTile, kTile, kRows));
  }
  return program;
}

}  // namespace

std::vector<GeneratedCase> makeMlpCases() {
  const Model model = makeModel();
  const std::vector<uint8_t> result = referenceResult(model);
  GeneratedCase common;
  common.inputs = {{"auto_buf_name_0", model.features},
                   {"auto_buf_name_1", model.params},
                   {"auto_buf_name_2", std::vector<uint8_t>(kRows * kOutputs, 0)}};
  // The pattern must leave both sources as they were.
  common.goldens = {{"auto_buf_name_0", model.features}, {"auto_buf_name_1", model.params}, {"auto_buf_name_2", result}};

  std::vector<GeneratedCase> cases(4, common);
  cases[0].pattern = encodeChecked(wholeProgram(model), kPatternSize, "case 0");
  cases[1].pattern = cases[0].pattern;
  cases[2].pattern = encodeChecked(rowBlockProgram(model), kPatternSize, "case 2");
  cases[3].pattern = encodeChecked(columnTileProgram(model), kPatternSize, "case 3");
  return cases;
}

}  // namespace kesh::gencases
