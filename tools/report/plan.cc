#include "report/plan.h"

#include "check/diagnostics.h"
#include "check/pattern_catalog.h"
#include "check/player_args.h"
#include "check/run_findings.h"

namespace kesh::report {

namespace {

std::string labelOf(const check::Location& where) {
  if (where.line == 0) return where.file;
  return where.file + ":" + std::to_string(where.line);
}

std::string goldenFileOf(const check::PatternRecord& pattern, const std::string& name) {
  for (const check::DataBinding& binding : pattern.bindings) {
    if (binding.role == check::DataRole::kGolden && binding.kept && binding.name == name) return binding.path;
  }
  return "";
}

PlannedPattern planPattern(const check::PatternRecord& record, check::PatternCatalog& catalog) {
  PlannedPattern pattern;
  const check::PatternFacts* facts = nullptr;
  if (record.builtInCase >= 0) {
    pattern.label = "case " + std::to_string(record.builtInCase);
    facts = catalog.builtIn(record.builtInCase);
  } else {
    pattern.label = record.path;
    facts = &catalog.fromFile(record.path);
  }
  if (facts == nullptr || !facts->usable) return pattern;
  pattern.argsKnown = true;
  for (const PatternArgInfo& arg : facts->args) {
    if (arg.noAlloc != 0) continue;  // the tool compares nothing for it
    pattern.args.push_back({arg.name, arg.size, goldenFileOf(record, arg.name)});
  }
  return pattern;
}

// A set's executions per group run; -1 is cut off where the tool stops the group.
int64_t executionsOf(int32_t groupLoopCount) {
  constexpr int64_t kGroupLimit = 64;
  if (groupLoopCount == -1) return kGroupLimit;
  return groupLoopCount < 1 ? 0 : groupLoopCount;
}

}  // namespace

size_t Plan::executionsPerRun() const {
  size_t total = 0;
  for (const auto& group : groups) total += group.size();
  return total;
}

Plan planOf(const std::vector<std::string>& args) {
  Plan plan;
  check::PatternCatalog catalog;
  check::Diagnostics ignored;
  const check::PlayerArgs player = check::readPlayerArgs(args, catalog, ignored);
  plan.loopCount = player.run.loopCount;
  plan.help = player.run.help;
  std::vector<size_t> planIndex(player.sets.size(), 0);
  for (size_t k = 0; k < player.sets.size(); ++k) {
    const check::SetRecord& record = player.sets[k];
    if (!record.built) continue;
    PlannedSet set;
    set.label = labelOf(record.where);
    set.text = record.line;
    for (const check::PatternRecord& pattern : record.patterns) {
      set.patterns.push_back(catalog.ready() ? planPattern(pattern, catalog) : PlannedPattern{pattern.path, {}, false});
    }
    planIndex[k] = plan.sets.size();
    plan.sets.push_back(std::move(set));
  }
  for (const std::vector<size_t>& group : check::groupsOf(player.sets)) {
    std::vector<size_t> executions;
    for (size_t index : group) {
      const int64_t count = executionsOf(player.sets[index].groupLoopCount);
      for (int64_t i = 0; i < count; ++i) executions.push_back(planIndex[index]);
    }
    plan.groups.push_back(std::move(executions));
  }
  return plan;
}

}  // namespace kesh::report
