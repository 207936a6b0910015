#include "check/run_findings.h"

#include <string>
#include <utility>

#include "settings/tester_setting.h"

namespace kesh::check {

namespace {

constexpr int64_t kMaxGroupExecutions = 63;

const char kGroupLimitMessage[] =
    "Exceed maximum number of commands in one command group, make sure the command group size is less than 64";

std::string wouldStop(const char* message) { return std::string("kesh_player would stop with \"") + message + "\""; }

// Executions of one set per group run; -1 repeats until the group limit stops it.
int64_t executions(const SetRecord& set) {
  if (set.groupLoopCount == -1) return kMaxGroupExecutions + 1;
  return set.groupLoopCount < 1 ? 0 : set.groupLoopCount;
}

// Returns the group's executions; reports the set at which the tool would stop.
int64_t checkGroup(const std::vector<size_t>& group, const std::vector<SetRecord>& sets, Diagnostics& out) {
  int64_t total = 0;
  for (size_t index : group) {
    const SetRecord& set = sets[index];
    const int64_t before = total;
    total += executions(set);
    if (before > kMaxGroupExecutions || total <= kMaxGroupExecutions) continue;
    if (set.groupLoopCount == -1) {
      out.error(set.where, "loop count -1 repeats this command set without end: " + wouldStop(kGroupLimitMessage));
    } else {
      out.error(set.where, "group " + std::to_string(set.groupIndex) + " reaches " + std::to_string(total) +
                               " executions with this command set, more than 63: " + wouldStop(kGroupLimitMessage));
    }
  }
  const SetRecord& first = sets[group.front()];
  if (first.groupIndex != -1) {
    out.note(first.where, "group " + std::to_string(first.groupIndex) + ": " + std::to_string(group.size()) +
                              " command set(s), " + std::to_string(total) + " execution(s) per run");
  }
  return total;
}

}  // namespace

std::vector<std::vector<size_t>> groupsOf(const std::vector<SetRecord>& sets) {
  // The tool's own grouping, on stand-ins that carry each set's index as their text.
  char name[] = "kesh_player";
  char* argv[] = {name};
  TesterSetting setting(1, argv);
  std::vector<TesterSetting::TestCommand> standIns;
  for (size_t i = 0; i < sets.size(); ++i) {
    if (!sets[i].built) continue;
    TesterSetting::TestCommand standIn(name, "");
    standIn.groupIndex = sets[i].groupIndex;
    standIn.commandLine = std::to_string(i);
    standIns.push_back(std::move(standIn));
  }
  setting.groupCommands(standIns);
  std::vector<std::vector<size_t>> groups;
  for (const auto& group : setting.commandGroups) {
    groups.emplace_back();
    for (const auto& standIn : group) groups.back().push_back(std::stoul(standIn.commandLine));
  }
  return groups;
}

void checkRun(const RunFacts& run, const std::vector<SetRecord>& sets, Diagnostics& out) {
  const Location commandLine{kCommandLine, 0};
  for (const std::string& word : run.ignoredWords) {
    const char* kind = word.rfind('-', 0) == 0 ? "option '" : "word '";
    out.error(commandLine, kind + visible(word) + "' is not an option of kesh_player: it would be ignored");
  }
  if (run.stopped) return;
  const std::vector<std::vector<size_t>> groups = groupsOf(sets);
  int64_t total = 0;
  for (const auto& group : groups) total += checkGroup(group, sets, out);
  int64_t patternRuns = 0;  // an empty command set runs no pattern
  bool anyStop = false;
  for (const SetRecord& set : sets) {
    if (set.built && !set.patterns.empty()) patternRuns += executions(set);
    anyStop = anyStop || !set.built;
  }
  if (anyStop) return;  // the tool stops before anything runs
  if (run.help) {
    out.warning(commandLine, "-h: kesh_player would print its help text and run nothing");
    return;
  }
  if (run.loopCount == 0 || run.loopCount < -1) {
    out.error(commandLine, "loop count " + std::to_string(run.loopCount) +
                               ": no run would happen, and kesh_player would end with status 0");
    return;
  }
  if (patternRuns == 0) {
    out.error(commandLine, "nothing would run: kesh_player would report \"Test pattern passed!!!\" without "
                           "running a pattern");
    return;
  }
  // Totals matter once sets share groups; a plain file of ungrouped sets stays silent.
  bool grouped = false;
  for (const SetRecord& set : sets) grouped = grouped || set.groupIndex != -1;
  if (!grouped) return;
  const std::string runs = run.loopCount == -1 ? "runs until one fails" : std::to_string(run.loopCount) + " run(s)";
  out.note(commandLine, std::to_string(total) + " execution(s) per run in " + std::to_string(groups.size()) +
                            " group(s); " + runs);
}

}  // namespace kesh::check
