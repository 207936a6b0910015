// Whole-file reads for tests. Stateless; safe from any thread.
#ifndef KESH_TESTING_READ_FILE_H_
#define KESH_TESTING_READ_FILE_H_

#include <fstream>
#include <iterator>
#include <string>

namespace kesh::testing {

/// The whole content of `path`; "" when it cannot be read.
inline std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace kesh::testing

#endif  // KESH_TESTING_READ_FILE_H_
