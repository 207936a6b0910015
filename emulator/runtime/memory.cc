#include "runtime/memory.h"

#include <cstdint>
#include <cstring>

namespace kesh::runtime {
namespace {

constexpr uint64_t kPageSize = 4096;

uint64_t roundUpToPages(uint64_t size) {
  uint64_t pages = size == 0 ? 1 : (size + kPageSize - 1) / kPageSize;
  return pages * kPageSize;
}

}  // namespace

std::shared_ptr<ByteBlock> ByteBlock::allocate(uint64_t size) {
  if (size > SIZE_MAX) return nullptr;
  // calloc: large blocks come from the system already zeroed, without a memset.
  void* data = std::calloc(size == 0 ? 1 : static_cast<size_t>(size), 1);
  if (data == nullptr) return nullptr;
  return std::shared_ptr<ByteBlock>(new ByteBlock(static_cast<uint8_t*>(data), static_cast<size_t>(size)));
}

std::shared_ptr<Memory> Memory::create(HandleId playerId, uint32_t size) {
  std::shared_ptr<ByteBlock> device = ByteBlock::allocate(size);
  std::shared_ptr<ByteBlock> host = ByteBlock::allocate(roundUpToPages(size));
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
