// Running the tool's own code up to the point where it would end the process.
// Installs a process-wide fatal handler for the duration of one call, so use
// it from one thread at a time (the tool's parsers are single-threaded too).
#ifndef KESH_CHECK_TOOL_STOP_H_
#define KESH_CHECK_TOOL_STOP_H_

#include <functional>
#include <string>

namespace kesh::check {

/// How a piece of the tool's code ended.
struct ToolStop {
  bool stopped = false;    ///< it would have ended the process
  bool toStdout = false;   ///< its last words went to standard output
  bool aborted = false;    ///< it would have aborted (a checked lookup failed)
  std::string message;     ///< its last words, without the line end
};

/// Runs `work`; when the tool's code in it would end the process, stops it
/// there instead and reports the message.
ToolStop runUntilStop(const std::function<void()>& work);

}  // namespace kesh::check

#endif  // KESH_CHECK_TOOL_STOP_H_
