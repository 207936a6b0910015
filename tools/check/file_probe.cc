#include "check/file_probe.h"

#include <sys/stat.h>
#include <unistd.h>

namespace kesh::check {

namespace {

FileFacts lookUp(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return {FileKind::kMissing, 0};
  if (S_ISDIR(info.st_mode)) return {FileKind::kDirectory, 0};
  // Opening for reading is what the tool does; access() answers it without
  // touching the contents.
  if (::access(path.c_str(), R_OK) != 0) return {FileKind::kUnreadable, 0};
  return {FileKind::kRegular, static_cast<uint64_t>(info.st_size)};
}

}  // namespace

const FileFacts& FileProbe::probe(const std::string& path) {
  auto found = cache_.find(path);
  if (found == cache_.end()) found = cache_.emplace(path, lookUp(path)).first;
  return found->second;
}

const char* whyUnopenable(FileKind kind) {
  static const char* const kWhy[] = {"", "does not exist", "is a directory", "is not readable"};  // the enum's order
  return kWhy[static_cast<int>(kind)];
}

}  // namespace kesh::check
