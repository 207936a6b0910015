#include "report/output_parser.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "settings/usage_text.h"

namespace kesh::report {

namespace {

constexpr size_t kFirstValuesKept = 8;
constexpr char kFailedVerdict[] = "Test failed for argument ";

bool startsWith(const std::string& text, const char* prefix) {
  return text.compare(0, std::strlen(prefix), prefix) == 0;
}

// The rest of `text` after `prefix` into `rest`, when it begins so.
bool after(const std::string& text, const char* prefix, std::string& rest) {
  if (!startsWith(text, prefix)) return false;
  rest = text.substr(std::strlen(prefix));
  return true;
}

// A decimal integer filling all of `text`, sign allowed.
bool wholeNumber(const std::string& text, int64_t& value) {
  if (text.empty()) return false;
  char* end = nullptr;
  value = std::strtoll(text.c_str(), &end, 10);
  return end == text.c_str() + text.size() && text != "-";
}

// Splits "[i/L] REST" or "[i] REST" into i and REST; other lines are all REST.
std::string withoutRunPrefix(const std::string& line, int64_t& number) {
  number = 0;
  if (line.empty() || line[0] != '[') return line;
  const size_t close = line.find("] ");
  if (close == std::string::npos) return line;
  const std::string inside = line.substr(1, close - 1);
  if (!wholeNumber(inside.substr(0, inside.find('/')), number)) return line;
  return line.substr(close + 2);
}

const char* const kSetUpPrefixes[] = {
    "Pattern binary: ",      "Pattern input ",     "Pattern golden ",    "Set boost value to ",
    "Set core affinity to ", "Set hard limit to ", "Set soft limit to ", "Test default case: ",
};

const char* const kFatalPrefixes[] = {
    "Error: cannot open file ",
    "Unknown option: ",
    "Invalid group loop count: ",
    "No pattern binary found, set pattern binary first!",
    "Invalid mode: ",
    "Failed to ",
    "Pattern argument info size is zero for type ",
    "Exceed maximum number of commands in one command group",
    "kesh_player: write error: ",
    "kesh_player: out of memory",
};

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// Feeds `data` to `line` a line at a time; keeps an unfinished line in `pending`.
template <typename LineFn>
void splitLines(std::string& pending, const char* data, size_t size, LineFn line) {
  const char* begin = data;
  const char* end = data + size;
  while (begin < end) {
    const char* feed = static_cast<const char*>(std::memchr(begin, '\n', static_cast<size_t>(end - begin)));
    if (feed == nullptr) {
      pending.append(begin, end);
      return;
    }
    if (pending.empty()) {
      line(std::string(begin, feed));
    } else {
      pending.append(begin, feed);
      line(pending);
      pending.clear();
    }
    begin = feed + 1;
  }
}

}  // namespace

OutputParser::OutputParser(const Plan& plan) : plan_(plan) {}

void OutputParser::feedStdout(const char* data, size_t size) {
  splitLines(outPending_, data, size, [this](const std::string& line) { stdoutLine(line); });
}

void OutputParser::feedStderr(const char* data, size_t size) {
  splitLines(errPending_, data, size, [this](const std::string& line) { stderrLine(line); });
}

void OutputParser::finish(int status, int signal) {
  if (!outPending_.empty()) stdoutLine(outPending_);
  if (!errPending_.empty()) stderrLine(errPending_);
  if (!logPending_.empty() && !stdoutGrammar(logPending_)) stderrLine(logPending_);
  logPending_.clear();
  outPending_.clear();
  errPending_.clear();
  results_.status = status;
  results_.signal = signal;
}

Run* OutputParser::currentRun() { return results_.runs.empty() ? nullptr : &results_.runs.back(); }

void OutputParser::feedLog(const char* data, size_t size) {
  splitLines(logPending_, data, size, [this](const std::string& line) {
    if (!stdoutGrammar(line)) stderrLine(line);
  });
}

void OutputParser::stdoutLine(const std::string& line) {
  if (!stdoutGrammar(line)) results_.unknown.push_back({false, line});
}

bool OutputParser::stdoutGrammar(const std::string& line) {
  if (inListing_ && listingLine(line)) return true;
  if (runLine(line)) return true;
  if (results_.runs.empty() && setUpLine(line)) return true;
  for (const char* help : kesh::settings::usageLines()) {
    if (line == help) {
      results_.helpShown = true;
      return true;
    }
  }
  return false;
}

bool OutputParser::setUpLine(const std::string& line) const {
  for (const char* prefix : kSetUpPrefixes) {
    if (startsWith(line, prefix)) return true;
  }
  // getopt-style complaints name the program and the missing argument.
  return line.find(": option requires an argument -") != std::string::npos;
}

bool OutputParser::runLine(const std::string& line) {
  int64_t number = 0;
  const std::string rest = withoutRunPrefix(line, number);
  if (rest == "Test pattern start...") {
    Run run;
    run.number = number != 0 ? number : static_cast<int64_t>(results_.runs.size()) + 1;
    results_.runs.push_back(run);
    block_ = Block::kNone;
    groupUsed_.assign(plan_.groups.size(), false);
    return true;
  }
  Run* run = currentRun();
  if (run == nullptr) return false;
  if (rest == "Test pattern passed!!!" || rest == "Test pattern failed!!!") {
    run->end = rest == "Test pattern passed!!!" ? RunEnd::kPassed : RunEnd::kFailed;
    return true;
  }
  if (number != 0) return false;
  std::string text;
  int64_t value = 0;
  if (after(line, "Random boost value: ", text) && wholeNumber(text, value)) {
    pendingBoosts_.push_back(value);
    return true;
  }
  if (after(line, "Running command: ", text)) {
    runningCommand(text);
    return true;
  }
  if (after(line, "Execution info of command: ", text)) {
    executionInfo(text);
    return true;
  }
  if (timingLine(line)) return true;
  if (after(line, "Golden data not found for argument ", text)) {
    verdict(Outcome::kSkipped, text);
    return true;
  }
  if (startsWith(line, "Skip compare golden of argument ")) return true;
  if (line == "Result does not match golden data.") {
    expectDiffHeader_ = true;
    return true;
  }
  if (expectDiffHeader_ && line == "Diff:") {
    expectDiffHeader_ = false;
    inListing_ = true;
    diff_ = DiffSummary{};
    return true;
  }
  if (after(line, "Test passed for argument ", text)) {
    verdict(Outcome::kPassed, text);
    return true;
  }
  if (after(line, kFailedVerdict, text)) {
    verdict(Outcome::kFailed, text);
    return true;
  }
  return false;
}

size_t OutputParser::setByText(const std::string& text) const {
  for (size_t k = 0; k < plan_.sets.size(); ++k) {
    if (plan_.sets[k].text == text) return k;
  }
  return kUnknown;
}

void OutputParser::startGroup(const std::string& firstText) {
  Run* run = currentRun();
  groupStart_ = run->executions.size();
  started_ = infoCursor_ = verdictExec_ = verdictPattern_ = verdictArg_ = 0;
  timingExec_ = kUnknown;
  // Groups may be shuffled: the first unused group whose first set prints this text.
  plannedGroup_ = kUnknown;
  for (size_t g = 0; g < plan_.groups.size(); ++g) {
    if (groupUsed_[g] || plan_.groups[g].empty()) continue;
    if (plan_.sets[plan_.groups[g].front()].text != firstText) continue;
    plannedGroup_ = g;
    groupUsed_[g] = true;
    break;
  }
  run->groupOrder.push_back(plannedGroup_);
  run->groupStarts.push_back(groupStart_);
}

void OutputParser::runningCommand(const std::string& text) {
  if (block_ != Block::kStart) startGroup(text);
  block_ = Block::kStart;
  Run* run = currentRun();
  Execution execution;
  execution.text = text;
  execution.randomBoosts.swap(pendingBoosts_);
  const std::vector<size_t>* group = plannedGroup_ == kUnknown ? nullptr : &plan_.groups[plannedGroup_];
  if (group != nullptr && started_ < group->size() && plan_.sets[(*group)[started_]].text == text) {
    execution.set = (*group)[started_];
  } else {
    execution.set = setByText(text);
  }
  if (execution.set != kUnknown) execution.times.resize(plan_.sets[execution.set].patterns.size());
  run->executions.push_back(std::move(execution));
  ++started_;
}

void OutputParser::executionInfo(const std::string& text) {
  Run* run = currentRun();
  block_ = Block::kInfo;
  if (infoCursor_ >= started_) {
    results_.unknown.push_back({false, "Execution info of command: " + text});
    timingExec_ = kUnknown;
    return;
  }
  timingExec_ = groupStart_ + infoCursor_++;
  run->executions[timingExec_].completed = true;
}

bool OutputParser::timingLine(const std::string& line) {
  static const struct {
    const char* prefix;
    int64_t PatternTimes::*field;
    bool micros;
  } kForms[] = {
      {"    IP time of sub-command ", &PatternTimes::ipMicros, true},
      {"    Driver time of sub-command ", &PatternTimes::driverMicros, true},
      {"    Timestamp start of sub-command ", &PatternTimes::start, false},
      {"    Timestamp end of sub-command ", &PatternTimes::end, false},
  };
  for (const auto& form : kForms) {
    std::string rest;
    if (!after(line, form.prefix, rest)) continue;
    const size_t colon = rest.find(": ");
    int64_t position = 0;
    int64_t value = 0;
    if (colon == std::string::npos || !wholeNumber(rest.substr(0, colon), position) || position < 0) return false;
    std::string number = rest.substr(colon + 2);
    if (form.micros) {
      if (number.size() < 3 || number.compare(number.size() - 3, 3, " us") != 0) return false;
      number.resize(number.size() - 3);
    }
    if (!wholeNumber(number, value) || timingExec_ == kUnknown) return false;
    Execution& execution = currentRun()->executions[timingExec_];
    if (static_cast<size_t>(position) >= execution.times.size()) execution.times.resize(position + 1);
    execution.times[position].*form.field = value;
    return true;
  }
  return false;
}

void OutputParser::verdict(Outcome outcome, const std::string& name) {
  Run* run = currentRun();
  block_ = Block::kVerdicts;
  Verdict verdict;
  verdict.outcome = outcome;
  verdict.arg = name;
  if (inListing_ || diff_.listedBytes > 0) {
    verdict.hasDiff = true;
    verdict.diff = diff_;
  }
  inListing_ = false;
  diff_ = DiffSummary{};
  if (outcome == Outcome::kFailed) ++results_.failedVerdicts;
  if (started_ == 0) {
    results_.unknown.push_back({false, "verdict outside any execution: " + name});
    return;
  }
  // The next compared argument of the group by that name, counting from the last one matched.
  const size_t end = groupStart_ + started_;
  size_t e = groupStart_ + verdictExec_, p = verdictPattern_, a = verdictArg_;
  for (; e < end; ++e, p = 0, a = 0) {
    const Execution& execution = run->executions[e];
    if (execution.set == kUnknown) continue;
    const auto& patterns = plan_.sets[execution.set].patterns;
    for (; p < patterns.size(); ++p, a = 0) {
      for (; a < patterns[p].args.size(); ++a) {
        if (patterns[p].args[a].name != name) continue;
        verdict.pattern = p;
        run->executions[e].verdicts.push_back(std::move(verdict));
        verdictExec_ = e - groupStart_;
        verdictPattern_ = p;
        verdictArg_ = a + 1;
        return;
      }
    }
  }
  // Not in the plan: kept with the execution the verdicts had reached.
  const size_t at = std::min(groupStart_ + verdictExec_, end - 1);
  run->executions[at].verdicts.push_back(std::move(verdict));
}

bool OutputParser::listingLine(const std::string& line) {
  const size_t verdictAt = line.find(kFailedVerdict);
  const char* begin = line.data();
  const char* end = begin + (verdictAt == std::string::npos ? line.size() : verdictAt);
  for (const char* c = begin; c < end; ++c) {
    if (*c != ' ' && hexDigit(*c) < 0) return false;
  }
  listValues(begin, end);
  if (verdictAt != std::string::npos) verdict(Outcome::kFailed, line.substr(verdictAt + std::strlen(kFailedVerdict)));
  return true;
}

void OutputParser::listValues(const char* begin, const char* end) {
  const char* c = begin;
  while (c < end) {
    while (c < end && *c == ' ') ++c;
    if (c == end) break;
    unsigned value = 0;
    while (c < end && *c != ' ') value = value * 16 + static_cast<unsigned>(hexDigit(*c++));
    const uint64_t offset = diff_.listedBytes++;
    if (value == 0) continue;
    if (diff_.differing++ == 0) diff_.firstOffset = offset;
    diff_.lastOffset = offset;
    if (diff_.firstValues.size() < kFirstValuesKept)
      diff_.firstValues.emplace_back(offset, static_cast<uint8_t>(value));
  }
}

void OutputParser::stderrLine(const std::string& line) {
  if (startsWith(line, "Pattern argument ") && line.size() > 8 && line.compare(line.size() - 8, 8, " not set") == 0) {
    results_.notices.push_back(line);
    return;
  }
  if (line == "Failed to add pattern to graph") {
    results_.notices.push_back(line);
    return;
  }
  for (const char* prefix : kFatalPrefixes) {
    if (startsWith(line, prefix)) {
      results_.fatal.push_back(line);
      return;
    }
  }
  results_.unknown.push_back({true, line});
}

}  // namespace kesh::report
