// Findings of a check, in the form compilers use so that editors and CI can
// annotate them. A plain value collection; not thread-safe (one per check).
#ifndef KESH_CHECK_DIAGNOSTICS_H_
#define KESH_CHECK_DIAGNOSTICS_H_

#include <cstddef>
#include <string>
#include <vector>

namespace kesh::check {

/// How bad a finding is.
enum class Severity { kError, kWarning, kNote };

/// Where a command set came from: a command file's line, or the program's own arguments.
struct Location {
  std::string file;  ///< the command file as named, or kCommandLine
  int line = 0;      ///< 1-based line of the command file; 0 for the command line
};

/// The file name used for findings about the program's own arguments.
extern const char kCommandLine[];

/// One finding.
struct Diagnostic {
  Severity severity = Severity::kError;  ///< error, warning or note
  Location where;                        ///< file and line
  std::string text;                      ///< the message, one line
};

/// The findings of one check in the order they were found.
class Diagnostics {
 public:
  /// Appends a finding.
  void add(Severity severity, const Location& where, std::string text);
  /// Appends an error.
  void error(const Location& where, std::string text) { add(Severity::kError, where, std::move(text)); }
  /// Appends a warning.
  void warning(const Location& where, std::string text) { add(Severity::kWarning, where, std::move(text)); }
  /// Appends a note.
  void note(const Location& where, std::string text) { add(Severity::kNote, where, std::move(text)); }

  /// Every finding, in the order found.
  const std::vector<Diagnostic>& all() const { return all_; }
  /// Every finding by place: files in the order first named, lines ascending,
  /// the command line last; findings of one place keep the order found.
  std::vector<Diagnostic> byPlace() const;
  /// How many findings have `severity`.
  size_t count(Severity severity) const;

 private:
  std::vector<Diagnostic> all_;
};

/// "error", "warning" or "note".
const char* severityName(Severity severity);

/// "FILE:LINE: SEVERITY: TEXT" (no ":LINE" for the command line), without a line end.
std::string formatDiagnostic(const Diagnostic& diagnostic);

/// `text` with control characters written as C escapes (a carriage return as \r),
/// so that a name that seems right shows what it really holds.
std::string visible(const std::string& text);

}  // namespace kesh::check

#endif  // KESH_CHECK_DIAGNOSTICS_H_
