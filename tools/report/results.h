// What a run of the tool amounted to, as read from its output: runs, the
// executions of their groups with times and timestamps, every verdict with
// its diff summary, fatal lines and lines the reader did not know. Plain
// values, filled by OutputParser; not thread-safe.
#ifndef KESH_REPORT_RESULTS_H_
#define KESH_REPORT_RESULTS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace kesh::report {

/// Marks an index that the output could not be attributed to.
constexpr size_t kUnknown = static_cast<size_t>(-1);

/// A diff listing boiled down: the listing holds one XOR value per golden byte.
struct DiffSummary {
  uint64_t listedBytes = 0;                               ///< values listed (the golden's length)
  uint64_t differing = 0;                                 ///< values that are not 0
  uint64_t firstOffset = 0;                               ///< offset of the first differing byte
  uint64_t lastOffset = 0;                                ///< offset of the last differing byte
  std::vector<std::pair<uint64_t, uint8_t>> firstValues;  ///< the first few (offset, XOR value)
};

/// What happened to one compared argument.
enum class Outcome { kPassed, kFailed, kSkipped };

/// One verdict line.
struct Verdict {
  Outcome outcome = Outcome::kPassed;  ///< passed, failed or no golden
  std::string arg;                     ///< the argument name as printed
  size_t pattern = kUnknown;           ///< the pattern's position in its set
  bool hasDiff = false;                ///< a diff listing preceded it
  DiffSummary diff;                    ///< the listing, when hasDiff
};

/// One pattern's four timing lines; -1 where a line was not seen.
struct PatternTimes {
  int64_t ipMicros = -1;      ///< IP time
  int64_t driverMicros = -1;  ///< driver time
  int64_t start = -1;         ///< library clock at the start
  int64_t end = -1;           ///< library clock at the end
};

/// One execution of a command set.
struct Execution {
  size_t set = kUnknown;              ///< index into Plan::sets
  std::string text;                   ///< as echoed by "Running command: "
  std::vector<int64_t> randomBoosts;  ///< drawn boost per pattern, when random
  bool completed = false;             ///< its "Execution info" was printed
  std::vector<PatternTimes> times;    ///< per pattern in order
  std::vector<Verdict> verdicts;      ///< in printed order
};

/// How a run ended.
enum class RunEnd { kIncomplete, kPassed, kFailed };

/// One run (one round of every group).
struct Run {
  int64_t number = 0;                 ///< 1-based
  RunEnd end = RunEnd::kIncomplete;   ///< its verdict line, if printed
  std::vector<Execution> executions;  ///< in printed order
  std::vector<size_t> groupOrder;     ///< plan group index per group in run order (kUnknown if unmatched)
  std::vector<size_t> groupStarts;    ///< index of each group's first execution
};

/// A line that was not in the output's grammar.
struct UnknownLine {
  bool onStderr = false;  ///< the stream it came on
  std::string text;       ///< without its line end
};

/// Everything read.
struct Results {
  std::vector<Run> runs;             ///< in order
  std::vector<std::string> fatal;    ///< process-ending lines of standard error
  std::vector<std::string> notices;  ///< standard error lines that do not end the process
  std::vector<UnknownLine> unknown;  ///< lines outside the grammar
  bool helpShown = false;            ///< the usage text was printed
  int status = -1;                   ///< exit status; 128 + n for signal n
  int signal = 0;                    ///< the signal that killed it, 0 if none
  size_t failedVerdicts = 0;         ///< "Test failed" lines so far
};

}  // namespace kesh::report

#endif  // KESH_REPORT_RESULTS_H_
