// Telling directories apart from files before a stream is opened on them.
// Stateless; thread-safe.
#ifndef KESH_SETTINGS_FILE_KIND_H_
#define KESH_SETTINGS_FILE_KIND_H_

namespace kesh::settings {

/// True when `path` names a directory (following links); false otherwise or on any error.
bool isDirectory(const char* path);

}  // namespace kesh::settings

#endif  // KESH_SETTINGS_FILE_KIND_H_
