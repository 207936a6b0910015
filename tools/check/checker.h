// The whole check: read kesh_player's arguments with the tool's parsers, learn
// the patterns, judge every command set and the run, print the findings.
// Uses process-wide parser state: one check at a time per process.
#ifndef KESH_CHECK_CHECKER_H_
#define KESH_CHECK_CHECKER_H_

#include <ostream>

#include "check/check_options.h"
#include "check/diagnostics.h"

namespace kesh::check {

/// Collects the findings of `options`; returns kCouldNotCheck (and a reason in
/// `why`) when the pattern library cannot be used at all.
int collectFindings(const CheckOptions& options, Diagnostics& findings, std::string& why);

/// Checks, prints the findings to `out` (reasons for not checking to `err`),
/// and returns the exit status.
int runCheck(const CheckOptions& options, std::ostream& out, std::ostream& err);

}  // namespace kesh::check

#endif  // KESH_CHECK_CHECKER_H_
