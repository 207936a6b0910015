// Text of the per-sub-command timing lines printed after a job completes.
// Stateless; safe from any thread.
#ifndef KESH_DRIVER_TIMING_REPORT_H_
#define KESH_DRIVER_TIMING_REPORT_H_

#include <cstddef>
#include <cstdint>
#include <string>

/// The four execution-information values of one node of a completed job.
struct NodeTiming {
  int64_t ipTime = 0;          ///< accelerator time, microseconds
  int64_t driverTime = 0;      ///< driver time, microseconds
  int64_t startTimestamp = 0;  ///< start timestamp as the library reports it
  int64_t endTimestamp = 0;    ///< end timestamp as the library reports it
};

/// The four report lines (IP time, driver time, start, end), each ended by a
/// newline, of the sub-command at `position` (counted from 0).
std::string formatTimingLines(size_t position, const NodeTiming& timing);

#endif  // KESH_DRIVER_TIMING_REPORT_H_
