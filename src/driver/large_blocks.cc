// The program's operator new: blocks of a huge page or more start on a
// huge-page boundary. The tool keeps whole data files in byte vectors, and a
// fresh vector of several megabytes costs mostly page faults while it is
// filled; only a boundary-aligned block can be backed by huge pages (one fault
// and one clear per 2 MB instead of 512). Smaller blocks come from malloc as
// before. A failed allocation runs the installed new-handler until it gives
// up, as the standard operator new does; the tool's handler ends the process.
#include <cstdlib>
#include <new>

#include "common/huge_page.h"

namespace {

using kesh::kHugePage;

void* allocate(std::size_t size) {
  if (size < kHugePage) return std::malloc(size == 0 ? 1 : size);
  void* block = nullptr;
  return posix_memalign(&block, kHugePage, size) == 0 ? block : nullptr;
}

}  // namespace

void* operator new(std::size_t size) {
  for (;;) {
    if (void* block = allocate(size)) return block;
    const std::new_handler handler = std::get_new_handler();
    // Without a handler the standard operator new throws to nobody: the
    // process ends by abort either way.
    if (handler == nullptr) std::abort();
    handler();
  }
}

void* operator new[](std::size_t size) { return ::operator new(size); }

void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
