// The one clock of the library: CLOCK_MONOTONIC, whose epoch is the system's
// boot. Timestamps reported to callers are microseconds of it. Stateless;
// safe from any thread.
#ifndef KESH_EMULATOR_RUNTIME_CLOCK_H_
#define KESH_EMULATOR_RUNTIME_CLOCK_H_

#include <cstdint>

namespace kesh::runtime {

/// Nanoseconds of CLOCK_MONOTONIC.
int64_t monotonicNanos();

/// Whole microseconds in `nanos` (rounded down).
constexpr int64_t toMicros(int64_t nanos) { return nanos / 1000; }

}  // namespace kesh::runtime

#endif  // KESH_EMULATOR_RUNTIME_CLOCK_H_
