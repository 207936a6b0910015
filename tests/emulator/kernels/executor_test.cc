#include "kernels/executor.h"

#include <gtest/gtest.h>

#include <vector>

#include "format/op_builder.h"
#include "testing/sample_patterns.h"

namespace kesh::kernels {
namespace {

using format::BinaryFunc;
using format::DType;
using format::makeOp;
using format::Opcode;
using format::Program;
using kesh::testing::argRef;

const uint32_t kTmp = format::bufferRef(format::Space::kInternal, 0), kConst = kesh::testing::kConst;

std::vector<BufferView> views(std::vector<std::vector<uint8_t>>& buffers) {
  std::vector<BufferView> out;
  for (auto& b : buffers) out.push_back(BufferView{b.data(), b.size()});
  return out;
}

format::Op fill(uint32_t dst, uint32_t length, uint32_t value) {
  return makeOp(Opcode::kFill, {{"dst", dst}, {"length", length}, {"value", value}});
}

format::Op addInto(uint32_t dst, uint32_t b) {
  return makeOp(Opcode::kBinary,
                {{"func", BinaryFunc::kAdd}, {"type", DType::kU8}, {"dst", dst}, {"a", dst}, {"b", b}, {"count", 8}});
}

TEST(ExecutorTest, InternalBuffersStartZeroedOnEveryCallAndOpsRunInOrder) {
  // Argument indices differ from table positions: references use positions.
  Program program;
  program.args = {{5, 8, false, "in"}, {2, 8, false, "out"}};
  program.internalSizes = {8};
  program.ops = {fill(argRef(1), 8, 9), addInto(kTmp, argRef(0)), addInto(kTmp, argRef(0)),
                 makeOp(Opcode::kCopy, {{"dst", argRef(1)}, {"src", kTmp}, {"length", 8}}), fill(kTmp, 8, 0x77)};
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
  const format::Op tallB = makeOp(Opcode::kMatMul, {{"dst", argRef(0)}, {"a", argRef(0)}, {"b", kConst}, {"m", 3},
                                                    {"k", 3}, {"n", 1}, {"multiplier", 1}});
  EXPECT_DEATH(runs(fill(kConst, 4, 0))(), "write to constant data");
  EXPECT_DEATH(runs(tallB)(), "read outside a buffer");
  EXPECT_DEATH(runs(fill(kTmp, 1, 0))(), "unknown buffer reference");
  EXPECT_DEATH(executeProgram(program, views(small)), "argument buffer too small");
}

}  // namespace
}  // namespace kesh::kernels
