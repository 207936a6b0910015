// The 26 C entry points. Each one checks its handles and arguments, runs
// inside an ApiCall (fault injection, trace, no exception ever escapes) and
// delegates; nothing else lives here.

// Only the contract's functions get default visibility; the rest of the
// library is hidden (and the version script exports nothing else).
#pragma GCC visibility push(default)
#include "kesh/kesh_pattern.h"
#pragma GCC visibility pop

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "format/reader.h"
#include "runtime/api_call.h"
#include "runtime/arg_info.h"
#include "runtime/cores.h"
#include "runtime/graph.h"
#include "runtime/handles.h"
#include "runtime/job.h"
#include "runtime/memory.h"
#include "runtime/node.h"
#include "runtime/pattern.h"
#include "runtime/player.h"

namespace kesh::runtime {
namespace {

HandleTable& table() { return HandleTable::instance(); }

// Callers may pass any integer as an enumeration; read it as the integer it
// is, without loading an out-of-range enumeration value.
template <class E>
uint32_t rawValue(const E& value) {
  static_assert(sizeof(E) == sizeof(uint32_t), "enumerations are passed as 32-bit integers");
  uint32_t raw = 0;
  std::memcpy(&raw, &value, sizeof raw);
  return raw;
}

std::string nameOr(const char* name) { return name == nullptr ? std::string() : std::string(name); }

std::string nodeList(uint32_t count, _pattern_node_handle* const* nodes) {
  if (nodes == nullptr) return "null";
  std::string list = "[";
  for (uint32_t i = 0; i < count; ++i) {
    if (i != 0) list += ", ";
    list += nodes[i] == nullptr ? std::string("null") : 'N' + std::to_string(idOf(nodes[i]));
  }
  return list + ']';
}

// One call of `fn` that destroys the T behind `handle` (named `name` in the trace).
template <class T, class Handle>
int destroyHandle(Fn fn, const char* name, Kind kind, Handle* handle) {
  ApiCall call(fn);
  call.handle(name, kind, handle);
  return call.run([&] { return table().take<T>(handle, kind) != nullptr ? kOk : kFailed; });
}

// One call of `fn` on the T behind `handle` (named `name` in the trace):
// succeeds when `action` on it does.
template <class T, class Handle, class Action>
int onHandle(Fn fn, const char* name, Kind kind, Handle* handle, Action action) {
  ApiCall call(fn);
  call.handle(name, kind, handle);
  return call.run([&] {
    auto found = table().find<T>(handle, kind);
    return found != nullptr && action(*found) ? kOk : kFailed;
  });
}

}  // namespace
}  // namespace kesh::runtime

using namespace kesh::runtime;  // NOLINT: the entry points below are thin wrappers

