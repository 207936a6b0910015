#include "runtime/graph.h"

#include <set>

#include "kesh/kesh_pattern.h"

namespace kesh::runtime {

bool Graph::addNode(std::shared_ptr<Node> node) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (built_) return false;
  nodes_.push_back(std::move(node));
  packOf_.push_back(-1);
  return true;
}

size_t Graph::positionOf(HandleId nodeId) const {
  for (size_t i = 0; i < nodes_.size(); ++i) {
    if (nodes_[i]->id() == nodeId) return i;
  }
  return nodes_.size();
}

bool Graph::pack(const std::vector<HandleId>& ids) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (built_) return false;
  std::set<size_t> positions;
  for (HandleId id : ids) {
    size_t position = positionOf(id);
    if (position == nodes_.size() || packOf_[position] != -1) return false;
    if (!positions.insert(position).second) return false;
  }
  if (positions.empty()) return true;
  for (size_t position : positions) packOf_[position] = packCount_;
  ++packCount_;
  return true;
}

bool Graph::build() {
  std::lock_guard<std::mutex> lock(mutex_);
  if (built_) return false;
  auto plan = std::make_shared<JobPlan>();
  plan->nodes.resize(nodes_.size());
  std::vector<size_t> stepOfPack(static_cast<size_t>(packCount_), SIZE_MAX);
  for (size_t i = 0; i < nodes_.size(); ++i) {
    int packNumber = packOf_[i];
    if (packNumber < 0) {
      plan->steps.push_back({i});
      continue;
    }
    size_t& step = stepOfPack[static_cast<size_t>(packNumber)];
    if (step == SIZE_MAX) {
      step = plan->steps.size();
      plan->steps.emplace_back();
    }
    plan->steps[step].push_back(i);
  }
  plan_ = std::move(plan);
  seenVersions_.assign(nodes_.size(), 0);
  built_ = true;
  return true;
}

bool Graph::setOption(uint32_t option, int32_t value) {
  if (value < 0) return false;
  std::lock_guard<std::mutex> lock(mutex_);
  switch (option) {
    case PATTERN_GRAPH_OPTION_HARD_LIMIT:
      limits_.hardUs = value;
      return true;
    case PATTERN_GRAPH_OPTION_SOFT_LIMIT:
      limits_.softUs = value;
      return true;
    default:
      return false;
  }
}

bool Graph::refreshLocked() {
  std::shared_ptr<JobPlan> fresh;
  std::vector<uint64_t> versions;
  for (size_t i = 0; i < nodes_.size(); ++i) {
    if (nodes_[i]->version() == seenVersions_[i]) continue;
    if (fresh == nullptr) {
      // Jobs may be reading plan_: the change goes into a copy.
      fresh = std::make_shared<JobPlan>(*plan_);
      versions = seenVersions_;
    }
    if (!nodes_[i]->snapshot(&fresh->nodes[i], &versions[i])) return false;
  }
  if (fresh != nullptr) {
    plan_ = std::move(fresh);
    seenVersions_ = std::move(versions);
  }
  return true;
}

bool Graph::plan(std::shared_ptr<const JobPlan>* out, JobLimits* limits) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (!built_ || !refreshLocked()) return false;
  *out = plan_;
  *limits = limits_;
  return true;
}

}  // namespace kesh::runtime
