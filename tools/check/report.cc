#include "check/report.h"

#include <nlohmann/json.hpp>

namespace kesh::check {

void printText(const Diagnostics& findings, std::ostream& out) {
  for (const Diagnostic& d : findings.byPlace()) out << formatDiagnostic(d) << '\n';
  out.flush();
}

void printJson(const Diagnostics& findings, int status, std::ostream& out) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const Diagnostic& d : findings.byPlace()) {
    list.push_back({{"file", d.where.file},
                    {"line", d.where.line},
                    {"severity", severityName(d.severity)},
                    {"message", d.text}});
  }
  nlohmann::ordered_json document = {{"findings", list},
                                     {"errors", findings.count(Severity::kError)},
                                     {"warnings", findings.count(Severity::kWarning)},
                                     {"notes", findings.count(Severity::kNote)},
                                     {"status", status}};
  // Names may hold any bytes; replace what is not UTF-8 rather than fail.
  out << document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
  out.flush();
}

int statusOf(const Diagnostics& findings, bool werror) {
  if (findings.count(Severity::kError) != 0) return kFound;
  if (werror && findings.count(Severity::kWarning) != 0) return kFound;
  return kClean;
}

}  // namespace kesh::check
