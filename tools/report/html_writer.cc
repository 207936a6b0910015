#include "report/html_writer.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <sstream>

#include "report/naming.h"
#include "report/timing_stats.h"

namespace kesh::report {

namespace {

// Timelines are drawn for the first runs only: a page per thousand runs helps nobody.
constexpr size_t kTimelineRuns = 20;
constexpr int kChartWidth = 720;
constexpr int kBins = 24;

const char kStyle[] =
    "body{font-family:sans-serif;margin:1.5em;color:#222}table{border-collapse:collapse;margin:.5em 0}"
    "td,th{border:1px solid #ccc;padding:2px 6px;text-align:left;font-size:13px}th{background:#eee}"
    ".pass{color:#176117}.fail{color:#a11;font-weight:bold}.skip{color:#777}"
    "svg{background:#fafafa;border:1px solid #ddd;margin:.3em 0}code{white-space:pre}";

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", value);
  return text;
}

struct SetTally {
  size_t executions = 0, passed = 0, failed = 0, skipped = 0;
};

void summary(std::ostream& out, const Results& results, const Provenance& facts) {
  size_t passedRuns = 0;
  for (const Run& run : results.runs) passedRuns += run.end == RunEnd::kPassed ? 1 : 0;
  out << "<h1>kesh_player results</h1><table>"
      << "<tr><th>command</th><td><code>";
  for (const std::string& word : facts.commandLine) out << htmlEscaped(word) << ' ';
  out << "</code></td></tr><tr><th>exit status</th><td>" << results.status << "</td></tr>"
      << "<tr><th>runs passed</th><td>" << passedRuns << " of " << results.runs.size() << "</td></tr>"
      << "<tr><th>failed comparisons</th><td>" << results.failedVerdicts << "</td></tr>";
  const std::string why = abnormalEnd(results);
  if (!why.empty()) out << "<tr><th>ended by</th><td class=fail>" << htmlEscaped(why) << "</td></tr>";
  out << "<tr><th>library</th><td>" << htmlEscaped(facts.library.path)
      << (facts.library.hostLibrary ? " (host library)" : "") << " build id " << htmlEscaped(facts.library.buildId)
      << "</td></tr><tr><th>host, date</th><td>" << htmlEscaped(facts.host) << ", " << htmlEscaped(facts.date)
      << "</td></tr><tr><th>tool</th><td>" << htmlEscaped(facts.toolVersion) << " (" << htmlEscaped(facts.commit)
      << ")</td></tr></table>\n";
}

void setTable(std::ostream& out, const Plan& plan, const Results& results) {
  std::vector<SetTally> tally(plan.sets.size());
  for (const Run& run : results.runs) {
    for (const Execution& execution : run.executions) {
      if (execution.set == kUnknown) continue;
      SetTally& t = tally[execution.set];
      ++t.executions;
      for (const Verdict& verdict : execution.verdicts) {
        if (verdict.outcome == Outcome::kPassed) ++t.passed;
        if (verdict.outcome == Outcome::kFailed) ++t.failed;
        if (verdict.outcome == Outcome::kSkipped) ++t.skipped;
      }
    }
  }
  out << "<h2>Command sets</h2><table><tr><th>set</th><th>command</th><th>executions</th><th>passed</th>"
         "<th>failed</th><th>no golden</th></tr>\n";
  for (size_t k = 0; k < plan.sets.size(); ++k) {
    const SetTally& t = tally[k];
    out << "<tr><td>" << htmlEscaped(plan.sets[k].label) << "</td><td><code>" << htmlEscaped(plan.sets[k].text)
        << "</code></td><td>" << t.executions << "</td><td class=pass>" << t.passed << "</td><td"
        << (t.failed > 0 ? " class=fail" : "") << ">" << t.failed << "</td><td class=skip>" << t.skipped
        << "</td></tr>\n";
  }
  out << "</table>\n<h2>Times per pattern (microseconds)</h2><table><tr><th>pattern</th><th>time</th>"
         "<th>count</th><th>min</th><th>median</th><th>mean</th><th>p95</th><th>max</th><th>stddev</th></tr>\n";
  for (const PatternStats& entry : patternStats(plan, results)) {
    for (const auto& [kind, s] : {std::pair<const char*, const Spread&>{"IP", entry.ip}, {"driver", entry.driver}}) {
      out << "<tr><td>" << htmlEscaped(entry.pattern) << "</td><td>" << kind << "</td><td>" << s.count << "</td><td>"
          << s.min << "</td><td>" << number(s.median) << "</td><td>" << number(s.mean) << "</td><td>" << s.p95
          << "</td><td>" << s.max << "</td><td>" << number(s.stddev) << "</td></tr>\n";
    }
  }
  out << "</table>\n";
}

// One bar per job (execution and pattern) of a group, placed by its timestamps.
void groupTimeline(std::ostream& out, const Plan& plan, const Run& run, size_t group) {
  const size_t begin = run.groupStarts[group];
  const size_t end = group + 1 < run.groupStarts.size() ? run.groupStarts[group + 1] : run.executions.size();
  struct Bar {
    std::string name;
    int64_t start, end;
  };
  std::vector<Bar> bars;
  for (size_t e = begin; e < end; ++e) {
    const Execution& execution = run.executions[e];
    for (size_t p = 0; p < execution.times.size(); ++p) {
      const PatternTimes& t = execution.times[p];
      if (t.start < 0 || t.end < t.start) continue;
      bars.push_back({executionName(plan, run, e) + " pattern " + std::to_string(p), t.start, t.end});
    }
  }
  if (bars.empty()) return;
  int64_t first = bars.front().start, last = bars.front().end;
  for (const Bar& bar : bars) {
    first = std::min(first, bar.start);
    last = std::max(last, bar.end);
  }
  const double span = static_cast<double>(std::max<int64_t>(last - first, 1));
  const int rowHeight = 14, labelWidth = 260;
  const int height = static_cast<int>(bars.size()) * rowHeight + 24;
  out << "<h3>Run " << run.number << ", group " << group + 1 << " (" << last - first << " us)</h3>\n"
      << "<svg xmlns='http://www.w3.org/2000/svg' width='" << labelWidth + kChartWidth + 10 << "' height='" << height
      << "'>";
  for (size_t k = 0; k < bars.size(); ++k) {
    const double x = labelWidth + (static_cast<double>(bars[k].start - first) / span) * kChartWidth;
    const double w = std::max(1.0, static_cast<double>(bars[k].end - bars[k].start) / span * kChartWidth);
    const int y = static_cast<int>(k) * rowHeight + 4;
    out << "<text x='2' y='" << y + 10 << "' font-size='10'>" << htmlEscaped(bars[k].name) << "</text>"
        << "<rect x='" << number(x) << "' y='" << y << "' width='" << number(w) << "' height='" << rowHeight - 3
        << "' fill='#4a7ab8'><title>" << htmlEscaped(bars[k].name) << ": " << bars[k].start - first << " to "
        << bars[k].end - first << " us</title></rect>";
  }
  out << "<text x='" << labelWidth << "' y='" << height - 4 << "' font-size='10'>0 us</text><text x='"
      << labelWidth + kChartWidth - 60 << "' y='" << height - 4 << "' font-size='10'>" << last - first
      << " us</text></svg>\n";
}

// A histogram of one pattern's IP times.
void distribution(std::ostream& out, const PatternStats& entry) {
  if (entry.ipTimes.empty()) return;
  const int64_t low = entry.ip.min, high = entry.ip.max;
  const double width = static_cast<double>(std::max<int64_t>(high - low, 1)) / kBins;
  std::vector<size_t> counts(kBins, 0);
  for (int64_t value : entry.ipTimes) {
    const size_t bin = std::min<size_t>(kBins - 1, static_cast<size_t>(static_cast<double>(value - low) / width));
    ++counts[bin];
  }
  const size_t tallest = *std::max_element(counts.begin(), counts.end());
  const int height = 120, barWidth = kChartWidth / kBins;
  out << "<h3>" << htmlEscaped(entry.pattern) << ": IP time of " << entry.ipTimes.size() << " executions</h3>\n"
      << "<svg xmlns='http://www.w3.org/2000/svg' width='" << kChartWidth + 10 << "' height='" << height + 20 << "'>";
  for (int k = 0; k < kBins; ++k) {
    const double h = static_cast<double>(counts[k]) / static_cast<double>(tallest) * height;
    out << "<rect x='" << k * barWidth + 5 << "' y='" << number(height - h) << "' width='" << barWidth - 2
        << "' height='" << number(h) << "' fill='#5a9a5a'><title>" << counts[k] << " from "
        << number(static_cast<double>(low) + k * width) << " us</title></rect>";
  }
  out << "<text x='5' y='" << height + 15 << "' font-size='10'>" << low << " us</text><text x='" << kChartWidth - 60
      << "' y='" << height + 15 << "' font-size='10'>" << high << " us</text></svg>\n";
}

}  // namespace

