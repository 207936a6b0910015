// kesh_report's command line: the result files to write, an optional log to
// read instead of running the tool, and the tool's own words after "--".
// Plain value; parsing is stateless.
#ifndef KESH_REPORT_REPORT_OPTIONS_H_
#define KESH_REPORT_REPORT_OPTIONS_H_

#include <string>
#include <vector>

namespace kesh::report {

/// What kesh_report was asked to do.
struct ReportOptions {
  std::string junit;              ///< JUnit XML file, empty for none
  std::string json;               ///< JSON file, empty for none
  std::string csv;                ///< timing statistics CSV, empty for none
  std::string html;               ///< HTML page, empty for none
  std::string log;                ///< read this captured output instead of running the tool
  int status = 0;                 ///< with a log: the status the tool ended with
  bool statusGiven = false;       ///< --status was given
  std::vector<std::string> tool;  ///< the tool's words, word 0 its program
};

/// Reads `args` (without word 0) into `options`; returns false with the reason in `why`.
bool parseReportOptions(const std::vector<std::string>& args, ReportOptions& options, std::string& why);

/// The usage text, ending with a line feed.
const char* reportUsage();

}  // namespace kesh::report

#endif  // KESH_REPORT_REPORT_OPTIONS_H_
