#include "pattern_asm/text_printer.h"

#include <cstdio>

#include "format/names.h"
#include "format/op_table.h"
#include "pattern_asm/text_lexer.h"

namespace kesh::pattern_text {
namespace {

using format::Program;

constexpr size_t kConstBytesPerLine = 16;

std::string bufferText(const Program& program, uint32_t ref, uint32_t offset) {
  if (ref == format::kNoBuffer) return "none";
  const uint32_t number = format::refNumber(ref);
  std::string text;
  switch (static_cast<format::Space>(format::refSpace(ref))) {
    case format::Space::kArg:
      text = "arg:" + quoteIfNeeded(number < program.args.size() ? program.args[number].name : "?");
      break;
    case format::Space::kInternal:
      text = "int:" + std::to_string(number);
      break;
    default:
      text = "const";
      break;
  }
  return offset == 0 ? text : text + "+" + std::to_string(offset);
}

const char* nameOrUnknown(const char* name) { return name ? name : "?"; }

std::string fieldText(const Program& program, const format::Op& op, const format::ParamDef& field) {
  const uint32_t value = op.p[field.position];
  switch (field.kind) {
    case format::ParamKind::kBuffer:
    case format::ParamKind::kOptionalBuffer:
      return bufferText(program, value, op.p[field.position + 1]);
    case format::ParamKind::kU32: return std::to_string(value);
    case format::ParamKind::kI32: return std::to_string(static_cast<int32_t>(value));
    case format::ParamKind::kUnaryFunc: return nameOrUnknown(format::unaryFuncName(value));
    case format::ParamKind::kBinaryFunc: return nameOrUnknown(format::binaryFuncName(value));
    case format::ParamKind::kDType: return nameOrUnknown(format::dtypeName(value));
  }
  return "?";
}

bool isDefault(const format::OpRow& row, const format::Op& op, const format::ParamDef& field) {
  if (field.presence == format::Presence::kRequired || op.p[field.position] != format::paramDefault(row, field, op.p)) {
    return false;
  }
  return !format::isBuffer(field.kind) || op.p[field.position + 1] == 0;
}

std::string opText(const Program& program, const format::Op& op) {
  const format::OpRow* row = format::findOp(op.opcode);
  if (!row) return "# unknown opcode " + std::to_string(static_cast<uint32_t>(op.opcode)) + "\n";
  std::string line = row->mnemonic;
  for (size_t i = 0; i < row->paramCount; ++i) {
    const format::ParamDef& field = row->params[i];
    if (!isDefault(*row, op, field)) line += std::string(" ") + field.name + "=" + fieldText(program, op, field);
  }
  return line + "\n";
}

size_t zeroRunLength(const std::vector<uint8_t>& data, size_t start) {
  size_t end = start;
  while (end < data.size() && data[end] == 0) ++end;
  return end - start;
}

// Hex bytes, 16 to a line; long runs of zeros are written as `const zero N`.
std::string constText(const std::vector<uint8_t>& data) {
  std::string text;
  size_t onLine = 0;
  for (size_t i = 0; i < data.size();) {
    const size_t zeros = zeroRunLength(data, i);
    if (zeros >= kConstBytesPerLine) {
      text += std::string(onLine ? "\n" : "") + "const zero " + std::to_string(zeros) + "\n";
      onLine = 0;
      i += zeros;
      continue;
    }
    char byte[4];
    std::snprintf(byte, sizeof(byte), " %02x", data[i++]);
    text += std::string(onLine == 0 ? "const hex" : "") + byte;
    if (++onLine == kConstBytesPerLine) {
      text += "\n";
      onLine = 0;
    }
  }
  return onLine ? text + "\n" : text;
}

}  // namespace

std::string formatPatternText(const Program& program) {
  std::string text;
  for (const format::ArgSpec& arg : program.args) {
    text += "arg " + quoteIfNeeded(arg.name) + " index=" + std::to_string(arg.index) +
            " size=" + std::to_string(arg.size) + (arg.noAlloc ? " noalloc\n" : "\n");
  }
  for (size_t i = 0; i < program.internalSizes.size(); ++i) {
    text += "internal " + std::to_string(program.internalSizes[i]) + "  # int:" + std::to_string(i) + "\n";
  }
  if (!program.ops.empty()) text += "\n";
  for (const format::Op& op : program.ops) text += opText(program, op);
  if (!program.constData.empty()) text += "\n# " + std::to_string(program.constData.size()) + " bytes of constant data\n";
  return text + constText(program.constData);
}

}  // namespace kesh::pattern_text
