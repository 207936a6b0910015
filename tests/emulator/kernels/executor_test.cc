#include "kernels/executor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "sample_program.h"

namespace kesh::kernels {
namespace {

using format::BinaryFunc;
using format::DType;
using format::Opcode;
using format::Program;
using format::UnaryFunc;
using format::testing::makeOp;

uint32_t arg(uint32_t position) { return format::bufferRef(format::Space::kArg, position); }
const uint32_t kTmp = format::bufferRef(format::Space::kInternal, 0), kConst = format::bufferRef(format::Space::kConst, 0);
template <typename E>
uint32_t code(E e) {
  return static_cast<uint32_t>(e);
}

std::vector<BufferView> views(std::vector<std::vector<uint8_t>>& buffers) {
  std::vector<BufferView> out;
  for (auto& b : buffers) out.push_back(BufferView{b.data(), b.size()});
  return out;
}

TEST(ExecutorTest, InternalBuffersStartZeroedOnEveryCallAndOpsRunInOrder) {
  // Argument indices differ from table positions: references use positions.
  Program program;
  program.args = {{5, 8, false, "in"}, {2, 8, false, "out"}};
  program.internalSizes = {8};
  const uint32_t add = code(BinaryFunc::kAdd);
  program.ops = {makeOp(Opcode::kFill, {arg(1), 0, 8, 9}), makeOp(Opcode::kBinary, {add, 0, kTmp, 0, kTmp, 0, arg(0), 0, 8}),
                 makeOp(Opcode::kBinary, {add, 0, kTmp, 0, kTmp, 0, arg(0), 0, 8}),
                 makeOp(Opcode::kCopy, {arg(1), 0, kTmp, 0, 8}), makeOp(Opcode::kFill, {kTmp, 0, 8, 0x77})};
  std::vector<std::vector<uint8_t>> buffers = {{1, 2, 3, 4, 5, 100, 127, 200}, std::vector<uint8_t>(8)};
  for (int call = 0; call < 3; ++call) {
    executeProgram(program, views(buffers));
    EXPECT_EQ(buffers[1], (std::vector<uint8_t>{2, 4, 6, 8, 10, 200, 254, 255})) << "call " << call;
  }
}

TEST(ExecutorTest, EveryOpcodeTakesItsOperandsFromTheRightParameters) {
  Program program;
  program.args = {{0, 16, false, "src"}, {1, 32, false, "dst"}, {2, 20, false, "plane"}, {3, 20, false, "filtered"},
                  {4, 12, false, "ab"}};
  for (int i = 0; i < 256; ++i) program.constData.push_back(static_cast<uint8_t>(i ^ 0x55));  // lookup table
  program.constData.resize(274);
  program.constData[256 + 8] = 2;                                      // 3x3 i16 kernel, centre 2
  program.constData.insert(program.constData.end(), {10, 0, 0, 0, 0xEC, 0xFF, 0xFF, 0xFF});  // i32 biases 10, -20
  program.ops = {
      makeOp(Opcode::kCopy, {arg(1), 0, arg(0), 2, 4}),
      makeOp(Opcode::kCopy2D, {arg(1), 4, 5, arg(0), 1, 4, 3, 2}),
      makeOp(Opcode::kFill, {arg(1), 12, 2, 0x11}),
      makeOp(Opcode::kLut, {arg(1), 14, arg(0), 3, 2, kConst, 0}),
      makeOp(Opcode::kUnary, {code(UnaryFunc::kAddI), code(DType::kI16), arg(1), 16, arg(0), 8, 2, uint32_t(-0x1312)}),
      makeOp(Opcode::kBinary, {code(BinaryFunc::kSub), code(DType::kI32), arg(1), 20, arg(0), 0, arg(0), 4, 1}),
      // A 4x3 plane at 2, stride 5; rows 1..2 to 1, stride 6: (2x + 4 + 1) >> 1 = x + 2.
      makeOp(Opcode::kConv2D, {arg(3), 1, 6, arg(2), 2, 5, 4, 3, 1, 3, kConst, 256, 3, 1, 4}),
      // [1 2 3; -1 -2 -3] x [4 5; 6 7; 8 -9] + [10 -20], as i8.
      makeOp(Opcode::kMatMul, {arg(1), 24, arg(4), 0, arg(4), 6, kConst, 274, 2, 3, 2, 1, 0, 0, code(DType::kI8)}),
  };
  std::vector<uint8_t> src(16), plane(20), filtered(20, 0xEE);
  for (size_t i = 0; i < 16; ++i) src[i] = static_cast<uint8_t>(10 + i);
  for (size_t i = 0; i < 20; ++i) plane[i] = static_cast<uint8_t>(i * 13 + 250);
  std::vector<std::vector<uint8_t>> buffers = {src, std::vector<uint8_t>(32, 0xEE), plane, filtered,
                                               {1, 2, 3, 0xFF, 0xFE, 0xFD, 4, 5, 6, 7, 8, 0xF7}};
  executeProgram(program, views(buffers));
  EXPECT_EQ(buffers[1], (std::vector<uint8_t>{
                            12, 13, 14, 15,                      // copy
                            11, 12, 13, 0xEE, 0xEE, 15, 16, 17,  // copy2d
                            0x11, 0x11,                          // fill
                            0x58, 0x5B,                          // lut
                            0, 0, 2, 2,                          // i16 0x1312, 0x1514 plus -0x1312
                            0xFC, 0xFB, 0xFB, 0xFB,              // i32 0x0D0C0B0A - 0x11100F0E
                            50, 0xE4, 0xE2, 0xF4,                // 50 -28; -30 -12
                            0xEE, 0xEE, 0xEE, 0xEE}));
  for (size_t i = 0; i < 8; ++i) filtered[7 + i / 4 * 6 + i % 4] = uint8_t(std::min(plane[7 + i / 4 * 5 + i % 4] + 2, 255));
  EXPECT_EQ(buffers[3], filtered);
}

TEST(ExecutorDeathTest, ProgramsThatWouldLeaveTheirBuffersStopTheProcess) {
  Program program;
  program.args = {{0, 8, false, "x"}};
  program.constData = std::vector<uint8_t>(8, 1);
  std::vector<std::vector<uint8_t>> buffers = {std::vector<uint8_t>(8)}, small = {std::vector<uint8_t>(7)};
  const auto runs = [&](format::Op o) {
    program.ops = {o};
    return [&] { executeProgram(program, views(buffers)); };
  };
  EXPECT_DEATH(runs(makeOp(Opcode::kFill, {kConst, 0, 4, 0}))(), "write to constant data");
  EXPECT_DEATH(runs(makeOp(Opcode::kCopy, {arg(0), 4, kConst, 0, 5}))(), "write outside a buffer");
  EXPECT_DEATH(runs(makeOp(Opcode::kMatMul, {arg(0), 0, arg(0), 0, kConst, 0, format::kNoBuffer, 0, 3, 3, 1, 1}))(),
               "read outside a buffer");
  EXPECT_DEATH(runs(makeOp(Opcode::kFill, {kTmp, 0, 1, 0}))(), "unknown buffer reference");
  EXPECT_DEATH(executeProgram(program, views(small)), "argument buffer too small");
}

}  // namespace
}  // namespace kesh::kernels
