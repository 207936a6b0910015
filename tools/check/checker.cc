#include "check/checker.h"

#include "check/file_probe.h"
#include "check/pattern_catalog.h"
#include "check/player_args.h"
#include "check/report.h"
#include "check/run_findings.h"
#include "check/set_findings.h"

namespace kesh::check {

int collectFindings(const CheckOptions& options, Diagnostics& findings, std::string& why) {
  PatternCatalog catalog;
  if (!catalog.ready()) {
    why = "the pattern library gives no player (\"Failed to create player\"): nothing can be checked";
    return kCouldNotCheck;
  }
  const PlayerArgs parsed = readPlayerArgs(options.playerArgs, catalog, findings);
  FileProbe probe;
  SetFindings setFindings(catalog, probe, options.cores, findings);
  for (const SetRecord& set : parsed.sets) setFindings.check(set);
  checkRun(parsed.run, parsed.sets, findings);
  return statusOf(findings, options.werror);
}

int runCheck(const CheckOptions& options, std::ostream& out, std::ostream& err) {
  Diagnostics findings;
  std::string why;
  const int status = collectFindings(options, findings, why);
  if (status == kCouldNotCheck) err << "kesh_check: " << why << '\n';
  if (options.json) {
    printJson(findings, status, out);
  } else {
    printText(findings, out);
  }
  return status;
}

}  // namespace kesh::check
