// Whole-file reads for tests. Stateless; safe from any thread.
#ifndef KESH_TESTING_READ_FILE_H_
#define KESH_TESTING_READ_FILE_H_

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace kesh::testing {

/// The whole content of `path`; "" when it cannot be read.
inline std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

/// The whole content of `path` as bytes; empty when it cannot be read.
inline std::vector<uint8_t> readFileBytes(const std::string& path) {
  const std::string text = readFile(path);
  return std::vector<uint8_t>(text.begin(), text.end());
}

}  // namespace kesh::testing

#endif  // KESH_TESTING_READ_FILE_H_
