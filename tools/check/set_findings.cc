#include "check/set_findings.h"

#include <kesh/kesh_pattern.h>

#include <set>
#include <string>

namespace kesh::check {

namespace {

std::string quoted(const std::string& text) { return "'" + visible(text) + "'"; }

std::string wouldStop(const std::string& message) { return "kesh_player would stop with \"" + visible(message) + "\""; }

std::string patternName(const PatternRecord& pattern) {
  if (pattern.builtInCase >= 0) return "built-in case " + std::to_string(pattern.builtInCase);
  return "pattern " + quoted(pattern.path);
}

const char* roleName(DataRole role) { return role == DataRole::kInput ? "input" : "golden"; }

std::string argumentList(const PatternFacts& facts) {
  std::string list;
  for (const PatternArgInfo& arg : facts.args) list += (list.empty() ? "" : ", ") + arg.name;
  return list.empty() ? "none" : list;
}

const PatternArgInfo* findArgument(const PatternFacts& facts, const std::string& name) {
  // The tool binds to the first argument of that name.
  for (const PatternArgInfo& arg : facts.args) {
    if (arg.name == name) return &arg;
  }
  return nullptr;
}

bool hasBinding(const PatternRecord& pattern, const std::string& name) {
  if (pattern.builtInInputs.count(name) != 0 || pattern.builtInGoldens.count(name) != 0) return true;
  for (const DataBinding& binding : pattern.bindings) {
    if (binding.kept && binding.name == name) return true;
  }
  return false;
}

bool isBlank(const std::string& line) { return line.find_first_not_of(" \r") == std::string::npos; }

}  // namespace

void SetFindings::check(const SetRecord& set) {
  checkLineForm(set);
  for (const PatternRecord& pattern : set.patterns) checkPattern(set, pattern);
  checkValues(set);
  checkStop(set);
}

void SetFindings::checkStop(const SetRecord& set) {
  if (set.built) return;
  if (!set.stopWord.empty()) {
    out_.error(set.where, "unknown option " + quoted(set.stopWord) + ": " + wouldStop(set.stop));
  } else {
    out_.error(set.where, wouldStop(set.stop));
  }
}

void SetFindings::checkLineForm(const SetRecord& set) {
  if (!set.line.empty() && set.line.back() == '\r') {
    const std::string::size_type blank = set.line.rfind(' ');
    const std::string last = blank == std::string::npos ? set.line : set.line.substr(blank + 1);
    out_.warning(set.where, "line ends with a carriage return (a Windows line end): kesh_player keeps it in the word " +
                                quoted(last));
  }
  if (set.where.line > 0 && set.built && set.patterns.empty() && isBlank(set.line)) {
    out_.note(set.where, "empty line: an empty command set that runs no pattern");
  }
}

bool SetFindings::usableFile(const SetRecord& set, const char* role, const std::string& path) {
  const FileFacts& facts = probe_.probe(path);
  if (facts.kind == FileKind::kRegular) return true;
  out_.error(set.where, std::string(role) + " " + quoted(path) + " " + whyUnopenable(facts.kind) + ": " +
                            wouldStop("Error: cannot open file " + path));
  return false;
}

void SetFindings::checkPattern(const SetRecord& set, const PatternRecord& pattern) {
  bool known = pattern.builtInCase >= 0 || usableFile(set, "pattern", pattern.path);
  const PatternFacts* facts = nullptr;
  if (known && pattern.builtInCase < 0) facts = &catalog_.fromFile(pattern.path);
  if (known && pattern.builtInCase >= 0) facts = catalog_.builtIn(pattern.builtInCase);
  for (const DataBinding& binding : pattern.bindings) {
    if (!usableFile(set, roleName(binding.role), binding.path)) continue;
    if (facts != nullptr && facts->usable) checkBinding(set, pattern, *facts, binding);
  }
  if (facts == nullptr) return;
  if (!facts->usable) {
    out_.error(set.where, patternName(pattern) + " is refused by the pattern library: " + wouldStop(facts->refusal));
    return;
  }
  // A set the tool stops in never runs, so its unbound arguments do not matter.
  if (set.built) checkUnset(set, pattern, *facts);
}

void SetFindings::checkBinding(const SetRecord& set, const PatternRecord& pattern, const PatternFacts& facts,
                               const DataBinding& binding) {
  const std::string what = std::string(roleName(binding.role)) + " " + quoted(binding.path);
  if (!binding.kept) {
    out_.warning(set.where, what + " is ignored: argument " + quoted(binding.name) + " already has " +
                                roleName(binding.role) + " data (the first one given wins)");
    return;
  }
  const PatternArgInfo* arg = findArgument(facts, binding.name);
  if (arg == nullptr) {
    out_.error(set.where, what + " binds to no argument of " + patternName(pattern) + " (its arguments: " +
                              argumentList(facts) + "): it would be ignored");
    return;
  }
  if (arg->noAlloc != 0) {
    out_.error(set.where, what + " is for argument " + quoted(arg->name) +
                              ", which the library provides itself (no-alloc): it would be ignored");
    return;
  }
  const uint64_t size = probe_.probe(binding.path).size;
  const std::string sizes = what + " has " + std::to_string(size) + " bytes but argument " + quoted(arg->name) +
                            " has " + std::to_string(arg->size);
  if (binding.role == DataRole::kInput) {
    if (size > arg->size) out_.error(set.where, sizes + ": kesh_player would write past the argument's buffer");
    if (size < arg->size) out_.warning(set.where, sizes + ": the rest of the buffer keeps what the library put there");
    return;
  }
  if (size == 0) {
    out_.error(set.where, what + " is empty: argument " + quoted(arg->name) + " would pass without being compared");
  } else if (size < arg->size) {
    out_.error(set.where, sizes + ": only the first " + std::to_string(size) + " bytes would be compared");
  } else if (size > arg->size) {
    out_.error(set.where, sizes + ": kesh_player would read past the argument's buffer");
  }
}

void SetFindings::checkUnset(const SetRecord& set, const PatternRecord& pattern, const PatternFacts& facts) {
  std::set<std::string> seen;  // the tool allocates only the first argument of a name
  for (const PatternArgInfo& arg : facts.args) {
    if (arg.noAlloc != 0 || !seen.insert(arg.name).second || hasBinding(pattern, arg.name)) continue;
    out_.warning(set.where, "argument " + quoted(arg.name) + " of " + patternName(pattern) +
                                " has neither input nor golden: it would run on uninitialised memory "
                                "(\"Pattern argument " + visible(arg.name) + " not set\")");
  }
}

void SetFindings::checkValues(const SetRecord& set) {
  for (const PatternRecord& pattern : set.patterns) {
    auto boost = pattern.nodeOptions.find(PATTERN_NODE_OPTION_BOOST);
    if (boost != pattern.nodeOptions.end() && !set.randomBoost && (boost->second < 0 || boost->second > 100)) {
      const std::string why = boost->second == -1 ? " is not drawn at random, because a later -b gave a number"
                                                  : " is out of range 0..100 (-1 for random)";
      out_.error(set.where, "boost value " + std::to_string(boost->second) + " of " + patternName(pattern) + why +
                                ": " + wouldStop("Failed to set pattern option 0"));
    }
    auto core = pattern.nodeOptions.find(PATTERN_NODE_OPTION_CORE_AFFINITY);
    if (core != pattern.nodeOptions.end() && (core->second < -1 || core->second >= cores_)) {
      out_.error(set.where, "core affinity " + std::to_string(core->second) + " of " + patternName(pattern) +
                                " is out of range -1.." + std::to_string(cores_ - 1) + ": " +
                                wouldStop("Failed to set pattern option 1"));
    }
  }
  const struct {
    int key;
    const char* name;
  } limits[] = {{PATTERN_GRAPH_OPTION_HARD_LIMIT, "hard limit"}, {PATTERN_GRAPH_OPTION_SOFT_LIMIT, "soft limit"}};
  for (const auto& limit : limits) {
    auto value = set.graphOptions.find(limit.key);
    if (value == set.graphOptions.end() || value->second >= 0) continue;
    out_.error(set.where, std::string(limit.name) + " " + std::to_string(value->second) + " is negative: " +
                              wouldStop("Failed to set graph option " + std::to_string(limit.key)));
  }
  if (set.built && set.groupLoopCount < 1 && set.groupLoopCount != -1) {
    out_.warning(set.where, "loop count " + std::to_string(set.groupLoopCount) + ": this command set would never run");
  }
}

}  // namespace kesh::check
