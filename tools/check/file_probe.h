// What a data or pattern file is, learnt from its directory entry only: the
// checker never reads data files' contents. Caches per path; not thread-safe.
#ifndef KESH_CHECK_FILE_PROBE_H_
#define KESH_CHECK_FILE_PROBE_H_

#include <cstdint>
#include <map>
#include <string>

namespace kesh::check {

/// Kinds of path as far as kesh_player's file reading is concerned.
enum class FileKind { kRegular, kMissing, kDirectory, kUnreadable };

/// One path's kind and size.
struct FileFacts {
  FileKind kind = FileKind::kMissing;  ///< what the path names
  uint64_t size = 0;                   ///< bytes, for a regular file
};

/// Looks each distinct path up once.
class FileProbe {
 public:
  /// The facts of `path`, from the cache or from the file system.
  const FileFacts& probe(const std::string& path);

 private:
  std::map<std::string, FileFacts> cache_;
};

/// Why kesh_player could not open a file of `kind`, as words after the path.
const char* whyUnopenable(FileKind kind);

}  // namespace kesh::check

#endif  // KESH_CHECK_FILE_PROBE_H_
