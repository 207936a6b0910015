#include "testing/sample_patterns.h"

#include "format/writer.h"

namespace kesh::testing {
using namespace format;  // NOLINT: the builder's vocabulary reads best unqualified

std::vector<uint8_t> patternBinary(const std::vector<TestArg>& args, const std::vector<Op>& ops,
                                   std::vector<uint8_t> constData) {
  Program program{{}, {}, ops, std::move(constData)};
  for (const TestArg& arg : args) program.args.push_back({arg.index, arg.size, arg.noAlloc, arg.name});
  return encodePattern(program);
}

Op copyOp(uint32_t dst, uint32_t src, uint32_t length) {
  return makeOp(Opcode::kCopy, {{"dst", argRef(dst)}, {"src", argRef(src)}, {"length", length}});
}

std::vector<uint8_t> copyPattern(uint32_t size, uint32_t inIndex, uint32_t outIndex) {
  return patternBinary({{"in", inIndex, size}, {"out", outIndex, size}}, {copyOp(1, 0, size)});
}

std::vector<uint8_t> scratchPattern(uint32_t size) {
  const Op add = makeOp(Opcode::kBinary, {{"func", BinaryFunc::kAdd}, {"type", DType::kU8}, {"dst", argRef(2)},
                                          {"a", argRef(0)}, {"b", argRef(1)}, {"count", size}});
  return patternBinary({{"in", 0, size}, {"scratch", 9, size, true}, {"out", 2, size}},
                       {add, makeOp(Opcode::kFill, {{"dst", argRef(1)}, {"length", size}, {"value", 0xFF}})});
}

std::vector<uint8_t> convPattern(uint32_t width, uint32_t height) {
  std::vector<uint8_t> ones(50, 0);  // 25 i16 ones
  for (size_t i = 0; i < 50; i += 2) ones[i] = 1;
  const Op conv = makeOp(Opcode::kConv2D, {{"dst", argRef(1)}, {"dst_stride", width}, {"src", argRef(0)},
                                           {"src_stride", width}, {"width", width}, {"height", height},
                                           {"row_end", height}, {"kernel", kConst}, {"k", 5}, {"shift", 5}});
  return patternBinary({{"src", 0, width * height}, {"dst", 1, width * height}}, {conv}, ones);
}

Program sampleProgram() {
  Program program{{{0, 3072, false, "in"}, {1, 3072, false, "out"}, {7, 256, true, "scratch"}}, {3072, 64}, {}, {}};
  program.constData = {1, 0, 2, 0, 1, 0, 2, 0, 4, 0, 2, 0, 1, 0, 2, 0, 0xff, 0xff};  // i16 {1,2,1,2,4,2,1,2,-1}
  program.constData.resize(304, 0);
  for (int i = 0; i < 256; ++i) program.constData[32 + i] = static_cast<uint8_t>(255 - i);
  program.constData[288] = 0x10;
  program.constData[303] = 0x80;
  program.ops = {
      makeOp(Opcode::kFill, {{"dst", kTmp0}, {"length", 3072}, {"value", 7}}),
      makeOp(Opcode::kCopy, {{"dst", kTmp0}, {"src", kIn}, {"length", 3072}}),
      makeOp(Opcode::kCopy2D, {{"dst", kTmp1}, {"dst_stride", 8}, {"src", kIn}, {"src_stride", 64}, {"width", 8},
                               {"rows", 8}}),
      makeOp(Opcode::kUnary, {{"func", UnaryFunc::kAddI}, {"type", DType::kU8}, {"dst", kTmp0}, {"src", kTmp0},
                              {"count", 3072}, {"imm", 5}}),
      makeOp(Opcode::kBinary, {{"func", BinaryFunc::kAvg}, {"type", DType::kU8}, {"dst", kOut}, {"a", kTmp0},
                               {"b", kIn}, {"count", 3072}}),
      makeOp(Opcode::kLut, {{"dst", kOut}, {"src", kOut}, {"count", 3072}, {"table", BufferAt{kConst, 32}}}),
      makeOp(Opcode::kConv2D, {{"dst", kOut}, {"dst_stride", 64}, {"src", kIn}, {"src_stride", 64}, {"width", 64},
                               {"height", 48}, {"row_end", 48}, {"kernel", kConst}, {"k", 3}, {"shift", 4},
                               {"bias", -16}}),
      makeOp(Opcode::kMatMul, {{"dst", kScratch}, {"a", kIn}, {"b", BufferAt{kIn, 64}},
                               {"bias", BufferAt{kConst, 288}}, {"m", 4}, {"k", 16}, {"n", 4},
                               {"multiplier", 1 << 20}, {"shift", 20}, {"zero_point", -3}, {"out", DType::kI8}}),
  };
  return program;
}

}  // namespace kesh::testing
