// Names and messages shared by every output format: how an execution and a
// compared argument are named, and how an abnormal end of the tool is told.
// Stateless functions.
#ifndef KESH_REPORT_NAMING_H_
#define KESH_REPORT_NAMING_H_

#include <cstddef>
#include <string>

#include "report/plan.h"
#include "report/results.h"

namespace kesh::report {

/// The command set's label ("FILE:LINE" or "<command line>"), with " #k" for its k-th
/// execution within `run` when k > 1; "?" plus the echoed text for an unattributed one.
std::string executionName(const Plan& plan, const Run& run, size_t execution);

/// "PATTERN ARG" for a verdict of `execution` ("? ARG" when its pattern is not known).
std::string argumentName(const Plan& plan, const Execution& execution, const Verdict& verdict);

/// The golden file compared for `verdict`, empty when none is known.
std::string goldenOf(const Plan& plan, const Execution& execution, const Verdict& verdict);

/// Why the tool ended abnormally: its fatal lines, the signal that killed it, or an
/// unexpected status; empty when it ended normally.
std::string abnormalEnd(const Results& results);

}  // namespace kesh::report

#endif  // KESH_REPORT_NAMING_H_
