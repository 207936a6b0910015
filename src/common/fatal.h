// Ending the process on an error it cannot go on from. The default path is
// stateless and safe from any thread; the handler is process-wide and is
// installed before any parsing starts (embedding programs only).
#ifndef KESH_COMMON_FATAL_H_
#define KESH_COMMON_FATAL_H_

#include <string>

namespace kesh {

/// Where a fatal message goes; some messages have always gone to standard output.
enum class FatalStream { kStdout, kStderr };

/// Writes `text` (it carries its own line end) to `stream`, flushed, and ends the process with
/// status 1; when a handler is installed it is called instead and must not return (throws or jumps).
[[noreturn]] void fatal(FatalStream stream, const std::string& text);

/// fatal() on standard error with a line end appended.
[[noreturn]] void fatalError(const std::string& line);

/// The message every file that cannot be opened gets.
[[noreturn]] void fatalCannotOpen(const char* path);

/// Receives a fatal message instead of the default path; must not return.
using FatalHandler = void (*)(FatalStream stream, const std::string& text);

/// Installs `handler` process-wide (nullptr restores the default); for embedding programs only.
void setFatalHandler(FatalHandler handler);

}  // namespace kesh

#endif  // KESH_COMMON_FATAL_H_
