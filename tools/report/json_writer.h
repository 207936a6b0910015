// The results as one JSON document with everything: provenance, every run's
// group order, every execution's times and timestamps, every verdict, the
// timing statistics, fatal and unknown lines. Stateless.
#ifndef KESH_REPORT_JSON_WRITER_H_
#define KESH_REPORT_JSON_WRITER_H_

#include <string>

#include "report/plan.h"
#include "report/provenance.h"
#include "report/results.h"

namespace kesh::report {

/// The JSON document (indented, ending with a line feed).
std::string resultsJson(const Plan& plan, const Results& results, const Provenance& provenance);

}  // namespace kesh::report

#endif  // KESH_REPORT_JSON_WRITER_H_
