// Where the call trace goes: KESH_EMU_TRACE, read once at the first call, is
// "stderr" or a file path (opened for appending). Unset or empty, or a file
// that cannot be opened, turns the trace off. Thread-safe: each line goes out
// in one write, so lines of concurrent calls never interleave. The sink is
// process-wide and intentionally never destroyed.
#ifndef KESH_EMULATOR_RUNTIME_TRACE_H_
#define KESH_EMULATOR_RUNTIME_TRACE_H_

#include <string>

namespace kesh::runtime {

class TraceSink {
 public:
  /// The process-wide sink, configured from the environment on first use.
  static TraceSink& instance();

  /// True when lines are written anywhere.
  bool enabled() const { return fd_ >= 0; }

  /// Writes `line` and a newline as one unit; does nothing when disabled.
  void writeLine(const std::string& line) const;

 private:
  explicit TraceSink(const char* setting);
  int fd_ = -1;
};

/// `text` in double quotes with '"' and '\' escaped by a backslash and every
/// byte outside printable ASCII as \xNN, so a trace line stays one line.
std::string quoted(const char* text);

}  // namespace kesh::runtime

#endif  // KESH_EMULATOR_RUNTIME_TRACE_H_
