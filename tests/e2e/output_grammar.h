// Reads one run of the tool against the documented grammar of its output, so that
// every run of the end-to-end tests also proves that no line escaped the grammar
// (a line added to the tool without its description fails here). Uses the report's
// parser and plans with the tool's own parsers, whose state is process-wide: one
// call at a time.
#ifndef KESH_TESTS_E2E_OUTPUT_GRAMMAR_H_
#define KESH_TESTS_E2E_OUTPUT_GRAMMAR_H_

#include <string>
#include <vector>

namespace kesh::testing {

/// The lines of a run of the tool with `args` in folder `dir` (standard output `out`,
/// standard error `err`, killed by `signal` or exited with `status`) that the grammar
/// does not know, one per line with the stream it came from; empty when all are known.
std::string linesOutsideGrammar(const std::vector<std::string>& args, const std::string& dir,
                                const std::string& out, const std::string& err, int status, int signal);

}  // namespace kesh::testing

#endif  // KESH_TESTS_E2E_OUTPUT_GRAMMAR_H_
