#include "report/timing_stats.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>

namespace kesh::report {

Spread spreadOf(std::vector<int64_t>& values) {
  Spread spread;
  spread.count = values.size();
  if (values.empty()) return spread;
  std::sort(values.begin(), values.end());
  const size_t n = values.size();
  spread.min = values.front();
  spread.max = values.back();
  spread.median = n % 2 == 1 ? static_cast<double>(values[n / 2])
                             : (static_cast<double>(values[n / 2 - 1]) + static_cast<double>(values[n / 2])) / 2;
  const size_t rank = (95 * n + 99) / 100;  // nearest rank, ceil(0.95 n)
  spread.p95 = values[rank - 1];
  double sum = 0;
  for (int64_t value : values) sum += static_cast<double>(value);
  spread.mean = sum / static_cast<double>(n);
  double squares = 0;
  for (int64_t value : values)
    squares += (static_cast<double>(value) - spread.mean) * (static_cast<double>(value) - spread.mean);
  spread.stddev = std::sqrt(squares / static_cast<double>(n));
  return spread;
}

std::vector<PatternStats> patternStats(const Plan& plan, const Results& results) {
  std::vector<PatternStats> stats;
  std::map<std::string, size_t> byLabel;
  for (const PlannedSet& set : plan.sets) {
    for (const PlannedPattern& pattern : set.patterns) {
      if (byLabel.emplace(pattern.label, stats.size()).second) stats.push_back({pattern.label, {}, {}, {}, {}});
    }
  }
  for (const Run& run : results.runs) {
    for (const Execution& execution : run.executions) {
      if (execution.set == kUnknown) continue;
      const auto& patterns = plan.sets[execution.set].patterns;
      for (size_t p = 0; p < execution.times.size() && p < patterns.size(); ++p) {
        PatternStats& into = stats[byLabel[patterns[p].label]];
        if (execution.times[p].ipMicros >= 0) into.ipTimes.push_back(execution.times[p].ipMicros);
        if (execution.times[p].driverMicros >= 0) into.driverTimes.push_back(execution.times[p].driverMicros);
      }
    }
  }
  for (PatternStats& entry : stats) {
    std::vector<int64_t> ip = entry.ipTimes, driver = entry.driverTimes;
    entry.ip = spreadOf(ip);
    entry.driver = spreadOf(driver);
  }
  return stats;
}

namespace {

// A CSV field: quoted when it holds a separator, a quote or a line end.
std::string csvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + "\"";
}

std::string fixed(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%.1f", value);
  return text;
}

void csvRow(std::ostream& out, const std::string& pattern, const char* kind, const Spread& s) {
  out << csvField(pattern) << ',' << kind << ',' << s.count << ',' << s.min << ',' << fixed(s.median) << ','
      << fixed(s.mean) << ',' << s.p95 << ',' << s.max << ',' << fixed(s.stddev) << '\n';
}

}  // namespace

void writeStatsCsv(std::ostream& out, const std::vector<PatternStats>& stats) {
  out << "pattern,time,count,min_us,median_us,mean_us,p95_us,max_us,stddev_us\n";
  for (const PatternStats& entry : stats) {
    csvRow(out, entry.pattern, "ip", entry.ip);
    csvRow(out, entry.pattern, "driver", entry.driver);
  }
}

void writeStatsTable(std::ostream& out, const std::vector<PatternStats>& stats) {
  size_t width = 7;
  for (const PatternStats& entry : stats) width = std::max(width, entry.pattern.size());
  char line[512];
  std::snprintf(line, sizeof line, "%-*s %-6s %6s %9s %9s %9s %9s %9s %9s\n", static_cast<int>(width), "pattern",
                "time", "count", "min", "median", "mean", "p95", "max", "stddev");
  out << line;
  for (const PatternStats& entry : stats) {
    for (const auto& [kind, s] : {std::pair<const char*, const Spread&>{"ip", entry.ip}, {"driver", entry.driver}}) {
      std::snprintf(line, sizeof line, "%-*s %-6s %6zu %9lld %9.1f %9.1f %9lld %9lld %9.1f\n", static_cast<int>(width),
                    entry.pattern.c_str(), kind, s.count, static_cast<long long>(s.min), s.median, s.mean,
                    static_cast<long long>(s.p95), static_cast<long long>(s.max), s.stddev);
      out << line;
    }
  }
}

}  // namespace kesh::report
