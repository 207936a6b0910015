// A scratch folder for a test. Owns the folder and removes it with its content
// when destroyed. Not copyable; one owner, no sharing between threads needed.
#ifndef KESH_TESTING_TEMP_DIR_H_
#define KESH_TESTING_TEMP_DIR_H_

#include <cstdint>
#include <string>
#include <vector>

namespace kesh::testing {

/// A fresh, uniquely named folder under the system's temporary folder.
class TempDir {
 public:
  /// Makes the folder; aborts the process if it cannot.
  TempDir();
  /// Removes the folder and everything in it.
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  /// The folder's absolute path, without a trailing slash.
  const std::string& path() const { return path_; }
  /// Writes `content` to `name` (relative, may hold folders, made as needed); returns its path.
  std::string write(const std::string& name, const std::string& content) const;
  /// Writes `bytes` to `name` as write() does; returns its path.
  std::string write(const std::string& name, const std::vector<uint8_t>& bytes) const;

 private:
  std::string path_;
};

}  // namespace kesh::testing

#endif  // KESH_TESTING_TEMP_DIR_H_
