#include "format/writer.h"

#include <algorithm>
#include <cstring>

#include "format/le_bytes.h"

namespace kesh::format {
namespace {

void writeHeader(const Program& program, uint32_t totalSize, uint8_t* out) {
  std::memcpy(out + kOffMagic, kMagic, sizeof(kMagic));
  storeLe16(out + kOffVersion, kVersion);
  storeLe16(out + kOffHeaderSize, static_cast<uint16_t>(kHeaderSize));
  storeLe32(out + kOffTotalSize, totalSize);
  storeLe32(out + kOffArgCount, static_cast<uint32_t>(program.args.size()));
  storeLe32(out + kOffInternalCount, static_cast<uint32_t>(program.internalSizes.size()));
  storeLe32(out + kOffOpCount, static_cast<uint32_t>(program.ops.size()));
  storeLe32(out + kOffConstSize, static_cast<uint32_t>(program.constData.size()));
  storeLe32(out + kOffReserved, 0);
}

uint8_t* writeArg(const ArgSpec& arg, uint8_t* out) {
  storeLe32(out, arg.index);
  storeLe32(out + 4, arg.size);
  storeLe32(out + 8, arg.noAlloc ? kArgFlagNoAlloc : 0u);
  // The field keeps room for the terminating NUL; the rest stays zero.
  size_t nameLength = std::min<size_t>(arg.name.size(), kArgNameField - 1);
  std::memcpy(out + 12, arg.name.data(), nameLength);
  return out + kArgEntrySize;
}

uint8_t* writeOp(const Op& op, uint8_t* out) {
  storeLe32(out, static_cast<uint32_t>(op.opcode));
  for (uint32_t i = 0; i < kOpParamCount; ++i) storeLe32(out + 4 + 4 * i, op.p[i]);
  return out + kOpEntrySize;
}

}  // namespace

uint64_t encodedSize(const Program& program) {
  return kHeaderSize + uint64_t{kArgEntrySize} * program.args.size() +
         uint64_t{kInternalEntrySize} * program.internalSizes.size() +
         uint64_t{kOpEntrySize} * program.ops.size() + program.constData.size();
}

std::vector<uint8_t> encodePattern(const Program& program, uint32_t padTo) {
  const uint64_t size = encodedSize(program);
  if (size > UINT32_MAX || (padTo != 0 && padTo < size)) return {};
  const uint32_t totalSize = padTo != 0 ? padTo : static_cast<uint32_t>(size);
  std::vector<uint8_t> out(totalSize, 0);
  uint8_t* cursor = out.data();
  writeHeader(program, totalSize, cursor);
  cursor += kHeaderSize;
  for (const ArgSpec& arg : program.args) cursor = writeArg(arg, cursor);
  for (uint32_t internalSize : program.internalSizes) {
    storeLe32(cursor, internalSize);
    cursor += kInternalEntrySize;
  }
  for (const Op& op : program.ops) cursor = writeOp(op, cursor);
  if (!program.constData.empty()) std::memcpy(cursor, program.constData.data(), program.constData.size());
  return out;
}

}  // namespace kesh::format
