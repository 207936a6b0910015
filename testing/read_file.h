// Whole-file reads for tests. Stateless; safe from any thread.
#ifndef KESH_TESTING_READ_FILE_H_
#define KESH_TESTING_READ_FILE_H_

#include <cstdint>
#include <string>
#include <vector>

namespace kesh::testing {

/// The whole content of `path`; "" when it cannot be read.
std::string readFile(const std::string& path);
/// The whole content of `path` as bytes; empty when it cannot be read.
std::vector<uint8_t> readFileBytes(const std::string& path);

}  // namespace kesh::testing

#endif  // KESH_TESTING_READ_FILE_H_
