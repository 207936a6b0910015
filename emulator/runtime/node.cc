#include "runtime/node.h"

#include "kesh/kesh_pattern.h"

namespace kesh::runtime {

Node::Node(HandleId id, HandleId graphId, HandleId playerId, std::shared_ptr<const format::Program> program)
    : id_(id), graphId_(graphId), playerId_(playerId), program_(std::move(program)),
      appliedArgs_(program_->args.size()) {}

bool Node::stageArg(uint32_t index, const Memory& mem, uint32_t size) {
  if (mem.playerId() != playerId_ || size > mem.size()) return false;
  const auto& args = program_->args;
  for (size_t position = 0; position < args.size(); ++position) {
    if (args[position].index != index) continue;
    if (args[position].noAlloc || size < args[position].size) return false;
    std::lock_guard<std::mutex> lock(mutex_);
    stagedArgs_[position] = BoundArg{mem.device(), size};
    return true;
  }
  return false;
}

bool Node::stageOption(uint32_t option, int32_t value, int cores) {
  std::lock_guard<std::mutex> lock(mutex_);
  switch (option) {
    case PATTERN_NODE_OPTION_BOOST:
      if (value < kMinBoost || value > kMaxBoost) return false;
      stagedBoost_ = value;
      return true;
    case PATTERN_NODE_OPTION_CORE_AFFINITY:
      if (value < kAnyCore || value >= cores) return false;
      stagedCore_ = value;
      return true;
    default:
      return false;
  }
}

void Node::update() {
  std::lock_guard<std::mutex> lock(mutex_);
  for (auto& [position, bound] : stagedArgs_) appliedArgs_[position] = std::move(bound);
  stagedArgs_.clear();
  if (stagedBoost_) boost_ = *stagedBoost_;
  if (stagedCore_) core_ = *stagedCore_;
  stagedBoost_.reset();
  stagedCore_.reset();
  version_.fetch_add(1, std::memory_order_release);
}

void Node::markDestroyed() {
  std::lock_guard<std::mutex> lock(mutex_);
  destroyed_ = true;
  version_.fetch_add(1, std::memory_order_release);
}

bool Node::snapshot(NodeRun* out, uint64_t* version) const {
  std::lock_guard<std::mutex> lock(mutex_);
  if (destroyed_) return false;
  for (size_t position = 0; position < appliedArgs_.size(); ++position) {
    if (!program_->args[position].noAlloc && appliedArgs_[position].block == nullptr) return false;
  }
  out->nodeId = id_;
  out->program = program_;
  out->args = appliedArgs_;
  out->boost = boost_;
  out->core = core_;
  *version = version_.load(std::memory_order_relaxed);
  return true;
}

}  // namespace kesh::runtime
