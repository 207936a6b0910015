#include "kernels/executor.h"

#include <cstdio>
#include <cstdlib>

#include "kernels/conv2d.h"
#include "kernels/elementwise.h"
#include "kernels/fill_copy.h"
#include "kernels/lut.h"
#include "kernels/matmul.h"

namespace kesh::kernels {
namespace {

using format::Op;
using format::Opcode;
using format::Program;
using format::Space;

// Reached only when a program that skipped the reader's validation (or a
// caller breaking the argument contract) would make a kernel touch memory
// outside its buffers or write constant data shared between executions.
// Stopping is the only safe answer.
[[noreturn]] void invalidProgram(const char* what) {
  std::fprintf(stderr, "kesh kernels: invalid program: %s\n", what);
  std::abort();
}

// True when `rows` rows of `width` bytes, `stride` apart, starting at `off`
// lie inside `size` bytes. No product of the 32-bit inputs can overflow.
bool inside(uint64_t size, uint64_t off, uint64_t stride, uint64_t rows, uint64_t width) {
  if (off > size) return false;
  if (rows == 0 || width == 0) return true;
  if (width > size - off) return false;
  return stride == 0 || rows - 1 <= (size - off - width) / stride;
}

// One execution's view of every buffer a program can name: the caller's
// arguments, fresh zeroed internal buffers and the read-only constant data.
class Buffers {
 public:
  Buffers(const Program& program, const std::vector<BufferView>& args)
      : program_(program), args_(args) {
    if (args.size() < program.args.size()) invalidProgram("missing argument buffers");
    for (size_t i = 0; i < program.args.size(); ++i) {
      if (args[i].size < program.args[i].size) invalidProgram("argument buffer too small");
    }
    internals_.reserve(program.internalSizes.size());
    for (uint32_t size : program.internalSizes) internals_.emplace_back(size, uint8_t{0});
  }

  /// The writable start of a 2-D range, after checking it.
  uint8_t* write(uint32_t ref, uint64_t off, uint64_t stride, uint64_t rows, uint64_t width) {
    const Region r = region(ref);
    if (r.writable == nullptr) invalidProgram("write to constant data");
    if (!inside(r.size, off, stride, rows, width)) invalidProgram("write outside a buffer");
    return r.writable + off;
  }

  /// The readable start of a 2-D range, after checking it.
  const uint8_t* read(uint32_t ref, uint64_t off, uint64_t stride, uint64_t rows, uint64_t width) {
    const Region r = region(ref);
    if (!inside(r.size, off, stride, rows, width)) invalidProgram("read outside a buffer");
    return r.readable + off;
  }

  /// write() for one contiguous range.
  uint8_t* write(uint32_t ref, uint64_t off, uint64_t length) { return write(ref, off, 0, 1, length); }

  /// read() for one contiguous range.
  const uint8_t* read(uint32_t ref, uint64_t off, uint64_t length) { return read(ref, off, 0, 1, length); }

 private:
  struct Region {
    const uint8_t* readable;
    uint8_t* writable;  // null for constant data
    uint64_t size;
  };

  Region region(uint32_t ref) {
    const uint32_t number = ref & 0xFFFFFFu;
    switch (static_cast<Space>(ref >> 24)) {
      case Space::kArg:
        if (number < program_.args.size()) {
          return {args_[number].data, args_[number].data, program_.args[number].size};
        }
        break;
      case Space::kInternal:
        if (number < internals_.size()) {
          std::vector<uint8_t>& buffer = internals_[number];
          return {buffer.data(), buffer.data(), buffer.size()};
        }
        break;
      case Space::kConst:
        if (number == 0) return {program_.constData.data(), nullptr, program_.constData.size()};
        break;
    }
    invalidProgram("unknown buffer reference");
  }

