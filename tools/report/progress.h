// One updating line on a terminal: runs done of the total, failures so far,
// elapsed time and the estimate to the end. Writes to descriptor 2 only when
// it is a terminal; erases itself before other output is written there.
// Not thread-safe.
#ifndef KESH_REPORT_PROGRESS_H_
#define KESH_REPORT_PROGRESS_H_

#include <chrono>
#include <cstdint>
#include <string>

#include "report/results.h"

namespace kesh::report {

/// "run 3/10, 1 failure, 0:12 elapsed, about 0:28 left" (total -1: runs until one fails).
std::string progressText(int64_t done, int64_t total, size_t failures, double elapsedSeconds);

/// The line on the terminal.
class Progress {
 public:
  /// Shows progress towards `totalRuns` (-1 for "until a run fails") when `enabled`.
  Progress(bool enabled, int64_t totalRuns);
  /// Redraws the line from `results`, at most ten times a second.
  void update(const Results& results);
  /// Erases the line, if drawn.
  void erase();

 private:
  bool enabled_;
  int64_t total_;
  bool drawn_ = false;
  std::chrono::steady_clock::time_point start_;
  std::chrono::steady_clock::time_point lastDraw_;
};

}  // namespace kesh::report

#endif  // KESH_REPORT_PROGRESS_H_
