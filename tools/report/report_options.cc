#include "report/report_options.h"

#include <cstdlib>

namespace kesh::report {

const char* reportUsage() {
  return "usage: kesh_report [--junit FILE] [--json FILE] [--csv FILE] [--html FILE]\n"
         "                   [--log FILE --status N] -- kesh_player [ARGS...]\n";
}

bool parseReportOptions(const std::vector<std::string>& args, ReportOptions& options, std::string& why) {
  size_t k = 0;
  for (; k < args.size() && args[k] != "--"; ++k) {
    const std::string& word = args[k];
    std::string* into = word == "--junit"  ? &options.junit
                        : word == "--json" ? &options.json
                        : word == "--csv"  ? &options.csv
                        : word == "--html" ? &options.html
                        : word == "--log"  ? &options.log
                                           : nullptr;
    if (into == nullptr && word != "--status") {
      why = "unknown option '" + word + "'";
      return false;
    }
    if (k + 1 >= args.size() || args[k + 1].empty()) {
      why = "option '" + word + "' needs a value";
      return false;
    }
    const std::string& value = args[++k];
    if (into != nullptr) {
      *into = value;
      continue;
    }
    char* end = nullptr;
    const long status = std::strtol(value.c_str(), &end, 10);
    if (*end != '\0' || status < 0 || status > 255) {
      why = "--status needs an exit status from 0 to 255, not '" + value + "'";
      return false;
    }
    options.status = static_cast<int>(status);
    options.statusGiven = true;
  }
  if (k + 1 >= args.size()) {
    why = "no tool to run: give '--' and the kesh_player command";
    return false;
  }
  if (options.statusGiven && options.log.empty()) {
    why = "--status is only meaningful with --log";
    return false;
  }
  if (!options.log.empty() && !options.statusGiven) {
    why = "--log needs --status, the status the tool ended with";
    return false;
  }
  options.tool.assign(args.begin() + static_cast<std::ptrdiff_t>(k) + 1, args.end());
  return true;
}

}  // namespace kesh::report