extern "C" {

_kesh_player* keshCreatePlayer(const char* name) {
  ApiCall call(Fn::keshCreatePlayer);
  call.text("name", name);
  HandleId id = call.create(Kind::kPlayer, [&]() -> HandleId {
    auto player = std::make_shared<Player>();
    player->id = table().newId();
    player->name = nameOr(name);
    table().insert(player->id, Kind::kPlayer, player);
    return player->id;
  });
  return handleOf<_kesh_player>(id);
}

int keshDestroyPlayer(_kesh_player* player) {
  ApiCall call(Fn::keshDestroyPlayer);
  call.handle("player", Kind::kPlayer, player);
  return call.run([&] {
    auto found = table().find<Player>(player, Kind::kPlayer);
    if (found == nullptr || found->unfinishedJobs.load() != 0) return kFailed;
    return table().take<Player>(player, Kind::kPlayer) != nullptr ? kOk : kFailed;
  });
}

_pattern* keshCreatePattern(_kesh_player* player, const void* binary, uint32_t size, const char* name) {
  ApiCall call(Fn::keshCreatePattern);
  call.handle("player", Kind::kPlayer, player).number("size", size).text("name", name);
  HandleId id = call.create(Kind::kPattern, [&]() -> HandleId {
    auto owner = table().find<Player>(player, Kind::kPlayer);
    if (owner == nullptr || binary == nullptr || size == 0) return 0;
    auto program = std::make_shared<kesh::format::Program>();
    std::string error;
    if (!kesh::format::decodePattern(static_cast<const uint8_t*>(binary), size, program.get(), &error)) {
      call.note("refused: " + error);
      return 0;
    }
    auto pattern = std::make_shared<Pattern>();
    pattern->id = table().newId();
    pattern->playerId = owner->id;
    pattern->name = nameOr(name);
    pattern->program = std::move(program);
    table().insert(pattern->id, Kind::kPattern, pattern);
    return pattern->id;
  });
  return handleOf<_pattern>(id);
}

int keshDestroyPattern(_pattern* pattern) {
  return destroyHandle<Pattern>(Fn::keshDestroyPattern, "pattern", Kind::kPattern, pattern);
}

_pattern_graph* keshCreatePatternGraph(_kesh_player* player, const char* name) {
  ApiCall call(Fn::keshCreatePatternGraph);
  call.handle("player", Kind::kPlayer, player).text("name", name);
  HandleId id = call.create(Kind::kGraph, [&]() -> HandleId {
    auto owner = table().find<Player>(player, Kind::kPlayer);
    if (owner == nullptr) return 0;
    HandleId graphId = table().newId();
    table().insert(graphId, Kind::kGraph, std::make_shared<Graph>(graphId, owner->id));
    return graphId;
  });
  return handleOf<_pattern_graph>(id);
}

int keshDestroyPatternGraph(_pattern_graph* graph) {
  return destroyHandle<Graph>(Fn::keshDestroyPatternGraph, "graph", Kind::kGraph, graph);
}

int keshSetPatternGraphOption(_pattern_graph* graph, pattern_graph_option_type option, int32_t value) {
  ApiCall call(Fn::keshSetPatternGraphOption);
  call.handle("graph", Kind::kGraph, graph).number("option", rawValue(option)).number("value", value);
  return call.run([&] {
    auto found = table().find<Graph>(graph, Kind::kGraph);
    return found != nullptr && found->setOption(rawValue(option), value) ? kOk : kFailed;
  });
}

int keshAddPattern(_pattern_graph* graph, _pattern* pattern, uint32_t reserved0, uint32_t reserved1,
                   _pattern_node_handle** node, const char* name) {
  ApiCall call(Fn::keshAddPattern);
  call.handle("graph", Kind::kGraph, graph).handle("pattern", Kind::kPattern, pattern);
  call.number("reserved0", reserved0).number("reserved1", reserved1).text("name", name).output("node");
  return call.run([&] {
    auto owner = table().find<Graph>(graph, Kind::kGraph);
    auto source = table().find<Pattern>(pattern, Kind::kPattern);
    if (owner == nullptr || source == nullptr || node == nullptr || reserved0 != 0 || reserved1 != 0) return kFailed;
    if (source->playerId != owner->playerId()) return kFailed;
    HandleId nodeId = table().newId();
    auto added = std::make_shared<Node>(nodeId, owner->id(), owner->playerId(), source->program);
    if (!owner->addNode(added)) return kFailed;
    table().insert(nodeId, Kind::kNode, added);
    *node = handleOf<_pattern_node_handle>(nodeId);
    call.setOutputHandle("node", Kind::kNode, nodeId);
    return kOk;
  });
}

int keshSetPatternPack(_pattern_graph* graph, uint32_t count, _pattern_node_handle** nodes) {
  ApiCall call(Fn::keshSetPatternPack);
  call.handle("graph", Kind::kGraph, graph).number("count", count);
  call.formatted("nodes", [&] { return nodeList(count, nodes); });
  return call.run([&] {
    auto owner = table().find<Graph>(graph, Kind::kGraph);
    if (owner == nullptr || (nodes == nullptr && count != 0)) return kFailed;
    std::vector<HandleId> ids;
    for (uint32_t i = 0; i < count; ++i) {
      if (table().find<Node>(nodes[i], Kind::kNode) == nullptr) return kFailed;
      ids.push_back(idOf(nodes[i]));
    }
    return owner->pack(ids) ? kOk : kFailed;
  });
}

int keshBuildPatternGraph(_pattern_graph* graph) {
  return onHandle<Graph>(Fn::keshBuildPatternGraph, "graph", Kind::kGraph, graph,
                         [](Graph& found) { return found.build(); });
}

int keshDestroyPatternNode(_pattern_node_handle* node) {
  ApiCall call(Fn::keshDestroyPatternNode);
  call.handle("node", Kind::kNode, node);
  return call.run([&] {
    auto taken = table().take<Node>(node, Kind::kNode);
    if (taken == nullptr) return kFailed;
    taken->markDestroyed();
    return kOk;
  });
}

int keshGetPatternArgInfoSize(_pattern* pattern, pattern_arg_info_type type, uint32_t* size) {
  ApiCall call(Fn::keshGetPatternArgInfoSize);
  call.handle("pattern", Kind::kPattern, pattern).number("type", rawValue(type)).output("size");
  return call.run([&] {
    auto found = table().find<Pattern>(pattern, Kind::kPattern);
    uint32_t needed = 0;
    if (found == nullptr || size == nullptr || !argInfoSize(*found->program, rawValue(type), &needed)) {
      return kFailed;
    }
    *size = needed;
    call.setOutput("size", needed);
    return kOk;
  });
}

int keshGetPatternArgInfo(_pattern* pattern, pattern_arg_info_type type, void* data, uint32_t size) {
  ApiCall call(Fn::keshGetPatternArgInfo);
  call.handle("pattern", Kind::kPattern, pattern).number("type", rawValue(type)).number("size", size);
  return call.run([&] {
    auto found = table().find<Pattern>(pattern, Kind::kPattern);
    if (found == nullptr || data == nullptr) return kFailed;
    return argInfo(*found->program, rawValue(type), data, size) ? kOk : kFailed;
  });
}

_kesh_mem* keshCreateMem(_kesh_player* player, uint32_t size, const char* name) {
  ApiCall call(Fn::keshCreateMem);
  call.handle("player", Kind::kPlayer, player).number("size", size).text("name", name);
  HandleId id = call.create(Kind::kMem, [&]() -> HandleId {
    auto owner = table().find<Player>(player, Kind::kPlayer);
    if (owner == nullptr) return 0;
    auto memory = Memory::create(owner->id, size);
    if (memory == nullptr) return 0;
    HandleId memId = table().newId();
    table().insert(memId, Kind::kMem, memory);
    return memId;
  });
  return handleOf<_kesh_mem>(id);
}

void* keshMapMem(_kesh_mem* mem) {
  ApiCall call(Fn::keshMapMem);
  call.handle("mem", Kind::kMem, mem);
  return call.pointer([&]() -> void* {
    auto found = table().find<Memory>(mem, Kind::kMem);
    return found != nullptr ? found->map() : nullptr;
  });
}

int keshFlushMem(_kesh_mem* mem) {
  return onHandle<Memory>(Fn::keshFlushMem, "mem", Kind::kMem, mem, [](Memory& found) { return found.flush(); });
}

int keshInvalidateMem(_kesh_mem* mem) {
  return onHandle<Memory>(Fn::keshInvalidateMem, "mem", Kind::kMem, mem,
                          [](Memory& found) { return found.invalidate(); });
}

int keshUnmapMem(_kesh_mem* mem) {
  return onHandle<Memory>(Fn::keshUnmapMem, "mem", Kind::kMem, mem, [](Memory& found) { return found.unmap(); });
}

int keshDestroyMem(_kesh_mem* mem) {
  return destroyHandle<Memory>(Fn::keshDestroyMem, "mem", Kind::kMem, mem);
}

int keshSetPatternNodeArg(_pattern_node_handle* node, uint32_t index, _kesh_mem* mem, uint32_t size) {
  ApiCall call(Fn::keshSetPatternNodeArg);
  call.handle("node", Kind::kNode, node).number("index", index).handle("mem", Kind::kMem, mem).number("size", size);
  return call.run([&] {
    auto target = table().find<Node>(node, Kind::kNode);
    auto memory = table().find<Memory>(mem, Kind::kMem);
    return target != nullptr && memory != nullptr && target->stageArg(index, *memory, size) ? kOk : kFailed;
  });
}

int keshSetPatternNodeOption(_pattern_node_handle* node, pattern_node_option_type option, int32_t value) {
  ApiCall call(Fn::keshSetPatternNodeOption);
  call.handle("node", Kind::kNode, node).number("option", rawValue(option)).number("value", value);
  return call.run([&] {
    auto target = table().find<Node>(node, Kind::kNode);
    int cores = CorePool::instance().coreCount();
    return target != nullptr && target->stageOption(rawValue(option), value, cores) ? kOk : kFailed;
  });
}

int keshUpdatePatternNode(_pattern_node_handle* node) {
  return onHandle<Node>(Fn::keshUpdatePatternNode, "node", Kind::kNode, node, [](Node& found) {
    found.update();
    return true;
  });
}

int keshPlayPatternGraph(_kesh_player* player, _pattern_graph* graph, uint32_t flags, _pattern_job** job) {
  ApiCall call(Fn::keshPlayPatternGraph);
  call.handle("player", Kind::kPlayer, player).handle("graph", Kind::kGraph, graph).number("flags", flags);
  call.output("job");
  return call.run([&] {
    auto [owner, played] = table().findPair<Player, Graph>(player, Kind::kPlayer, graph, Kind::kGraph);
    if (owner == nullptr || played == nullptr || job == nullptr || flags != 0) return kFailed;
    if (played->playerId() != owner->id) return kFailed;
    std::shared_ptr<const JobPlan> plan;
    JobLimits limits;
    if (!played->plan(&plan, &limits)) return kFailed;
    CorePool& pool = CorePool::instance();
    pool.ensureStarted();
    auto started = std::make_shared<Job>(owner, std::move(plan), limits);
    HandleId jobId = table().insertNew(Kind::kJob, started);
    started->start(pool);
    *job = handleOf<_pattern_job>(jobId);
    call.setOutputHandle("job", Kind::kJob, jobId);
    return kOk;
  });
}

int keshWaitPatternJob(_pattern_job* job) {
  ApiCall call(Fn::keshWaitPatternJob);
  call.handle("job", Kind::kJob, job);
  return call.run([&] {
    auto found = table().find<Job>(job, Kind::kJob);
    if (found == nullptr) return kFailed;
    int status = found->wait();
    call.note(found->outcomeNote());
    return status;
  });
}

int keshGetPatternNodeExecInfo(_pattern_job* job, _pattern_node_handle* node, uint32_t kind, int64_t* value) {
  ApiCall call(Fn::keshGetPatternNodeExecInfo);
  call.handle("job", Kind::kJob, job).handle("node", Kind::kNode, node).number("kind", kind).output("value");
  return call.run([&] {
    auto found = table().find<Job>(job, Kind::kJob);
    int64_t result = 0;
    if (found == nullptr || value == nullptr || node == nullptr || !found->execInfo(idOf(node), kind, &result)) {
      return kFailed;
    }
    *value = result;
    call.setOutput("value", result);
    return kOk;
  });
}

int keshDestroyPatternJob(_pattern_job* job) {
  ApiCall call(Fn::keshDestroyPatternJob);
  call.handle("job", Kind::kJob, job);
  return call.run([&] {
    bool taken = table().takeUnless<Job>(job, Kind::kJob, [](const Job& found) { return !found.done(); });
    return taken ? kOk : kFailed;
  });
}

}  // extern "C"
