// Rules on a pattern's argument and internal-buffer tables, shared by the
// reader and the text assembler. Stateless; safe from any thread.
#ifndef KESH_EMULATOR_FORMAT_TABLE_RULES_H_
#define KESH_EMULATOR_FORMAT_TABLE_RULES_H_

#include <cstdint>
#include <string>

namespace kesh::format {

/// True if `name` is 1..35 printable ASCII characters other than ';'
/// (the names are joined with ';' when the library reports them); otherwise
/// sets *error (when not null) to the reason.
bool checkArgName(const std::string& name, std::string* error);

/// True if `size` is a valid size of one argument or internal buffer (1..kMaxBufferSize).
bool checkBufferSize(uint64_t size, std::string* error);

}  // namespace kesh::format

#endif  // KESH_EMULATOR_FORMAT_TABLE_RULES_H_
