// One pattern placed in a graph. Arguments and options set on a node are
// staged; update() applies them, and a play uses applied values only.
// Thread-safe (one mutex per node).
#ifndef KESH_EMULATOR_RUNTIME_NODE_H_
#define KESH_EMULATOR_RUNTIME_NODE_H_

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "format/program.h"
#include "runtime/handles.h"
#include "runtime/job_plan.h"
#include "runtime/memory.h"

namespace kesh::runtime {

inline constexpr int kMinBoost = 0;
inline constexpr int kMaxBoost = 100;
inline constexpr int kAnyCore = -1;

class Node {
 public:
  /// A node of graph `graphId` on player `playerId` running `program`.
  Node(HandleId id, HandleId graphId, HandleId playerId, std::shared_ptr<const format::Program> program);

  /// The node's handle id.
  HandleId id() const { return id_; }
  /// The graph the node was added to.
  HandleId graphId() const { return graphId_; }

  /// Stages `mem` for the allocated argument of `index`; false when no such
  /// argument exists, `size` is below the argument's size or above the
  /// memory's, or the memory belongs to another player.
  bool stageArg(uint32_t index, const Memory& mem, uint32_t size);

  /// Stages an option: boost 0..100, core affinity -1 or 0..cores-1; false
  /// for an unknown option or a value out of range.
  bool stageOption(uint32_t option, int32_t value, int cores);

  /// Applies everything staged since the last update.
  void update();

  /// Grows whenever update() or markDestroyed() may have changed what a
  /// snapshot returns; read without the node's lock.
  uint64_t version() const { return version_.load(std::memory_order_acquire); }

  /// Marks the node destroyed: graphs holding it can no longer be played.
  void markDestroyed();

  /// The node as a job would run it, and the version it was taken at; false
  /// when it was destroyed or an allocated argument has no applied memory.
  bool snapshot(NodeRun* out, uint64_t* version) const;

 private:
  const HandleId id_;
  const HandleId graphId_;
  const HandleId playerId_;
  const std::shared_ptr<const format::Program> program_;

  mutable std::mutex mutex_;
  std::map<size_t, BoundArg> stagedArgs_;  // keyed by position in program_->args
  std::optional<int> stagedBoost_;
  std::optional<int> stagedCore_;
  std::vector<BoundArg> appliedArgs_;      // null block: not bound
  int boost_ = kMinBoost;
  int core_ = kAnyCore;
  bool destroyed_ = false;
  std::atomic<uint64_t> version_{1};  // changed under mutex_
};

}  // namespace kesh::runtime

#endif  // KESH_EMULATOR_RUNTIME_NODE_H_
