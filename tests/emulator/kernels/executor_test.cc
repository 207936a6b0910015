#include "kernels/executor.h"

#include <gtest/gtest.h>

#include <vector>

#include "sample_program.h"

namespace kesh::kernels {
namespace {

using format::BinaryFunc;
using format::Opcode;
using format::Program;
using format::testing::makeOp;

uint32_t arg(uint32_t position) { return format::bufferRef(format::Space::kArg, position); }
const uint32_t kTmp = format::bufferRef(format::Space::kInternal, 0), kConst = format::bufferRef(format::Space::kConst, 0);

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
  const uint32_t add = static_cast<uint32_t>(BinaryFunc::kAdd);
  program.ops = {makeOp(Opcode::kFill, {arg(1), 0, 8, 9}), makeOp(Opcode::kBinary, {add, 0, kTmp, 0, kTmp, 0, arg(0), 0, 8}),
                 makeOp(Opcode::kBinary, {add, 0, kTmp, 0, kTmp, 0, arg(0), 0, 8}),
                 makeOp(Opcode::kCopy, {arg(1), 0, kTmp, 0, 8}), makeOp(Opcode::kFill, {kTmp, 0, 8, 0x77})};
  std::vector<std::vector<uint8_t>> buffers = {{1, 2, 3, 4, 5, 100, 127, 200}, std::vector<uint8_t>(8)};
  for (int call = 0; call < 3; ++call) {
    executeProgram(program, views(buffers));
    EXPECT_EQ(buffers[1], (std::vector<uint8_t>{2, 4, 6, 8, 10, 200, 254, 255})) << "call " << call;
  }
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
  EXPECT_DEATH(runs(makeOp(Opcode::kMatMul, {arg(0), 0, arg(0), 0, kConst, 0, format::kNoBuffer, 0, 3, 3, 1, 1}))(),
               "read outside a buffer");
  EXPECT_DEATH(runs(makeOp(Opcode::kFill, {kTmp, 0, 1, 0}))(), "unknown buffer reference");
  EXPECT_DEATH(executeProgram(program, views(small)), "argument buffer too small");
}

}  // namespace
}  // namespace kesh::kernels
