// How many executions one group may hold: the most jobs one player is asked
// to run side by side. Constants only; thread-safe.
#ifndef KESH_COMMON_GROUP_LIMITS_H_
#define KESH_COMMON_GROUP_LIMITS_H_

#include <cstddef>
#include <cstdint>

namespace kesh {

/// The most execution instances one group may hold.
inline constexpr std::size_t kMaxJobsPerGroup = 63;

/// The first group loop count refused: one more than a group can hold.
inline constexpr int32_t kRefusedGroupLoopCount = static_cast<int32_t>(kMaxJobsPerGroup) + 1;

}  // namespace kesh

#endif  // KESH_COMMON_GROUP_LIMITS_H_
