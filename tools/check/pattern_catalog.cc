#include "check/pattern_catalog.h"

#include <fstream>
#include <utility>

#include "check/tool_stop.h"

namespace kesh::check {

namespace {

// The file's bytes; what cannot be read (a directory, say) reads as empty, which no
// pattern is. The stream's own read turns a failing read into a state, where
// iterating over its buffer would throw.
std::vector<uint8_t> wholeFile(const std::string& path) {
  std::ifstream file(path, std::ios::in | std::ios::binary);
  std::vector<uint8_t> bytes;
  char chunk[1 << 16];
  while (file.read(chunk, sizeof chunk) || file.gcount() > 0) bytes.insert(bytes.end(), chunk, chunk + file.gcount());
  return bytes;
}

}  // namespace

PatternCatalog::PatternCatalog() : player_(keshCreatePlayer("kesh_check")) {}

PatternCatalog::~PatternCatalog() {
  for (_pattern* pattern : patterns_) keshDestroyPattern(pattern);
  if (player_ != nullptr) keshDestroyPlayer(player_);
}

const PatternFacts& PatternCatalog::fromFile(const std::string& path) {
  auto found = known_.find(path);
  if (found == known_.end()) found = known_.emplace(path, load(wholeFile(path))).first;
  return found->second;
}

void PatternCatalog::learnBuiltIn(int caseNumber, const std::vector<uint8_t>& bytes) {
  if (builtIn_.count(caseNumber) == 0) builtIn_.emplace(caseNumber, load(bytes));
}

const PatternFacts* PatternCatalog::builtIn(int caseNumber) const {
  auto found = builtIn_.find(caseNumber);
  return found == builtIn_.end() ? nullptr : &found->second;
}

PatternFacts PatternCatalog::load(const std::vector<uint8_t>& bytes) {
  PatternFacts facts;
  // The same call and name the tool uses, so the library judges it alike.
  _pattern* pattern =
      keshCreatePattern(player_, bytes.data(), static_cast<uint32_t>(bytes.size()), "tester_pattern");
  if (pattern == nullptr) {
    facts.refusal = "Failed to create pattern";
    return facts;
  }
  patterns_.push_back(pattern);
  const ToolStop stop = runUntilStop([&] { getArgInfo(pattern, facts.args); });
  if (stop.stopped) {
    facts.refusal = stop.message;
    facts.args.clear();
    return facts;
  }
  facts.usable = true;
  return facts;
}

}  // namespace kesh::check
