// A failed comparison told in one line: how many bytes differ, where, and the
// first few expected and actual values. Expected bytes come from the golden
// file; the actual byte is the expected one XOR the listed value. Stateless.
#ifndef KESH_REPORT_DIFF_TEXT_H_
#define KESH_REPORT_DIFF_TEXT_H_

#include <string>

#include "report/results.h"

namespace kesh::report {

/// "N of M bytes differ (offsets F..L): at O expected 0xEE actual 0xAA, ..."; with an
/// empty or unreadable `goldenPath` only the XOR values are given.
std::string describeDiff(const DiffSummary& diff, const std::string& goldenPath);

}  // namespace kesh::report

#endif  // KESH_REPORT_DIFF_TEXT_H_
