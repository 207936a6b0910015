#include "settings/file_kind.h"

#include <filesystem>
#include <system_error>

namespace kesh::settings {

bool isDirectory(const char* path) {
  std::error_code error;
  return std::filesystem::is_directory(path, error);
}

}  // namespace kesh::settings
