// Helpers that drive the pattern library's C API the way the tool does: load a pattern, bind filled
// memory, build, play and wait. Stateless; each helper is as thread-safe as the calls it makes.
#ifndef KESH_TESTING_PATTERN_CALLS_H_
#define KESH_TESTING_PATTERN_CALLS_H_

#include <cstring>
#include <vector>

#include "kesh/kesh_pattern.h"

namespace kesh::testing {

/// Loads the pattern `binary`; nullptr when the library refuses it.
inline _pattern* loadPattern(_kesh_player* player, const std::vector<uint8_t>& binary) {
  return keshCreatePattern(player, binary.data(), static_cast<uint32_t>(binary.size()), "tester_pattern");
}

/// Memory of `size` bytes filled with `fill`, flushed and bound (and applied) to argument `index` of `node`.
inline _kesh_mem* bindFilled(_kesh_player* player, _pattern_node_handle* node, uint32_t index, uint32_t size,
                             uint8_t fill) {
  _kesh_mem* mem = keshCreateMem(player, size, "arg");
  void* host = keshMapMem(mem);
  if (host != nullptr) std::memset(host, fill, size);
  const bool bound = host != nullptr && keshFlushMem(mem) == 0 && keshSetPatternNodeArg(node, index, mem, size) == 0 &&
                     keshUpdatePatternNode(node) == 0;
  return bound ? mem : nullptr;
}

/// A built graph of `count` unpacked nodes running `pattern`; the nodes are stored in *nodes.
inline _pattern_graph* buildGraph(_kesh_player* player, _pattern* pattern, std::vector<_pattern_node_handle*>* nodes,
                                  size_t count = 1) {
  _pattern_graph* graph = keshCreatePatternGraph(player, "tester_graph");
  nodes->assign(count, nullptr);
  for (auto& node : *nodes) {
    if (keshAddPattern(graph, pattern, 0, 0, &node, "tester_pattern") != 0) return nullptr;
  }
  return keshBuildPatternGraph(graph) == 0 ? graph : nullptr;
}

/// A built graph of one node running `pattern`; the node is stored in *node.
inline _pattern_graph* singleNodeGraph(_kesh_player* player, _pattern* pattern, _pattern_node_handle** node) {
  _pattern_graph* graph = keshCreatePatternGraph(player, "tester_graph");
  const bool added = keshAddPattern(graph, pattern, 0, 0, node, "tester_pattern") == 0;
  return added && keshBuildPatternGraph(graph) == 0 ? graph : nullptr;
}

/// Plays `graph` and waits; the job's wait status, or -100 if play failed.
inline int playAndWait(_kesh_player* player, _pattern_graph* graph, _pattern_job** job) {
  return keshPlayPatternGraph(player, graph, 0, job) != 0 ? -100 : keshWaitPatternJob(*job);
}

/// The node's execution info `kind` for `job`, or -1 when the query fails.
inline int64_t execInfo(_pattern_job* job, _pattern_node_handle* node, uint32_t kind) {
  int64_t value = -1;
  return keshGetPatternNodeExecInfo(job, node, kind, &value) == 0 ? value : -1;
}

}  // namespace kesh::testing

#endif  // KESH_TESTING_PATTERN_CALLS_H_
