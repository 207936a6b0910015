// Fault injection: KESH_EMU_FAIL, read once at the first call, is a
// comma-separated list of `function@n` (the n-th call of that function in the
// process fails, counting from 1) and `function@*` (every call fails).
// Entries that do not parse or name no function are ignored. Thread-safe:
// calls are counted atomically. Process-wide and intentionally never destroyed.
#ifndef KESH_EMULATOR_RUNTIME_FAULTS_H_
#define KESH_EMULATOR_RUNTIME_FAULTS_H_

#include <array>
#include <atomic>
#include <cstdint>
#include <set>

#include "runtime/functions.h"

namespace kesh::runtime {

class FaultPlan {
 public:
  /// The process-wide plan, configured from the environment on first use.
  static FaultPlan& instance();

  /// Parses a KESH_EMU_FAIL value (null or empty: nothing fails).
  explicit FaultPlan(const char* settings);

  /// Counts one call of `fn`; true if this call is to fail.
  bool countCall(Fn fn);

 private:
  struct Rule {
    bool always = false;
    std::set<uint32_t> calls;  // 1-based call numbers that fail
  };

  std::array<Rule, kFunctionCount> rules_{};
  std::array<std::atomic<uint32_t>, kFunctionCount> calls_{};
};

}  // namespace kesh::runtime

#endif  // KESH_EMULATOR_RUNTIME_FAULTS_H_
