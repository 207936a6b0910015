// Device memory as the accelerator sees it: a device buffer and a separate
// host mapping. Host writes reach the device only through flush() and device
// writes reach the host only through invalidate(), so a program that forgets
// either sees stale data, as it would on the device. Fresh memory is zero on
// both sides. Both sides live in whole pages between two inaccessible guard
// pages, as a device's memory unit would protect them: the host mapping ends
// exactly at its trailing guard page (its slack lies before it, zero and never
// flushed), so even one byte written or read past the end faults at once
// instead of corrupting whatever lies behind it.
// Thread-safe for the map state; the bytes themselves follow the device's
// rules: flushing or invalidating memory that an unfinished job uses races.
#ifndef KESH_EMULATOR_RUNTIME_MEMORY_H_
#define KESH_EMULATOR_RUNTIME_MEMORY_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>

#include "runtime/handles.h"

namespace kesh::runtime {

/// A zero-filled byte block in whole pages of its own, with an inaccessible
/// guard page before and after them; freed with the last reference. Jobs hold
/// a reference, so destroying the memory handle never frees bytes in use.
class ByteBlock {
 public:
  /// Where the bytes sit in their pages.
  enum class Placement {
    kPageStart,  ///< page-aligned start: what the kernels get
    kGuardEnd,   ///< ends exactly at the trailing guard page: what a program maps
  };

  /// A zero-filled block of `size` bytes, or null when it cannot be allocated.
  static std::shared_ptr<ByteBlock> allocate(uint64_t size, Placement placement = Placement::kPageStart);
  ~ByteBlock();
  ByteBlock(const ByteBlock&) = delete;
  ByteBlock& operator=(const ByteBlock&) = delete;

  /// First byte of the block.
  uint8_t* data() const { return data_; }
  /// Size in bytes.
  size_t size() const { return size_; }
  /// The system's page size: the granularity of blocks and of their guards.
  static size_t pageSize();

 private:
  ByteBlock(void* region, size_t regionLength, uint8_t* data, size_t size)
      : region_(region), regionLength_(regionLength), data_(data), size_(size) {}
  void* region_;         // guards and data pages, as mapped
  size_t regionLength_;  // bytes of region_
  uint8_t* data_;
  size_t size_;
};

class Memory {
 public:
  /// New zeroed memory of `size` bytes, or null when it cannot be allocated.
  static std::shared_ptr<Memory> create(HandleId playerId, uint32_t size);

  /// The host mapping; the same address every time. Mapping twice is allowed.
  void* map();
  /// Ends the mapping; false when the memory is not mapped.
  bool unmap();
  /// Copies the host mapping to the device; false when not mapped.
  bool flush();
  /// Copies the device buffer to the host mapping; false when not mapped.
  bool invalidate();

  /// Size in bytes as created.
  uint32_t size() const { return size_; }
  /// Player the memory belongs to.
  HandleId playerId() const { return playerId_; }
  /// The device side, shared with the nodes and jobs bound to it.
  std::shared_ptr<ByteBlock> device() const { return device_; }

 private:
  Memory(HandleId playerId, uint32_t size, std::shared_ptr<ByteBlock> device, std::shared_ptr<ByteBlock> host);

  HandleId playerId_;
  uint32_t size_;
  std::shared_ptr<ByteBlock> device_;
  std::shared_ptr<ByteBlock> host_;
  std::mutex mutex_;
  bool mapped_ = false;
};

}  // namespace kesh::runtime

#endif  // KESH_EMULATOR_RUNTIME_MEMORY_H_
