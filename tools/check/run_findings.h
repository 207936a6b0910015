// Findings about a whole run: the groups the tool would form, how many
// executions each holds, and runs that would test nothing. Stateless.
#ifndef KESH_CHECK_RUN_FINDINGS_H_
#define KESH_CHECK_RUN_FINDINGS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "check/diagnostics.h"
#include "check/set_record.h"

namespace kesh::check {

/// The global settings of the run.
struct RunFacts {
  bool help = false;                      ///< -h was given
  int32_t loopCount = 1;                  ///< runs; -1 until one fails
  std::vector<std::string> ignoredWords;  ///< options the tool ignores, as written
  bool stopped = false;                   ///< the global parse itself would stop the tool
};

/// The built sets' indices into `sets`, arranged in groups as the tool arranges them.
std::vector<std::vector<size_t>> groupsOf(const std::vector<SetRecord>& sets);

/// Adds the findings about the run made of `sets` to `out`.
void checkRun(const RunFacts& run, const std::vector<SetRecord>& sets, Diagnostics& out);

}  // namespace kesh::check

#endif  // KESH_CHECK_RUN_FINDINGS_H_