  const Program& program_;
  const std::vector<BufferView>& args_;
  std::vector<std::vector<uint8_t>> internals_;
};

size_t elementSize(uint32_t dtype) {
  switch (static_cast<format::DType>(dtype)) {
    case format::DType::kU8:
    case format::DType::kI8: return 1;
    case format::DType::kI16: return 2;
    case format::DType::kI32: return 4;
  }
  invalidProgram("unknown element type");
}

void runFill(const Op& op, Buffers& buf) {
  const auto& p = op.p;
  fill(buf.write(p[0], p[1], p[2]), p[2], static_cast<uint8_t>(p[3]));
}

void runCopy(const Op& op, Buffers& buf) {
  const auto& p = op.p;
  const uint8_t* src = buf.read(p[2], p[3], p[4]);
  copy(buf.write(p[0], p[1], p[4]), src, p[4]);
}

void runCopy2D(const Op& op, Buffers& buf) {
  const auto& p = op.p;
  const uint8_t* src = buf.read(p[3], p[4], p[5], p[7], p[6]);
  copy2d(buf.write(p[0], p[1], p[2], p[7], p[6]), p[2], src, p[5], p[6], p[7]);
}

void runUnary(const Op& op, Buffers& buf) {
  const auto& p = op.p;
  const uint64_t bytes = uint64_t{p[6]} * elementSize(p[1]);
  const uint8_t* src = buf.read(p[4], p[5], bytes);
  uint8_t* dst = buf.write(p[2], p[3], bytes);
  if (!unary(static_cast<format::UnaryFunc>(p[0]), static_cast<format::DType>(p[1]), dst, src,
             p[6], static_cast<int32_t>(p[7]))) {
    invalidProgram("unknown unary function");
  }
}

void runBinary(const Op& op, Buffers& buf) {
  const auto& p = op.p;
  const uint64_t bytes = uint64_t{p[8]} * elementSize(p[1]);
  const uint8_t* a = buf.read(p[4], p[5], bytes);
  const uint8_t* b = buf.read(p[6], p[7], bytes);
  uint8_t* dst = buf.write(p[2], p[3], bytes);
  if (!binary(static_cast<format::BinaryFunc>(p[0]), static_cast<format::DType>(p[1]), dst, a, b,
              p[8])) {
    invalidProgram("unknown binary function");
  }
}

void runLut(const Op& op, Buffers& buf) {
  const auto& p = op.p;
  const uint8_t* src = buf.read(p[2], p[3], p[4]);
  const uint8_t* table = buf.read(p[5], p[6], 256);
  lut(buf.write(p[0], p[1], p[4]), src, p[4], table);
}

void runConv2D(const Op& op, Buffers& buf) {
  const auto& p = op.p;
  Conv2DParams c;
  c.width = p[6];
  c.height = p[7];
  c.rowBegin = p[8];
  c.rowEnd = p[9];
  c.k = p[12];
  c.shift = p[13];
  c.bias = static_cast<int32_t>(p[14]);
  if (c.rowBegin > c.rowEnd || c.rowEnd > c.height) invalidProgram("conv2d rows outside the plane");
  if (c.rowBegin == c.rowEnd) return;
  c.srcStride = p[5];
  c.src = buf.read(p[3], p[4], p[5], c.height, c.width);
  c.dstStride = p[2];
  // Rows before rowBegin are not written, so only the written ones must fit.
  c.dst = buf.write(p[0], uint64_t{p[1]} + uint64_t{c.rowBegin} * p[2], p[2],
                    c.rowEnd - c.rowBegin, c.width) -
          size_t{c.rowBegin} * p[2];
  c.weights = buf.read(p[10], p[11], uint64_t{c.k} * c.k * 2);
  if (!conv2d(c)) invalidProgram("conv2d kernel size");
}

void runMatMul(const Op& op, Buffers& buf) {
  const auto& p = op.p;
  MatMulParams m;
  m.m = p[8];
  m.k = p[9];
  m.n = p[10];
  m.multiplier = static_cast<int32_t>(p[11]);
  m.shift = p[12];
  m.zeroPoint = static_cast<int32_t>(p[13]);
  m.outType = static_cast<format::DType>(p[14]);
  m.a = buf.read(p[2], p[3], m.k, m.m, m.k);
  m.b = buf.read(p[4], p[5], m.n, m.k, m.n);
  if (p[6] != format::kNoBuffer) m.bias = buf.read(p[6], p[7], uint64_t{m.n} * 4);
  m.dst = buf.write(p[0], p[1], m.n, m.m, m.n);
  if (!matmul(m)) invalidProgram("matmul output type");
}

void runOp(const Op& op, Buffers& buf) {
  switch (op.opcode) {
    case Opcode::kFill: return runFill(op, buf);
    case Opcode::kCopy: return runCopy(op, buf);
    case Opcode::kCopy2D: return runCopy2D(op, buf);
    case Opcode::kUnary: return runUnary(op, buf);
    case Opcode::kBinary: return runBinary(op, buf);
    case Opcode::kLut: return runLut(op, buf);
    case Opcode::kConv2D: return runConv2D(op, buf);
    case Opcode::kMatMul: return runMatMul(op, buf);
  }
  invalidProgram("unknown opcode");
}

}  // namespace

void executeProgram(const Program& program, const std::vector<BufferView>& args) {
  Buffers buffers(program, args);
  for (const Op& op : program.ops) runOp(op, buffers);
}

}  // namespace kesh::kernels
