// A scratch folder for a test, removed with its content when destroyed; one owner, not copyable.
#ifndef KESH_TESTING_TEMP_DIR_H_
#define KESH_TESTING_TEMP_DIR_H_

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace kesh::testing {

/// A fresh, uniquely named folder under the system's temporary folder.
class TempDir {
 public:
  /// Makes the folder; aborts the process if it cannot.
  TempDir() : path_((std::filesystem::temp_directory_path() / "kesh_test_XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) std::abort();
  }
  /// Removes the folder and everything in it.
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  /// The folder's absolute path, without a trailing slash.
  const std::string& path() const { return path_; }
  /// Writes `content` to `name` (relative, its folders made as needed); returns its path; aborts on failure.
  std::string write(const std::string& name, const std::string& content) const {
    const std::filesystem::path file = std::filesystem::path(path_) / name;
    std::filesystem::create_directories(file.parent_path());
    if (!(std::ofstream(file, std::ios::binary) << content).flush()) std::abort();
    return file.string();
  }
  /// Writes `bytes` to `name` as write() does; returns its path.
  std::string write(const std::string& name, const std::vector<uint8_t>& bytes) const {
    return write(name, std::string(bytes.begin(), bytes.end()));
  }

 private:
  std::string path_;
};

}  // namespace kesh::testing

#endif  // KESH_TESTING_TEMP_DIR_H_
