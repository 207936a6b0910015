#include "testing/read_file.h"

#include <fstream>
#include <iterator>

namespace kesh::testing {

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

std::vector<uint8_t> readFileBytes(const std::string& path) {
  const std::string text = readFile(path);
  return std::vector<uint8_t>(text.begin(), text.end());
}

}  // namespace kesh::testing
