#include "format/table_rules.h"

#include "format/format_defs.h"

namespace kesh::format {
namespace {

bool fail(std::string* error, std::string message) {
  if (error) *error = std::move(message);
  return false;
}

}  // namespace

bool checkArgName(const std::string& name, std::string* error) {
  if (name.empty()) return fail(error, "empty name");
  if (name.size() >= kArgNameField) {
    return fail(error, "name longer than " + std::to_string(kArgNameField - 1) + " characters");
  }
  for (char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte > 0x7E) return fail(error, "non-printable character in name");
    if (c == ';') return fail(error, "';' in name");
  }
  return true;
}

bool checkBufferSize(uint64_t size, std::string* error) {
  if (size == 0) return fail(error, "size 0");
  if (size > kMaxBufferSize) {
    return fail(error, "size " + std::to_string(size) + " over the limit of " + std::to_string(kMaxBufferSize));
  }
  return true;
}

}  // namespace kesh::format
