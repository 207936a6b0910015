#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "common/fatal.h"
#include "common/huge_page.h"
#include "settings/file_kind.h"
#include "settings/tester_setting.h"

namespace {

// Step for smaller files and for whatever follows the reported size.
constexpr std::size_t kTailChunk = 64 * 1024;

// From this size on a file is copied straight out of a mapping, once, where
// reading it would copy every byte twice (into a chunk, then into the vector),
// and the vector's fresh pages are mapped in one go before they are filled;
// below it the storage comes from the heap, mostly from pages already mapped.
constexpr int32_t kLargeFile = 256 << 10;

// Closes the descriptor when the reading ends, however it ends.
class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return fd_; }

 private:
  int fd_;
};

// The reported size, truncated to 32 bits like every length the tool keeps;
// 0 when the file cannot tell (a pipe, most files under /proc).
int32_t reportedSize(int fd) {
  const off_t end = ::lseek(fd, 0, SEEK_END);
  ::lseek(fd, 0, SEEK_SET);
  if (end <= 0) return 0;
  return static_cast<int32_t>(static_cast<uint32_t>(end));
}

// Gives `advice` for the whole `unit`-aligned units inside [start, end).
void adviseWholeUnits(uintptr_t start, uintptr_t end, uintptr_t unit, int advice) {
  const uintptr_t first = (start + unit - 1) & ~(unit - 1);
  const uintptr_t last = end & ~(unit - 1);
  if (last > first) ::madvise(reinterpret_cast<void*>(first), last - first, advice);
}

// Prepares the fresh storage of `bytes` for one fill: huge pages behind its
// aligned middle, and every page of it mapped in one call. Filling a large
// fresh buffer costs mostly page faults: a 2 MB page takes one where 4 KB
// pages take 512, and mapping a range at once skips a fault per page. Hints
// only; nothing changes where they are refused.
void prepareFreshStorage(std::vector<uint8_t>& bytes) {
  const auto start = reinterpret_cast<uintptr_t>(bytes.data());
  const uintptr_t end = start + bytes.capacity();
#ifdef MADV_HUGEPAGE
  adviseWholeUnits(start, end, kesh::kHugePage, MADV_HUGEPAGE);
#endif
#ifdef MADV_POPULATE_WRITE
  adviseWholeUnits(start, end, static_cast<uintptr_t>(::sysconf(_SC_PAGESIZE)), MADV_POPULATE_WRITE);
#endif
}

// The first `size` bytes of a regular file copied straight out of the page
// cache into the vector's storage, which is never zero-filled first; empty
// when the file cannot be mapped (the caller then reads it).
std::vector<uint8_t> copyMapped(int fd, std::size_t size) {
  struct stat info;
  if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) || static_cast<std::size_t>(info.st_size) < size) return {};
  void* mapped = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, fd, 0);
  if (mapped == MAP_FAILED) return {};
  const auto* first = static_cast<const uint8_t*>(mapped);
  std::vector<uint8_t> bytes;
  bytes.reserve(size);
  prepareFreshStorage(bytes);
  bytes.assign(first, first + size);
  ::munmap(mapped, size);
  ::lseek(fd, static_cast<off_t>(size), SEEK_SET);
  return bytes;
}

// Appends everything from the current position to the real end: files under
// /proc report 0 and a file may grow while it is read. A failed read ends the
// data like the end of the file.
void readToEnd(int fd, std::vector<uint8_t>& bytes) {
  uint8_t chunk[kTailChunk];
  for (;;) {
    const ssize_t got = ::read(fd, chunk, sizeof chunk);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return;
    bytes.insert(bytes.end(), chunk, chunk + got);
  }
}

}  // namespace

std::vector<uint8_t> TesterSetting::TestCommand::readData(const char* path) {
  // A directory can be opened for reading but yields no bytes; it is no more
  // a data file than a missing one.
  Descriptor file(kesh::settings::isDirectory(path) ? -1 : ::open(path, O_RDONLY | O_CLOEXEC));
  if (file.get() < 0) kesh::fatalCannotOpen(path);

  const int32_t size = reportedSize(file.get());
  // A size beyond the signed 32-bit range cannot be reserved: like any
  // impossible reservation it aborts the process.
  if (size < 0) std::abort();
  std::vector<uint8_t> bytes;
  if (size >= kLargeFile) bytes = copyMapped(file.get(), static_cast<std::size_t>(size));
  if (bytes.empty() && size != 0) {
    bytes.reserve(static_cast<std::size_t>(size));
    if (size >= kLargeFile) prepareFreshStorage(bytes);
  }
  readToEnd(file.get(), bytes);
  return bytes;
}
