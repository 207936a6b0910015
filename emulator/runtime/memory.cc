#include "runtime/memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <new>

namespace kesh::runtime {

size_t ByteBlock::pageSize() {
  static const size_t size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  return size;
}

namespace {

// A transparent huge page: one fault and one clear where small pages take 512.
constexpr size_t kHugePage = size_t{2} << 20;

// Where `dataLength` bytes of data pages start in the region reserved at
// `region`: past the leading guard page, and on a huge-page boundary when the
// data fills at least one huge page (the region then holds the slack for it).
uint8_t* dataPagesIn(void* region, size_t page, size_t dataLength) {
  const auto afterGuard = reinterpret_cast<uintptr_t>(region) + page;
  if (dataLength < kHugePage) return reinterpret_cast<uint8_t*>(afterGuard);
  return reinterpret_cast<uint8_t*>((afterGuard + kHugePage - 1) & ~uintptr_t{kHugePage - 1});
}

}  // namespace

std::shared_ptr<ByteBlock> ByteBlock::allocate(uint64_t size, Placement placement) {
  const uint64_t page = pageSize();
  const uint64_t dataPages = size == 0 ? 1 : (size + page - 1) / page;
  if (size > SIZE_MAX || dataPages > (SIZE_MAX - kHugePage) / page - 2) return nullptr;
  const size_t dataLength = static_cast<size_t>(dataPages * page);
  const size_t alignSlack = dataLength >= kHugePage ? kHugePage : 0;
  const size_t regionLength = dataLength + 2 * static_cast<size_t>(page) + alignSlack;
  // The whole region is reserved inaccessible, then the pages between the
  // guards are opened; fresh anonymous pages are zero without a memset. Large
  // blocks sit on huge-page boundaries and ask for huge pages: a fresh block
  // is filled once, and faulting it in by small pages would cost more than
  // the filling. Whatever lies outside the opened pages stays a guard.
  void* region = mmap(nullptr, regionLength, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (region == MAP_FAILED) return nullptr;
  uint8_t* pages = dataPagesIn(region, static_cast<size_t>(page), dataLength);
  if (mprotect(pages, dataLength, PROT_READ | PROT_WRITE) != 0) {
    munmap(region, regionLength);
    return nullptr;
  }
#ifdef MADV_HUGEPAGE
  if (alignSlack != 0) madvise(pages, dataLength, MADV_HUGEPAGE);  // a hint: refused, nothing changes
#endif
  uint8_t* data = placement == Placement::kGuardEnd ? pages + (dataLength - size) : pages;
  ByteBlock* block = new (std::nothrow) ByteBlock(region, regionLength, data, static_cast<size_t>(size));
  if (block == nullptr) {
    munmap(region, regionLength);
    return nullptr;
  }
  return std::shared_ptr<ByteBlock>(block);
}

ByteBlock::~ByteBlock() { munmap(region_, regionLength_); }

std::shared_ptr<Memory> Memory::create(HandleId playerId, uint32_t size) {
  std::shared_ptr<ByteBlock> device = ByteBlock::allocate(size);
  std::shared_ptr<ByteBlock> host = ByteBlock::allocate(size, ByteBlock::Placement::kGuardEnd);
  if (device == nullptr || host == nullptr) return nullptr;
  return std::shared_ptr<Memory>(new Memory(playerId, size, std::move(device), std::move(host)));
}

Memory::Memory(HandleId playerId, uint32_t size, std::shared_ptr<ByteBlock> device,
               std::shared_ptr<ByteBlock> host)
    : playerId_(playerId), size_(size), device_(std::move(device)), host_(std::move(host)) {}

void* Memory::map() {
  std::lock_guard<std::mutex> lock(mutex_);
  mapped_ = true;
  return host_->data();
}

bool Memory::unmap() {
  std::lock_guard<std::mutex> lock(mutex_);
  if (!mapped_) return false;
  mapped_ = false;
  return true;
}

bool Memory::flush() {
  std::lock_guard<std::mutex> lock(mutex_);
  if (!mapped_) return false;
  if (size_ != 0) std::memcpy(device_->data(), host_->data(), size_);
  return true;
}

bool Memory::invalidate() {
  std::lock_guard<std::mutex> lock(mutex_);
  if (!mapped_) return false;
  if (size_ != 0) std::memcpy(host_->data(), device_->data(), size_);
  return true;
}

}  // namespace kesh::runtime
