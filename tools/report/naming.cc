#include "report/naming.h"

#include <cstring>

namespace kesh::report {

std::string executionName(const Plan& plan, const Run& run, size_t execution) {
  const Execution& which = run.executions[execution];
  if (which.set == kUnknown) return "? " + which.text;
  size_t occurrence = 0;
  for (size_t k = 0; k <= execution; ++k) occurrence += run.executions[k].set == which.set ? 1 : 0;
  const std::string& label = plan.sets[which.set].label;
  return occurrence > 1 ? label + " #" + std::to_string(occurrence) : label;
}

std::string argumentName(const Plan& plan, const Execution& execution, const Verdict& verdict) {
  if (execution.set == kUnknown || verdict.pattern == kUnknown) return "? " + verdict.arg;
  return plan.sets[execution.set].patterns[verdict.pattern].label + " " + verdict.arg;
}

std::string goldenOf(const Plan& plan, const Execution& execution, const Verdict& verdict) {
  if (execution.set == kUnknown || verdict.pattern == kUnknown) return "";
  for (const ComparedArg& arg : plan.sets[execution.set].patterns[verdict.pattern].args) {
    if (arg.name == verdict.arg) return arg.goldenPath;
  }
  return "";
}

std::string abnormalEnd(const Results& results) {
  std::string why;
  for (const std::string& line : results.fatal) why += (why.empty() ? "" : "; ") + line;
  if (results.signal != 0) {
    if (!why.empty()) why += "; ";
    why += "killed by signal " + std::to_string(results.signal);
    const char* name = strsignal(results.signal);
    if (name != nullptr) why += std::string(" (") + name + ")";
  }
  if (why.empty() && results.status != 0 && results.status != 255) {
    why = "kesh_player ended with status " + std::to_string(results.status);
  }
  return why;
}

}  // namespace kesh::report
