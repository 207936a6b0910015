// Statistics of each pattern's IP and driver times over every execution read,
// written as CSV and as a short table. Stateless functions over Results.
#ifndef KESH_REPORT_TIMING_STATS_H_
#define KESH_REPORT_TIMING_STATS_H_

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "report/plan.h"
#include "report/results.h"

namespace kesh::report {

/// Summary of one series of times in microseconds.
struct Spread {
  size_t count = 0;   ///< values
  int64_t min = 0;    ///< smallest
  double median = 0;  ///< middle value (mean of the two middle ones)
  double mean = 0;    ///< average
  int64_t p95 = 0;    ///< nearest-rank 95th percentile
  int64_t max = 0;    ///< largest
  double stddev = 0;  ///< population standard deviation
};

/// The spread of `values` (reordered); all zero when empty.
Spread spreadOf(std::vector<int64_t>& values);

/// One pattern's times over all executions.
struct PatternStats {
  std::string pattern;               ///< the pattern file or "case N"
  std::vector<int64_t> ipTimes;      ///< every IP time, in order read
  std::vector<int64_t> driverTimes;  ///< every driver time, in order read
  Spread ip;                         ///< spread of ipTimes
  Spread driver;                     ///< spread of driverTimes
};

/// Per distinct pattern, in order of first appearance in the plan.
std::vector<PatternStats> patternStats(const Plan& plan, const Results& results);

/// The statistics as CSV, one row per pattern and kind of time, with a header.
void writeStatsCsv(std::ostream& out, const std::vector<PatternStats>& stats);

/// The statistics as a short aligned table.
void writeStatsTable(std::ostream& out, const std::vector<PatternStats>& stats);

}  // namespace kesh::report

#endif  // KESH_REPORT_TIMING_STATS_H_
