// A graph of nodes: nodes are added and packed until the graph is built,
// options may be set at any time, and a built graph can be played any number
// of times, each play taking a snapshot (JobPlan). Nodes run in the order
// they were added; the nodes of a pack start together, at the place of the
// pack's first node. The steps are planned once, at build; a play re-takes
// only the nodes updated since the last play and otherwise shares the last
// plan. Thread-safe (one mutex per graph, taken before a node's).
#ifndef KESH_EMULATOR_RUNTIME_GRAPH_H_
#define KESH_EMULATOR_RUNTIME_GRAPH_H_

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "runtime/handles.h"
#include "runtime/job_plan.h"
#include "runtime/node.h"

namespace kesh::runtime {

class Graph {
 public:
  /// An empty graph on player `playerId`.
  Graph(HandleId id, HandleId playerId) : id_(id), playerId_(playerId) {}

  /// The graph's handle id.
  HandleId id() const { return id_; }
  /// The player the graph belongs to.
  HandleId playerId() const { return playerId_; }

  /// Appends `node`; false once the graph is built.
  bool addNode(std::shared_ptr<Node> node);

  /// Packs the nodes of `ids` together; false once built, or when an id is
  /// not a node of this graph, is repeated or is already packed. An empty
  /// list succeeds and packs nothing.
  bool pack(const std::vector<HandleId>& ids);

  /// Ends the building; false if the graph was already built.
  bool build();

  /// Sets a limit in microseconds, 0..INT32_MAX (0: none); false for an
  /// unknown option or a negative value.
  bool setOption(uint32_t option, int32_t value);

  /// The job a play would run, with the current limits; false when the graph
  /// is not built, a node was destroyed or an allocated argument of a node has
  /// no applied memory. Plays between node updates get the same plan.
  bool plan(std::shared_ptr<const JobPlan>* out, JobLimits* limits);

 private:
  size_t positionOf(HandleId nodeId) const;  // nodes_.size() if absent
  bool refreshLocked();                      // re-takes updated nodes into plan_

  const HandleId id_;
  const HandleId playerId_;
  mutable std::mutex mutex_;
  std::vector<std::shared_ptr<Node>> nodes_;
  std::vector<int> packOf_;  // per node: pack number, or -1
  int packCount_ = 0;
  bool built_ = false;
  JobLimits limits_;
  std::shared_ptr<const JobPlan> plan_;  // from build on: the steps, and nodes as of seenVersions_
  std::vector<uint64_t> seenVersions_;    // per node: version in plan_, 0 before its first snapshot
};

}  // namespace kesh::runtime

#endif  // KESH_EMULATOR_RUNTIME_GRAPH_H_
