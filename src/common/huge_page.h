// The size of a transparent huge page on the platforms the tool runs on: the
// unit in which large fresh buffers are aligned and advised. Constants only;
// thread-safe.
#ifndef KESH_COMMON_HUGE_PAGE_H_
#define KESH_COMMON_HUGE_PAGE_H_

#include <cstddef>

namespace kesh {

/// Bytes in one transparent huge page (2 MB on x86-64, and on 32-bit ARM where the kernel has huge pages at all).
inline constexpr std::size_t kHugePage = std::size_t{2} << 20;

}  // namespace kesh

#endif  // KESH_COMMON_HUGE_PAGE_H_
