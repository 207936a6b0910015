// Which pattern library a process loaded: its path from the process's memory
// map (or, once the process is gone, from the dynamic loader's own resolution
// of the program), its build id from the file's ELF notes, and whether it is
// this project's host library. Stateless functions.
#ifndef KESH_REPORT_LIBRARY_PROBE_H_
#define KESH_REPORT_LIBRARY_PROBE_H_

#include <sys/types.h>

#include <string>
#include <vector>

namespace kesh::report {

/// What is known of the loaded library; empty path when it could not be learnt.
struct LibraryFacts {
  std::string path;          ///< the file the loader mapped
  std::string buildId;       ///< lower-case hex of the GNU build id, empty if none
  bool hostLibrary = false;  ///< the file is the host library (it reads KESH_EMU_* settings)
  std::string how;           ///< "process map" or "loader resolution"
};

/// The library's path as mapped into the running process `pid`, empty if not (yet) mapped.
std::string mappedLibrary(pid_t pid);

/// The library's path as the loader resolves it for `program` in environment `env`
/// (the loader lists the program's libraries without running it); empty if it cannot tell.
std::string resolvedLibrary(const std::string& program, const std::vector<std::string>& env);

/// Build id and kind of the library file at `path` (filled into a copy of `facts`).
LibraryFacts describeLibrary(const std::string& path, const std::string& how);

}  // namespace kesh::report

#endif  // KESH_REPORT_LIBRARY_PROBE_H_
