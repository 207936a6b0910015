// Printing the findings and choosing the exit status. Stateless.
#ifndef KESH_CHECK_REPORT_H_
#define KESH_CHECK_REPORT_H_

#include <ostream>

#include "check/diagnostics.h"

namespace kesh::check {

/// Exit status: clean.
constexpr int kClean = 0;
/// Exit status: errors found (or warnings, when they count as errors).
constexpr int kFound = 1;
/// Exit status: the check could not be made.
constexpr int kCouldNotCheck = 2;

/// One line per finding, in order.
void printText(const Diagnostics& findings, std::ostream& out);

/// The findings as one JSON document: {"findings":[{file,line,severity,message}],"errors":..}.
void printJson(const Diagnostics& findings, int status, std::ostream& out);

/// kFound when there are errors, or warnings and `werror`; else kClean.
int statusOf(const Diagnostics& findings, bool werror);

}  // namespace kesh::check

#endif  // KESH_CHECK_REPORT_H_
