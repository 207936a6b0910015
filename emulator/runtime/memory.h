// Device memory as the accelerator sees it: a device buffer and a separate
// host mapping. Host writes reach the device only through flush() and device
// writes reach the host only through invalidate(), so a program that forgets
// either sees stale data, as it would on the device. Fresh memory is zero on
// both sides. The mapping is rounded up to whole 4 KiB pages (the slack is
// zero and never flushed), as a device mapping would be.
// Thread-safe for the map state; the bytes themselves follow the device's
// rules: flushing or invalidating memory that an unfinished job uses races.
#ifndef KESH_EMULATOR_RUNTIME_MEMORY_H_
#define KESH_EMULATOR_RUNTIME_MEMORY_H_

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>

#include "runtime/handles.h"

namespace kesh::runtime {

/// A zero-filled byte block; freed with the last reference. Jobs hold a
/// reference, so destroying the memory handle never frees bytes in use.
class ByteBlock {
 public:
  /// A zero-filled block of `size` bytes, or null when it cannot be allocated.
  static std::shared_ptr<ByteBlock> allocate(uint64_t size);
  ~ByteBlock() { std::free(data_); }
  ByteBlock(const ByteBlock&) = delete;
  ByteBlock& operator=(const ByteBlock&) = delete;

  /// First byte of the block.
  uint8_t* data() const { return data_; }
  /// Size in bytes.
  size_t size() const { return size_; }

 private:
  ByteBlock(uint8_t* data, size_t size) : data_(data), size_(size) {}
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
