// Pattern binaries for the library's tests and benchmarks, built with the
// format writer, and helpers that drive the C API the way the tool does.
// Stateless; each helper is as thread-safe as the calls it makes.
#ifndef KESH_TESTS_EMULATOR_RUNTIME_TEST_PATTERNS_H_
#define KESH_TESTS_EMULATOR_RUNTIME_TEST_PATTERNS_H_

#include <cstring>
#include <vector>

#include "kesh/kesh_pattern.h"
#include "format/writer.h"
#include "sample_program.h"

namespace kesh::runtime::testing {

using format::Opcode;
using format::testing::makeOp;

inline uint32_t argRef(uint32_t position) { return format::bufferRef(format::Space::kArg, position); }

/// Arguments "in" (index 7) and "out" (index 3) of `size` bytes; out = in.
inline std::vector<uint8_t> copyPattern(uint32_t size) {
  format::Program program;
  program.args = {{7, size, false, "in"}, {3, size, false, "out"}};
  program.ops = {makeOp(Opcode::kCopy, {argRef(1), 0, argRef(0), 0, size})};
  return format::encodePattern(program);
}

/// Arguments "in" (0), "scratch" (9, no-alloc) and "out" (2): out = in +
/// scratch (u8, saturated), then scratch is filled with 0xFF. Out equals in
/// on every run only if scratch starts zeroed on every run.
inline std::vector<uint8_t> scratchPattern(uint32_t size) {
  format::Program program;
  program.args = {{0, size, false, "in"}, {9, size, true, "scratch"}, {2, size, false, "out"}};
  program.ops = {makeOp(Opcode::kBinary, {0, 0, argRef(2), 0, argRef(0), 0, argRef(1), 0, size}),  // add
                 makeOp(Opcode::kFill, {argRef(1), 0, size, 0xFF})};
  return format::encodePattern(program);
}

/// Arguments "src" (0) and "dst" (1), a u8 plane of width x height each:
/// a 5x5 convolution, enough work to keep a core busy for a while.
inline std::vector<uint8_t> convPattern(uint32_t width, uint32_t height) {
  format::Program program;
  program.args = {{0, width * height, false, "src"}, {1, width * height, false, "dst"}};
  program.constData.assign(50, 0);
  for (size_t i = 0; i < 25; ++i) program.constData[2 * i] = 1;
  program.ops = {makeOp(Opcode::kConv2D, {argRef(1), 0, width, argRef(0), 0, width, width, height, 0, height,
                                          format::testing::kConst, 0, 5, 5, 0})};
  return format::encodePattern(program);
}

inline _pattern* loadPattern(_kesh_player* player, const std::vector<uint8_t>& binary) {
  return keshCreatePattern(player, binary.data(), static_cast<uint32_t>(binary.size()), "tester_pattern");
}

/// Memory of `size` bytes filled with `fill`, flushed and bound (and applied) to argument `index` of `node`.
inline _kesh_mem* bindFilled(_kesh_player* player, _pattern_node_handle* node, uint32_t index, uint32_t size,
                             uint8_t fill) {
  _kesh_mem* mem = keshCreateMem(player, size, "arg");
  void* host = keshMapMem(mem);
  if (host == nullptr) return nullptr;
  std::memset(host, fill, size);
  const bool bound = keshFlushMem(mem) == 0 && keshSetPatternNodeArg(node, index, mem, size) == 0 &&
                     keshUpdatePatternNode(node) == 0;
  return bound ? mem : nullptr;
}

/// A built graph of `count` nodes running `pattern` (packed if `pack`); the nodes are stored in *nodes.
inline _pattern_graph* buildGraph(_kesh_player* player, _pattern* pattern, std::vector<_pattern_node_handle*>* nodes,
                                  size_t count = 1, bool pack = false) {
  _pattern_graph* graph = keshCreatePatternGraph(player, "tester_graph");
  nodes->assign(count, nullptr);
  for (auto& node : *nodes) {
    if (keshAddPattern(graph, pattern, 0, 0, &node, "tester_pattern") != 0) return nullptr;
  }
  if (pack && keshSetPatternPack(graph, static_cast<uint32_t>(count), nodes->data()) != 0) return nullptr;
  return keshBuildPatternGraph(graph) == 0 ? graph : nullptr;
}

/// A built graph of one node running `pattern`; the node is stored in *node.
inline _pattern_graph* singleNodeGraph(_kesh_player* player, _pattern* pattern, _pattern_node_handle** node) {
  std::vector<_pattern_node_handle*> nodes;
  _pattern_graph* graph = buildGraph(player, pattern, &nodes);
  *node = nodes.at(0);
  return graph;
}

/// Plays `graph` and waits; the job's wait status, or -100 if play failed.
inline int playAndWait(_kesh_player* player, _pattern_graph* graph, _pattern_job** job) {
  if (keshPlayPatternGraph(player, graph, 0, job) != 0) return -100;
  return keshWaitPatternJob(*job);
}

inline int64_t execInfo(_pattern_job* job, _pattern_node_handle* node, uint32_t kind) {
  int64_t value = -1;
  return keshGetPatternNodeExecInfo(job, node, kind, &value) == 0 ? value : -1;
}

}  // namespace kesh::runtime::testing

#endif  // KESH_TESTS_EMULATOR_RUNTIME_TEST_PATTERNS_H_
