#include "check/tool_stop.h"

#include <stdexcept>
#include <string>

#include "common/fatal.h"

namespace kesh::check {

namespace {

// Thrown through the tool's frames from its fatal path; the tool itself uses
// no exceptions, so nothing in between catches it.
struct Stopped {
  FatalStream stream;
  std::string text;
};

[[noreturn]] void throwStopped(FatalStream stream, const std::string& text) { throw Stopped{stream, text}; }

std::string withoutLineEnd(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

// Installed while any runUntilStop is active (they nest: the innermost catches);
// the default comes back when the outermost one ends, by whatever way it ends.
int activeScopes = 0;
struct HandlerScope {
  HandlerScope() {
    if (activeScopes++ == 0) setFatalHandler(&throwStopped);
  }
  ~HandlerScope() {
    if (--activeScopes == 0) setFatalHandler(nullptr);
  }
  HandlerScope(const HandlerScope&) = delete;
  HandlerScope& operator=(const HandlerScope&) = delete;
};

}  // namespace

ToolStop runUntilStop(const std::function<void()>& work) {
  ToolStop stop;
  HandlerScope scope;
  try {
    work();
  } catch (const Stopped& stopped) {
    stop.stopped = true;
    stop.toStdout = stopped.stream == FatalStream::kStdout;
    stop.message = withoutLineEnd(stopped.text);
  } catch (const std::out_of_range&) {
    stop.stopped = true;
    stop.aborted = true;
    stop.message = "abort";
  }
  return stop;
}

}  // namespace kesh::check
