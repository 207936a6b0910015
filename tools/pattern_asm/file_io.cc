#include "pattern_asm/file_io.h"

#include <fstream>
#include <iterator>

namespace kesh::pattern_text {

bool readFile(const std::string& path, std::string* content) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return false;
  content->assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  return !file.bad();
}

bool writeFile(const std::string& path, const char* data, size_t size) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(data, static_cast<std::streamsize>(size));
  return static_cast<bool>(file.flush());
}

}  // namespace kesh::pattern_text
