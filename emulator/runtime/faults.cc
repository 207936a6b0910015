#include "runtime/faults.h"

#include <cstdlib>
#include <string>

namespace kesh::runtime {
namespace {

bool parseCallNumber(const std::string& text, uint32_t* out) {
  if (text.empty() || text.size() > 9) return false;
  uint32_t value = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
    value = value * 10 + static_cast<uint32_t>(c - '0');
  }
  if (value == 0) return false;
  *out = value;
  return true;
}

}  // namespace

FaultPlan& FaultPlan::instance() {
  static FaultPlan* plan = new FaultPlan(std::getenv("KESH_EMU_FAIL"));  // never destroyed
  return *plan;
}

FaultPlan::FaultPlan(const char* settings) {
  for (auto& count : calls_) count.store(0, std::memory_order_relaxed);
  if (settings == nullptr) return;
  std::string all(settings);
  size_t begin = 0;
  while (begin <= all.size()) {
    size_t end = all.find(',', begin);
    if (end == std::string::npos) end = all.size();
    std::string entry = all.substr(begin, end - begin);
    begin = end + 1;
    size_t at = entry.find('@');
    Fn fn;
    if (at == std::string::npos || !functionByName(entry.substr(0, at), &fn)) continue;
    std::string when = entry.substr(at + 1);
    Rule& rule = rules_[static_cast<size_t>(fn)];
    uint32_t number = 0;
    if (when == "*") {
      rule.always = true;
    } else if (parseCallNumber(when, &number)) {
      rule.calls.insert(number);
    }
  }
}

bool FaultPlan::countCall(Fn fn) {
  size_t slot = static_cast<size_t>(fn);
  uint32_t number = calls_[slot].fetch_add(1, std::memory_order_relaxed) + 1;
  const Rule& rule = rules_[slot];
  return rule.always || rule.calls.count(number) != 0;
}

}  // namespace kesh::runtime
