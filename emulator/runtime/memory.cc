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

std::shared_ptr<ByteBlock> ByteBlock::allocate(uint64_t size, Placement placement) {
  const uint64_t page = pageSize();
  const uint64_t dataPages = size == 0 ? 1 : (size + page - 1) / page;
  if (size > SIZE_MAX || dataPages > SIZE_MAX / page - 2) return nullptr;
  const size_t dataLength = static_cast<size_t>(dataPages * page);
  const size_t regionLength = dataLength + 2 * static_cast<size_t>(page);
  // The whole region is reserved inaccessible, then the pages between the
  // guards are opened; fresh anonymous pages are zero without a memset.
  void* region = mmap(nullptr, regionLength, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (region == MAP_FAILED) return nullptr;
  uint8_t* pages = static_cast<uint8_t*>(region) + page;
  if (mprotect(pages, dataLength, PROT_READ | PROT_WRITE) != 0) {
    munmap(region, regionLength);
    return nullptr;
  }
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
