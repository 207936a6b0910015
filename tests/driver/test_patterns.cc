#include "test_patterns.h"

#include "format/writer.h"

namespace kesh::testing {

using format::Op;
using format::Opcode;

std::vector<uint8_t> patternBinary(const std::vector<TestArg>& args, const std::vector<Op>& ops) {
  format::Program program;
  for (const TestArg& arg : args) {
    format::ArgSpec entry;
    entry.index = arg.index;
    entry.size = arg.size;
    entry.noAlloc = arg.noAlloc;
    entry.name = arg.name;
    program.args.push_back(entry);
  }
  program.ops = ops;
  return format::encodePattern(program);
}

Op copyOp(uint32_t dst, uint32_t src, uint32_t length) {
  Op op;
  op.opcode = Opcode::kCopy;
  op.p[0] = format::bufferRef(format::Space::kArg, dst);
  op.p[2] = format::bufferRef(format::Space::kArg, src);
  op.p[4] = length;
  return op;
}

std::vector<uint8_t> copyPattern(uint32_t size) {
  return patternBinary({{"in", 0, size}, {"out", 1, size}}, {copyOp(1, 0, size)});
}

std::vector<uint8_t> matMulPattern(uint32_t m, uint32_t k, uint32_t n) {
  Op op;
  op.opcode = Opcode::kMatMul;
  op.p[0] = format::bufferRef(format::Space::kArg, 2);
  op.p[2] = format::bufferRef(format::Space::kArg, 0);
  op.p[4] = format::bufferRef(format::Space::kArg, 1);
  op.p[6] = format::kNoBuffer;
  op.p[8] = m;
  op.p[9] = k;
  op.p[10] = n;
  op.p[11] = 1;  // multiplier
  op.p[14] = static_cast<uint32_t>(format::DType::kI8);
  return patternBinary({{"a", 0, m * k}, {"b", 1, k * n}, {"c", 2, m * n}}, {op});
}

}  // namespace kesh::testing
