// Ending the process on bad input. Stateless; safe from any thread, though
// the tool only calls it from the main thread.
#ifndef KESH_SETTINGS_FATAL_H_
#define KESH_SETTINGS_FATAL_H_

#include <string>

namespace kesh::settings {

/// Writes `line` and a line end to standard error, flushed, then exits with status 1.
[[noreturn]] void fail(const std::string& line);

/// Ends the process with the message every unreadable file gets.
[[noreturn]] void failCannotOpen(const char* path);

}  // namespace kesh::settings

#endif  // KESH_SETTINGS_FATAL_H_
