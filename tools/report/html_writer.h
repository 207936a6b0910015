// The results as one self-contained HTML page that opens offline: summary,
// the command sets with their verdicts and time statistics, a timeline of
// each group's jobs per run, and the spread of IP times per pattern, all as
// inline CSS and SVG without scripts. Stateless.
#ifndef KESH_REPORT_HTML_WRITER_H_
#define KESH_REPORT_HTML_WRITER_H_

#include <string>

#include "report/plan.h"
#include "report/provenance.h"
#include "report/results.h"

namespace kesh::report {

/// The page.
std::string resultsHtml(const Plan& plan, const Results& results, const Provenance& provenance);

/// `text` with the characters HTML gives meaning to written as references.
std::string htmlEscaped(const std::string& text);

}  // namespace kesh::report

#endif  // KESH_REPORT_HTML_WRITER_H_
