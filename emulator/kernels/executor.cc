#include "kernels/executor.h"

#include <cstdio>
#include <cstdlib>

#include "format/op_table.h"
#include "kernels/conv2d.h"
#include "kernels/elementwise.h"
#include "kernels/fill_copy.h"
#include "kernels/lut.h"
#include "kernels/matmul.h"

namespace kesh::kernels {
namespace {

using format::BufferAt;
using format::Op;
using format::OpParams;
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

  /// write() of rows starting at a buffer parameter.
  uint8_t* write(BufferAt at, uint64_t stride, uint64_t rows, uint64_t width) {
    return write(at.ref, at.offset, stride, rows, width);
  }

  /// read() of rows starting at a buffer parameter.
  const uint8_t* read(BufferAt at, uint64_t stride, uint64_t rows, uint64_t width) {
    return read(at.ref, at.offset, stride, rows, width);
  }

  /// write() for one contiguous range.
  uint8_t* write(BufferAt at, uint64_t length) { return write(at.ref, at.offset, 0, 1, length); }

  /// read() for one contiguous range.
  const uint8_t* read(BufferAt at, uint64_t length) { return read(at.ref, at.offset, 0, 1, length); }

 private:
  struct Region {
    const uint8_t* readable;
    uint8_t* writable;  // null for constant data
    uint64_t size;
  };

  Region region(uint32_t ref) {
    const uint32_t number = format::refNumber(ref);
    switch (static_cast<Space>(format::refSpace(ref))) {
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

void runFill(const Op& op, Buffers& buf) {
  using P = OpParams<Opcode::kFill>;
  const P p(op);
  const uint32_t length = p.u32<P::at("length")>();
  fill(buf.write(p.buffer<P::at("dst")>(), length), length, static_cast<uint8_t>(p.u32<P::at("value")>()));
}

void runCopy(const Op& op, Buffers& buf) {
  using P = OpParams<Opcode::kCopy>;
  const P p(op);
  const uint32_t length = p.u32<P::at("length")>();
  const uint8_t* src = buf.read(p.buffer<P::at("src")>(), length);
  copy(buf.write(p.buffer<P::at("dst")>(), length), src, length);
}

void runCopy2D(const Op& op, Buffers& buf) {
  using P = OpParams<Opcode::kCopy2D>;
  const P p(op);
  const uint32_t width = p.u32<P::at("width")>(), rows = p.u32<P::at("rows")>();
  const uint32_t dstStride = p.u32<P::at("dst_stride")>(), srcStride = p.u32<P::at("src_stride")>();
  const uint8_t* src = buf.read(p.buffer<P::at("src")>(), srcStride, rows, width);
  copy2d(buf.write(p.buffer<P::at("dst")>(), dstStride, rows, width), dstStride, src, srcStride, width, rows);
}

// The element count and type of an element-wise operation, and their bytes.
struct Elements {
  uint32_t count;
  format::DType type;
  uint64_t bytes;
};

template <Opcode kOp>
Elements elementsOf(const OpParams<kOp>& p) {
  using P = OpParams<kOp>;
  const uint32_t count = p.template u32<P::at("count")>(), dtype = p.template code<P::at("type")>();
  const uint32_t size = format::elementSize(dtype);
  if (size == 0) invalidProgram("unknown element type");
  return {count, static_cast<format::DType>(dtype), uint64_t{count} * size};
}

void runUnary(const Op& op, Buffers& buf) {
  using P = OpParams<Opcode::kUnary>;
  const P p(op);
  const Elements e = elementsOf(p);
  uint8_t* dst = buf.write(p.buffer<P::at("dst")>(), e.bytes);
  const uint8_t* src = buf.read(p.buffer<P::at("src")>(), e.bytes);
  const auto func = static_cast<format::UnaryFunc>(p.code<P::at("func")>());
  if (!unary(func, e.type, dst, src, e.count, p.i32<P::at("imm")>())) invalidProgram("unknown unary function");
}

void runBinary(const Op& op, Buffers& buf) {
  using P = OpParams<Opcode::kBinary>;
  const P p(op);
  const Elements e = elementsOf(p);
  const uint8_t* a = buf.read(p.buffer<P::at("a")>(), e.bytes);
  const uint8_t* b = buf.read(p.buffer<P::at("b")>(), e.bytes);
  uint8_t* dst = buf.write(p.buffer<P::at("dst")>(), e.bytes);
  if (!binary(static_cast<format::BinaryFunc>(p.code<P::at("func")>()), e.type, dst, a, b, e.count)) {
    invalidProgram("unknown binary function");
  }
}

void runLut(const Op& op, Buffers& buf) {
  using P = OpParams<Opcode::kLut>;
  const P p(op);
  const uint32_t count = p.u32<P::at("count")>();
  const uint8_t* src = buf.read(p.buffer<P::at("src")>(), count);
  const uint8_t* table = buf.read(p.buffer<P::at("table")>(), 256);
  lut(buf.write(p.buffer<P::at("dst")>(), count), src, count, table);
}

void runConv2D(const Op& op, Buffers& buf) {
  using P = OpParams<Opcode::kConv2D>;
  const P p(op);
  Conv2DParams c;
  c.width = p.u32<P::at("width")>();
  c.height = p.u32<P::at("height")>();
  c.rowBegin = p.u32<P::at("row_begin")>();
  c.rowEnd = p.u32<P::at("row_end")>();
  if (c.rowBegin > c.rowEnd || c.rowEnd > c.height) invalidProgram("conv2d rows outside the plane");
  if (c.rowBegin == c.rowEnd) return;
  c.k = p.u32<P::at("k")>();
  c.shift = p.u32<P::at("shift")>();
  c.bias = p.i32<P::at("bias")>();
  c.srcStride = p.u32<P::at("src_stride")>();
  c.src = buf.read(p.buffer<P::at("src")>(), c.srcStride, c.height, c.width);
  c.dstStride = p.u32<P::at("dst_stride")>();
  // Rows before rowBegin are not written, so only the written ones must fit.
  const BufferAt dst = p.buffer<P::at("dst")>();
  c.dst = buf.write(dst.ref, uint64_t{dst.offset} + uint64_t{c.rowBegin} * c.dstStride, c.dstStride,
                    c.rowEnd - c.rowBegin, c.width) -
          size_t{c.rowBegin} * c.dstStride;
  c.weights = buf.read(p.buffer<P::at("kernel")>(), uint64_t{c.k} * c.k * 2);
  if (!conv2d(c)) invalidProgram("conv2d kernel size");
}

void runMatMul(const Op& op, Buffers& buf) {
  using P = OpParams<Opcode::kMatMul>;
  const P p(op);
  const BufferAt bias = p.buffer<P::at("bias")>();
  MatMulParams m;
  m.m = p.u32<P::at("m")>();
  m.k = p.u32<P::at("k")>();
  m.n = p.u32<P::at("n")>();
  m.a = buf.read(p.buffer<P::at("a")>(), m.k, m.m, m.k);
  m.b = buf.read(p.buffer<P::at("b")>(), m.n, m.k, m.n);
  if (bias.ref != format::kNoBuffer) m.bias = buf.read(bias, uint64_t{m.n} * 4);
  m.dst = buf.write(p.buffer<P::at("dst")>(), m.n, m.m, m.n);
  m.multiplier = p.i32<P::at("multiplier")>();
  m.shift = p.u32<P::at("shift")>();
  m.zeroPoint = p.i32<P::at("zero_point")>();
  m.outType = static_cast<format::DType>(p.code<P::at("out")>());
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
