// What the tool is about to run, learnt before it starts from its own
// parsers and the pattern library: the command sets (text, origin, patterns,
// each pattern's compared arguments and their goldens) and the order of their
// executions within a run. Plain values; building one uses the parsers'
// process-wide state, so one build at a time per process.
#ifndef KESH_REPORT_PLAN_H_
#define KESH_REPORT_PLAN_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kesh::report {

/// One argument whose result the tool compares (no-alloc arguments excluded).
struct ComparedArg {
  std::string name;        ///< the argument's name as the library reports it
  uint32_t size = 0;       ///< its buffer size in bytes
  std::string goldenPath;  ///< the golden file bound to it, empty when none or built in
};

/// One pattern of a command set.
struct PlannedPattern {
  std::string label;              ///< the pattern file, or "case N" for a built-in case
  std::vector<ComparedArg> args;  ///< in the library's argument order
  bool argsKnown = false;         ///< false: the library refused it, verdicts cannot be attributed
};

/// One command set.
struct PlannedSet {
  std::string label;                     ///< "FILE:LINE", or "<command line>"
  std::string text;                      ///< the text the tool echoes in "Running command: "
  std::vector<PlannedPattern> patterns;  ///< in order
};

/// Everything the output is read against.
struct Plan {
  std::vector<PlannedSet> sets;             ///< every built set, in input order
  std::vector<std::vector<size_t>> groups;  ///< per group in run order: executions as set indices
  int32_t loopCount = 1;                    ///< runs; -1 repeats until one fails
  bool help = false;                        ///< -h: nothing runs
  size_t executionsPerRun() const;          ///< executions of all groups together
};

/// The plan of kesh_player run with `args` (without word 0). Never ends the process.
Plan planOf(const std::vector<std::string>& args);

}  // namespace kesh::report

#endif  // KESH_REPORT_PLAN_H_
