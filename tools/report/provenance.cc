#include "report/provenance.h"

#include <unistd.h>

#include <ctime>

namespace kesh::report {

Provenance collectProvenance(const std::vector<std::string>& env) {
  Provenance facts;
  facts.toolVersion = KESH_REPORT_VERSION;
  facts.commit = KESH_REPORT_COMMIT;
  for (const std::string& entry : env) {
    if (entry.rfind("KESH_EMU_", 0) != 0) continue;
    const size_t equals = entry.find('=');
    facts.settings.emplace_back(entry.substr(0, equals), equals == std::string::npos ? "" : entry.substr(equals + 1));
  }
  char host[256] = {};
  if (gethostname(host, sizeof host - 1) == 0) facts.host = host;
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  gmtime_r(&now, &utc);
  char date[32];
  std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%SZ", &utc);
  facts.date = date;
  return facts;
}

}  // namespace kesh::report
