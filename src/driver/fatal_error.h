// Fatal failure reporting of the tool. Stateless; called from the main thread.
#ifndef KESH_DRIVER_FATAL_ERROR_H_
#define KESH_DRIVER_FATAL_ERROR_H_

#include <string>

/// Writes `message` and a newline to standard error, flushed, and ends the
/// process with status 1 without releasing anything.
[[noreturn]] void fatalError(const std::string& message);

#endif  // KESH_DRIVER_FATAL_ERROR_H_
