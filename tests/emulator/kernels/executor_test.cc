#include "kernels/executor.h"

#include <gtest/gtest.h>

#include <vector>

#include "format/op_builder.h"
#include "testing/sample_patterns.h"

namespace kesh::kernels {
namespace {

using format::makeOp;
using format::Opcode;
using kesh::testing::argRef;

// A sum into an internal buffer, copied out, shows what the buffer started with.
TEST(ExecutorTest, InternalBuffersStartZeroedOnEveryCall) {
  format::Program program;
  program.args = {{5, 8, false, "in"}, {2, 8, false, "out"}};
  program.internalSizes = {8};
  const uint32_t tmp = format::bufferRef(format::Space::kInternal, 0);
  program.ops = {makeOp(Opcode::kBinary, {{"func", format::BinaryFunc::kAdd}, {"type", format::DType::kU8},
                                          {"dst", tmp}, {"a", tmp}, {"b", argRef(0)}, {"count", 8}}),
                 makeOp(Opcode::kCopy, {{"dst", argRef(1)}, {"src", tmp}, {"length", 8}})};
  std::vector<uint8_t> in = {1, 2, 3, 4, 5, 100, 127, 200}, out(8);
  for (int call = 0; call < 2; ++call) {
    executeProgram(program, {{in.data(), in.size()}, {out.data(), out.size()}});
    EXPECT_EQ(out, in) << "call " << call;
  }
}

}  // namespace
}  // namespace kesh::kernels
