// Whole-file reads and writes of the pattern tools. Stateless; safe from any
// thread on distinct files.
#ifndef KESH_TOOLS_PATTERN_ASM_FILE_IO_H_
#define KESH_TOOLS_PATTERN_ASM_FILE_IO_H_

#include <cstddef>
#include <string>

namespace kesh::pattern_text {

/// Replaces *content with the bytes of the file at `path`; false if it cannot be read.
bool readFile(const std::string& path, std::string* content);

/// Writes `size` bytes to `path`, replacing it; false if that fails.
bool writeFile(const std::string& path, const char* data, size_t size);

}  // namespace kesh::pattern_text

#endif  // KESH_TOOLS_PATTERN_ASM_FILE_IO_H_
