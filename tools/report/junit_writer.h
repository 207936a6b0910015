// The results as JUnit XML, the form CI servers read: a suite per run, a case
// per execution of a command set and per compared argument. Stateless.
#ifndef KESH_REPORT_JUNIT_WRITER_H_
#define KESH_REPORT_JUNIT_WRITER_H_

#include <string>

#include "report/plan.h"
#include "report/results.h"

namespace kesh::report {

/// The JUnit document for `results` read against `plan`.
std::string junitXml(const Plan& plan, const Results& results);

}  // namespace kesh::report

#endif  // KESH_REPORT_JUNIT_WRITER_H_