std::string htmlEscaped(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\'':
        out += "&#39;";
        break;
      case '\r':
        out += "\\r";
        break;
      default:
        out += c;
    }
  }
  return out;
}

std::string resultsHtml(const Plan& plan, const Results& results, const Provenance& provenance) {
  std::ostringstream out;
  out << "<!DOCTYPE html>\n<html><head><meta charset='utf-8'><title>kesh_player results</title><style>" << kStyle
      << "</style></head><body>\n";
  summary(out, results, provenance);
  setTable(out, plan, results);
  out << "<h2>Jobs in time</h2><p>Each bar is one pattern of one execution, from its start to its end timestamp; "
         "bars that share a stretch of the axis ran at the same time.</p>\n";
  for (size_t r = 0; r < results.runs.size() && r < kTimelineRuns; ++r) {
    for (size_t g = 0; g < results.runs[r].groupStarts.size(); ++g) groupTimeline(out, plan, results.runs[r], g);
  }
  if (results.runs.size() > kTimelineRuns) {
    out << "<p>Timelines of the first " << kTimelineRuns << " runs of " << results.runs.size() << " are shown.</p>\n";
  }
  out << "<h2>IP times across runs</h2>\n";
  for (const PatternStats& entry : patternStats(plan, results)) distribution(out, entry);
  out << "</body></html>\n";
  return out.str();
}

}  // namespace kesh::report
