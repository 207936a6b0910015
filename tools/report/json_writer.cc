#include "report/json_writer.h"

#include <nlohmann/json.hpp>

#include "report/diff_text.h"
#include "report/naming.h"
#include "report/timing_stats.h"

namespace kesh::report {

NLOHMANN_JSON_SERIALIZE_ENUM(Outcome, {{Outcome::kPassed, "passed"},
                                       {Outcome::kFailed, "failed"},
                                       {Outcome::kSkipped, "skipped"}})
NLOHMANN_JSON_SERIALIZE_ENUM(RunEnd, {{RunEnd::kPassed, "passed"},
                                      {RunEnd::kFailed, "failed"},
                                      {RunEnd::kIncomplete, "incomplete"}})

namespace {

using nlohmann::json;

json provenanceJson(const Provenance& facts) {
  json settings = json::object();
  for (const auto& [name, value] : facts.settings) settings[name] = value;
  return {{"tool_version", facts.toolVersion},
          {"commit", facts.commit},
          {"library",
           {{"path", facts.library.path},
            {"build_id", facts.library.buildId},
            {"host_library", facts.library.hostLibrary},
            {"found_by", facts.library.how}}},
          {"settings", settings},
          {"host", facts.host},
          {"date", facts.date},
          {"command_line", facts.commandLine},
          {"log", facts.log}};
}

json verdictJson(const Plan& plan, const Execution& execution, const Verdict& verdict) {
  json entry = {{"argument", verdict.arg},
                {"pattern", verdict.pattern == kUnknown ? json(nullptr) : json(verdict.pattern)},
                {"outcome", verdict.outcome}};
  if (verdict.hasDiff) {
    json first = json::array();
    for (const auto& [offset, value] : verdict.diff.firstValues) first.push_back({{"offset", offset}, {"xor", value}});
    entry["diff"] = {{"bytes", verdict.diff.listedBytes},
                     {"differing", verdict.diff.differing},
                     {"first_offset", verdict.diff.firstOffset},
                     {"last_offset", verdict.diff.lastOffset},
                     {"first_values", first},
                     {"summary", describeDiff(verdict.diff, goldenOf(plan, execution, verdict))}};
  }
  return entry;
}

json executionJson(const Plan& plan, const Run& run, size_t index) {
  const Execution& execution = run.executions[index];
  json times = json::array();
  for (const PatternTimes& t : execution.times) {
    times.push_back({{"ip_us", t.ipMicros}, {"driver_us", t.driverMicros}, {"start", t.start}, {"end", t.end}});
  }
  json verdicts = json::array();
  for (const Verdict& verdict : execution.verdicts) verdicts.push_back(verdictJson(plan, execution, verdict));
  return {{"name", executionName(plan, run, index)},
          {"set", execution.set == kUnknown ? json(nullptr) : json(execution.set)},
          {"text", execution.text},
          {"completed", execution.completed},
          {"random_boosts", execution.randomBoosts},
          {"patterns", times},
          {"verdicts", verdicts}};
}

json spreadJson(const Spread& s) {
  return {{"count", s.count}, {"min", s.min}, {"median", s.median}, {"mean", s.mean},
          {"p95", s.p95},     {"max", s.max}, {"stddev", s.stddev}};
}

}  // namespace

std::string resultsJson(const Plan& plan, const Results& results, const Provenance& provenance) {
  json sets = json::array();
  for (const PlannedSet& set : plan.sets) {
    json patterns = json::array();
    for (const PlannedPattern& pattern : set.patterns) {
      json args = json::array();
      for (const ComparedArg& arg : pattern.args) {
        args.push_back({{"name", arg.name}, {"size", arg.size}, {"golden", arg.goldenPath}});
      }
      patterns.push_back({{"pattern", pattern.label}, {"arguments_known", pattern.argsKnown}, {"arguments", args}});
    }
    sets.push_back({{"name", set.label}, {"text", set.text}, {"patterns", patterns}});
  }
  json runs = json::array();
  for (const Run& run : results.runs) {
    json executions = json::array();
    for (size_t e = 0; e < run.executions.size(); ++e) executions.push_back(executionJson(plan, run, e));
    json order = json::array();
    for (size_t group : run.groupOrder) order.push_back(group == kUnknown ? json(nullptr) : json(group));
    runs.push_back({{"number", run.number},
                    {"end", run.end},
                    {"group_order", order},
                    {"group_starts", run.groupStarts},
                    {"executions", executions}});
  }
  json stats = json::array();
  for (const PatternStats& entry : patternStats(plan, results)) {
    stats.push_back(
        {{"pattern", entry.pattern}, {"ip_us", spreadJson(entry.ip)}, {"driver_us", spreadJson(entry.driver)}});
  }
  json unknown = json::array();
  for (const UnknownLine& line : results.unknown) {
    unknown.push_back({{"stream", line.onStderr ? "stderr" : "stdout"}, {"text", line.text}});
  }
  const json document = {{"provenance", provenanceJson(provenance)},
                         {"exit_status", results.status},
                         {"signal", results.signal},
                         {"abnormal_end", abnormalEnd(results)},
                         {"help_shown", results.helpShown},
                         {"sets", sets},
                         {"runs", runs},
                         {"timing", stats},
                         {"fatal", results.fatal},
                         {"notices", results.notices},
                         {"unknown_lines", unknown}};
  // Command texts may hold bytes that are not UTF-8; they are replaced rather than refused.
  return document.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

}  // namespace kesh::report
