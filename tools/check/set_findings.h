// Findings about one command set: its patterns, their data files and the
// values the library will be given. Uses the catalog and the probe it is
// given (not owned); not thread-safe.
#ifndef KESH_CHECK_SET_FINDINGS_H_
#define KESH_CHECK_SET_FINDINGS_H_

#include "check/diagnostics.h"
#include "check/file_probe.h"
#include "check/pattern_catalog.h"
#include "check/set_record.h"

namespace kesh::check {

/// Checks command sets one at a time.
class SetFindings {
 public:
  /// `cores`: the library's cores, for the range of core affinity.
  SetFindings(PatternCatalog& catalog, FileProbe& probe, int cores, Diagnostics& out)
      : catalog_(catalog), probe_(probe), cores_(cores), out_(out) {}

  /// Adds the findings of `set` to the output.
  void check(const SetRecord& set);

 private:
  void checkStop(const SetRecord& set);
  void checkLineForm(const SetRecord& set);
  void checkPattern(const SetRecord& set, const PatternRecord& pattern);
  void checkBinding(const SetRecord& set, const PatternRecord& pattern, const PatternFacts& facts,
                    const DataBinding& binding);
  void checkUnset(const SetRecord& set, const PatternRecord& pattern, const PatternFacts& facts);
  void checkValues(const SetRecord& set);
  bool usableFile(const SetRecord& set, const char* role, const std::string& path);

  PatternCatalog& catalog_;
  FileProbe& probe_;
  int cores_;
  Diagnostics& out_;
};

}  // namespace kesh::check

#endif  // KESH_CHECK_SET_FINDINGS_H_
