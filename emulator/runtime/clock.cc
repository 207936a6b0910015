#include "runtime/clock.h"

#include <time.h>

namespace kesh::runtime {

int64_t monotonicNanos() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

}  // namespace kesh::runtime
