// Where a set of results came from: which tool and library ran, where, when,
// with which settings and arguments. Plain values; collecting them reads the
// environment and the host's name.
#ifndef KESH_REPORT_PROVENANCE_H_
#define KESH_REPORT_PROVENANCE_H_

#include <string>
#include <utility>
#include <vector>

#include "report/library_probe.h"

namespace kesh::report {

/// The facts that make results comparable.
struct Provenance {
  std::string toolVersion;  ///< the project's version
  std::string commit;       ///< the source commit it was built from, "unknown" if not known
  LibraryFacts library;     ///< the pattern library the tool loaded
  std::vector<std::pair<std::string, std::string>> settings;  ///< KESH_EMU_* variables given to the tool
  std::string host;                                           ///< the machine's name
  std::string date;                                           ///< UTC start time, ISO 8601
  std::vector<std::string> commandLine;                       ///< the tool's words, word 0 included
  std::string log;  ///< the log read instead of running the tool, empty when it ran
};

/// Version, commit, host, date and the KESH_EMU_* entries of `env`; the caller adds the rest.
Provenance collectProvenance(const std::vector<std::string>& env);

}  // namespace kesh::report

#endif  // KESH_REPORT_PROVENANCE_H_
