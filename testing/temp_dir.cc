#include "testing/temp_dir.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace kesh::testing {

TempDir::TempDir() : path_((std::filesystem::temp_directory_path() / "kesh_test_XXXXXX").string()) {
  if (mkdtemp(path_.data()) == nullptr) {
    std::perror(path_.c_str());
    std::abort();
  }
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::write(const std::string& name, const std::string& content) const {
  const std::filesystem::path file = std::filesystem::path(path_) / name;
  std::filesystem::create_directories(file.parent_path());
  std::ofstream out(file, std::ios::binary);
  out << content;
  if (!out.flush()) {
    std::perror(file.c_str());
    std::abort();
  }
  return file.string();
}

std::string TempDir::write(const std::string& name, const std::vector<uint8_t>& bytes) const {
  return write(name, std::string(bytes.begin(), bytes.end()));
}

}  // namespace kesh::testing
