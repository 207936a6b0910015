#include "driver/timing_report.h"

std::string formatTimingLines(size_t position, const NodeTiming& timing) {
  const std::string at = std::to_string(position) + ": ";
  std::string lines;
  lines += "    IP time of sub-command " + at + std::to_string(timing.ipTime) + " us\n";
  lines += "    Driver time of sub-command " + at + std::to_string(timing.driverTime) + " us\n";
  lines += "    Timestamp start of sub-command " + at + std::to_string(timing.startTimestamp) + "\n";
  lines += "    Timestamp end of sub-command " + at + std::to_string(timing.endTimestamp) + "\n";
  return lines;
}
