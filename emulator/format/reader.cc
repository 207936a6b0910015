#include "format/reader.h"

#include <cstring>
#include <set>
#include <utility>

#include "format/le_bytes.h"
#include "format/names.h"
#include "format/op_validator.h"
#include "format/table_rules.h"

namespace kesh::format {
namespace {

struct Header {
  uint32_t argCount = 0;
  uint32_t internalCount = 0;
  uint32_t opCount = 0;
  uint32_t constSize = 0;
};

class Reader {
 public:
  Reader(const uint8_t* data, size_t size, std::string* error) : data_(data), size_(size), error_(error) {}

  bool read(Program* out);

 private:
  bool fail(const std::string& message) {
    if (error_) *error_ = message;
    return false;
  }

  bool readHeader(Header* header);
  bool readArgs(const uint8_t* table, uint32_t count, Program* program);
  bool readArg(const uint8_t* entry, ArgSpec* arg);
  bool readInternals(const uint8_t* table, uint32_t count, Program* program);
  bool readOps(const uint8_t* table, uint32_t count, Program* program);

  const uint8_t* data_;
  size_t size_;
  std::string* error_;
};

bool checkCount(const char* what, uint32_t count, uint32_t limit, std::string* message) {
  if (count <= limit) return true;
  *message = std::string(what) + " count " + std::to_string(count) + " over the limit of " + std::to_string(limit);
  return false;
}

bool Reader::readHeader(Header* header) {
  if (size_ < kHeaderSize) return fail("truncated: " + std::to_string(size_) + " bytes, shorter than the header");
  if (std::memcmp(data_ + kOffMagic, kMagic, sizeof(kMagic)) != 0) return fail("bad magic");
  if (loadLe16(data_ + kOffVersion) != kVersion) {
    return fail("unsupported version " + std::to_string(loadLe16(data_ + kOffVersion)));
  }
  if (loadLe16(data_ + kOffHeaderSize) != kHeaderSize) {
    return fail("bad header size " + std::to_string(loadLe16(data_ + kOffHeaderSize)));
  }
  const uint32_t totalSize = loadLe32(data_ + kOffTotalSize);
  if (totalSize != size_) {
    return fail("total size " + std::to_string(totalSize) + " differs from the " + std::to_string(size_) +
                " bytes given");
  }
  if (loadLe32(data_ + kOffReserved) != 0) return fail("reserved header field is not 0");
  header->argCount = loadLe32(data_ + kOffArgCount);
  header->internalCount = loadLe32(data_ + kOffInternalCount);
  header->opCount = loadLe32(data_ + kOffOpCount);
  header->constSize = loadLe32(data_ + kOffConstSize);
  std::string message;
  if (!checkCount("argument", header->argCount, kMaxArgs, &message) ||
      !checkCount("internal buffer", header->internalCount, kMaxInternals, &message) ||
      !checkCount("operation", header->opCount, kMaxOps, &message)) {
    return fail(message);
  }
  if (header->constSize > kMaxConstSize) return fail("constant data over the limit of " + std::to_string(kMaxConstSize));
  const uint64_t needed = kHeaderSize + uint64_t{kArgEntrySize} * header->argCount +
                          uint64_t{kInternalEntrySize} * header->internalCount +
                          uint64_t{kOpEntrySize} * header->opCount + header->constSize;
  if (needed > size_) {
    return fail("truncated: tables need " + std::to_string(needed) + " bytes, the pattern has " +
                std::to_string(size_));
  }
  return true;
}

bool Reader::readArg(const uint8_t* entry, ArgSpec* arg) {
  arg->index = loadLe32(entry);
  arg->size = loadLe32(entry + 4);
  const uint32_t flags = loadLe32(entry + 8);
  const uint8_t* field = entry + 12;
  const void* nul = std::memchr(field, 0, kArgNameField);
  if (!nul) return fail("name is not terminated");
  const size_t length = static_cast<size_t>(static_cast<const uint8_t*>(nul) - field);
  for (size_t i = length; i < kArgNameField; ++i) {
    if (field[i] != 0) return fail("non-zero byte after the name");
  }
  arg->name.assign(reinterpret_cast<const char*>(field), length);
  std::string reason;
  if (!checkArgName(arg->name, &reason) || !checkBufferSize(arg->size, &reason)) return fail(reason);
  if ((flags & ~kArgFlagNoAlloc) != 0) return fail("unknown flag bits " + std::to_string(flags & ~kArgFlagNoAlloc));
  arg->noAlloc = (flags & kArgFlagNoAlloc) != 0;
  return true;
}

bool Reader::readArgs(const uint8_t* table, uint32_t count, Program* program) {
  std::set<uint32_t> indices;
  std::set<std::string> names;
  program->args.resize(count);
  for (uint32_t i = 0; i < count; ++i) {
    ArgSpec& arg = program->args[i];
    const std::string where = "argument " + std::to_string(i) + ": ";
    if (!readArg(table + size_t{kArgEntrySize} * i, &arg)) return fail(where + *error_);
    if (!indices.insert(arg.index).second) return fail(where + "duplicate index " + std::to_string(arg.index));
    if (!names.insert(arg.name).second) return fail(where + "duplicate name \"" + arg.name + "\"");
  }
  return true;
}

bool Reader::readInternals(const uint8_t* table, uint32_t count, Program* program) {
  uint64_t total = 0;
  program->internalSizes.resize(count);
  for (uint32_t i = 0; i < count; ++i) {
    const uint32_t size = loadLe32(table + size_t{kInternalEntrySize} * i);
    std::string reason;
    if (!checkBufferSize(size, &reason)) return fail("internal buffer " + std::to_string(i) + ": " + reason);
    total += size;
    program->internalSizes[i] = size;
  }
  if (total > kMaxInternalTotal) {
    return fail("internal buffers total " + std::to_string(total) + " bytes, over the limit of " +
                std::to_string(kMaxInternalTotal));
  }
  return true;
}

bool Reader::readOps(const uint8_t* table, uint32_t count, Program* program) {
  program->ops.resize(count);
  for (uint32_t i = 0; i < count; ++i) {
    const uint8_t* entry = table + size_t{kOpEntrySize} * i;
    Op& op = program->ops[i];
    op.opcode = static_cast<Opcode>(loadLe32(entry));
    for (uint32_t j = 0; j < kOpParamCount; ++j) op.p[j] = loadLe32(entry + 4 + 4 * j);
    std::string reason;
    if (!validateOp(op, *program, &reason)) {
      const char* name = opcodeName(loadLe32(entry));
      return fail("operation " + std::to_string(i) + (name ? std::string(" (") + name + ")" : std::string()) + ": " +
                  reason);
    }
  }
  return true;
}

bool Reader::read(Program* out) {
  std::string scratch;
  if (!error_) error_ = &scratch;
  Header header;
  if (!readHeader(&header)) return false;
  Program program;
  const uint8_t* cursor = data_ + kHeaderSize;
  if (!readArgs(cursor, header.argCount, &program)) return false;
  cursor += size_t{kArgEntrySize} * header.argCount;
  if (!readInternals(cursor, header.internalCount, &program)) return false;
  cursor += size_t{kInternalEntrySize} * header.internalCount;
  const uint8_t* opTable = cursor;
  cursor += size_t{kOpEntrySize} * header.opCount;
  // Operations are checked against the constant data's size, so read it first.
  program.constData.assign(cursor, cursor + header.constSize);
  if (!readOps(opTable, header.opCount, &program)) return false;
  *out = std::move(program);
  return true;
}

}  // namespace

bool decodePattern(const uint8_t* data, size_t size, Program* out, std::string* error) {
  if (!data && size != 0) {
    if (error) *error = "no data";
    return false;
  }
  return Reader(data, size, error).read(out);
}

}  // namespace kesh::format
