#include "driver/command_info.h"

#include <cstring>
#include <iostream>
#include <utility>

#include "driver/diff_listing.h"
#include "common/fatal.h"
#include "driver/timing_report.h"

namespace {

const char kPatternName[] = "tester_pattern";
const char kDiffHeader[] = "Result does not match golden data.\nDiff:\n";

}  // namespace

CommandInfo::CommandInfo(TesterSetting::TestCommand& commandSet, _kesh_player* playerHandle)
    : player(playerHandle), command(commandSet) {
  createPatterns();
  createGraph();
  addNodes();
  if (keshBuildPatternGraph(graph) != 0) kesh::fatalError("Failed to build pattern graph");
  // Arguments are bound per node after the build; each node is then refreshed.
  for (const SubCommand& sub : command.subCommands) bindArguments(sub);
}

void CommandInfo::createPatterns() {
  for (const SubCommand& sub : command.subCommands) {
    _pattern* pattern = keshCreatePattern(player, sub.patternBinary.data(),
                                          static_cast<uint32_t>(sub.patternBinary.size()), kPatternName);
    if (pattern == nullptr) kesh::fatalError("Failed to create pattern");
    patterns[&sub] = pattern;
  }
}

void CommandInfo::createGraph() {
  graph = keshCreatePatternGraph(player, "tester_graph");
  if (graph == nullptr) kesh::fatalError("Failed to create pattern graph");
  for (const auto& [key, value] : command.graphOptions) {
    if (keshSetPatternGraphOption(graph, key, value) != 0) {
      kesh::fatalError("Failed to set graph option " + std::to_string(static_cast<int>(key)));
    }
  }
}

void CommandInfo::addNodes() {
  std::vector<_pattern_node_handle*> packList;
  for (const SubCommand& sub : command.subCommands) {
    _pattern_node_handle* node = nullptr;
    // A node that cannot be added is reported but kept (null unless the library
    // wrote one): the calls made on it later report their own failures.
    if (keshAddPattern(graph, patterns.at(&sub), 0, 0, &node, kPatternName) != 0) {
      std::cerr << "Failed to add pattern to graph" << std::endl;
    }
    packList.push_back(node);
    nodes[&sub] = node;
  }
  if (command.pack &&
      keshSetPatternPack(graph, static_cast<uint32_t>(packList.size()), packList.data()) != 0) {
    kesh::fatalError("Failed to set pattern packed");
  }
}

void CommandInfo::bindArguments(const SubCommand& sub) {
  std::vector<PatternArgInfo> args;
  getArgInfo(patterns.at(&sub), args);
  _pattern_node_handle* node = nodes.at(&sub);
  std::map<std::string, _kesh_mem*> mems;
  std::map<std::string, void*> addrs;
  for (const PatternArgInfo& arg : args) {
    if (arg.noAlloc == 0) bindArgument(sub, node, arg, mems, addrs);
  }
  for (const auto& [key, value] : sub.nodeOptions) {
    if (keshSetPatternNodeOption(node, key, value) != 0) {
      kesh::fatalError("Failed to set pattern option " + std::to_string(static_cast<int>(key)));
    }
  }
  if (keshUpdatePatternNode(node) != 0) kesh::fatalError("Failed to update pattern");
  argInfos.emplace(&sub, std::move(args));
  argAddrs.emplace(&sub, std::move(addrs));
  argMems.emplace(&sub, std::move(mems));
}

void CommandInfo::bindArgument(const SubCommand& sub, _pattern_node_handle* node, const PatternArgInfo& arg,
                               std::map<std::string, _kesh_mem*>& mems, std::map<std::string, void*>& addrs) {
  _kesh_mem* mem = keshCreateMem(player, arg.size, arg.name.c_str());
  if (mem == nullptr) kesh::fatalError("Failed to create memory for pattern argument " + arg.name);
  void* addr = keshMapMem(mem);
  if (addr == nullptr) kesh::fatalError("Failed to map memory for pattern argument " + arg.name);
  // A repeated name keeps the first argument's memory on record.
  mems.emplace(arg.name, mem);
  addrs.emplace(arg.name, addr);

  auto input = sub.inputs.find(arg.name);
  if (input != sub.inputs.end()) {
    // The input's own length is copied: sizing inputs is the user's business.
    if (!input->second.empty()) std::memmove(addr, input->second.data(), input->second.size());
    if (keshFlushMem(mem) != 0) kesh::fatalError("Failed to flush memory for pattern argument " + arg.name);
  } else if (sub.goldens.count(arg.name) == 0) {
    std::cerr << "Pattern argument " << arg.name << " not set" << std::endl;
  }
  if (keshSetPatternNodeArg(node, arg.index, mem, arg.size) != 0) {
    kesh::fatalError("Failed to set pattern argument " + arg.name);
  }
}

void CommandInfo::wait() {
  if (keshWaitPatternJob(job) != 0) kesh::fatalError("Failed to wait for pattern job completion");
  NodeTiming timing;
  std::cout << "Execution info of command: " << command.commandLine << std::endl;
  size_t position = 0;
  for (const SubCommand& sub : command.subCommands) {
    _pattern_node_handle* node = nodes.at(&sub);
    const std::string at = std::to_string(position);
    if (keshGetPatternNodeExecInfo(job, node, PATTERN_NODE_EXEC_INFO_IP_TIME, &timing.ipTime) != 0) {
      kesh::fatalError("Failed to get IP time of sub-command " + at);
    }
    if (keshGetPatternNodeExecInfo(job, node, PATTERN_NODE_EXEC_INFO_DRIVER_TIME, &timing.driverTime) != 0) {
      kesh::fatalError("Failed to get driver time of sub-command " + at);
    }
    if (keshGetPatternNodeExecInfo(job, node, PATTERN_NODE_EXEC_INFO_START_TIMESTAMP, &timing.startTimestamp) != 0) {
      kesh::fatalError("Failed to get start timestamp of sub-command " + at);
    }
    if (keshGetPatternNodeExecInfo(job, node, PATTERN_NODE_EXEC_INFO_END_TIMESTAMP, &timing.endTimestamp) != 0) {
      kesh::fatalError("Failed to get end timestamp of sub-command " + at);
    }
    std::cout << formatTimingLines(position, timing) << std::flush;
    ++position;
  }
}

bool CommandInfo::compare() {
  bool passed = true;
  for (const SubCommand& sub : command.subCommands) {
    const std::map<std::string, _kesh_mem*>& mems = argMems.at(&sub);
    const std::map<std::string, void*>& addrs = argAddrs.at(&sub);
    for (const PatternArgInfo& arg : argInfos.at(&sub)) {
      if (arg.noAlloc != 0) continue;
      _kesh_mem* mem = mems.at(arg.name);
      if (!compareArgument(sub, arg.name, mem, addrs.at(arg.name))) passed = false;
      if (keshUnmapMem(mem) != 0) kesh::fatalError("Failed to unmap memory");
    }
  }
  return passed;
}

bool CommandInfo::compareArgument(const SubCommand& sub, const std::string& name, _kesh_mem* mem,
                                  const void* addr) {
  auto golden = sub.goldens.find(name);
  if (golden == sub.goldens.end()) {
    std::cout << "Golden data not found for argument " << name << '\n'
              << "Skip compare golden of argument " << name << std::endl;
    return true;
  }
  if (keshInvalidateMem(mem) != 0) kesh::fatalError("Failed to invalidate memory for argument " + name);
  // The golden's length is read back, not the argument's size: like inputs,
  // goldens are sized by the user, and the read-back follows the golden. It is
  // compared where the mapping holds it: a copy would only fault in fresh pages.
  const std::vector<uint8_t>& expected = golden->second;
  if (matchesOrListsDiff(std::cout, kDiffHeader, static_cast<const uint8_t*>(addr), expected.data(),
                         expected.size())) {
    std::cout << "Test passed for argument " << name << std::endl;
    return true;
  }
  std::cout << "Test failed for argument " << name << std::endl;
  return false;
}

bool CommandInfo::compareGolden(const std::vector<uint8_t>& result, const std::vector<uint8_t>& golden) {
  // The listing is formatted as text, so the stream's number base and flags
  // are never touched and stay as the caller left them.
  return matchesOrListsDiff(std::cout, kDiffHeader, result.data(), golden.data(), result.size());
}

CommandInfo::~CommandInfo() {
  for (const SubCommand& sub : command.subCommands) {
    for (const auto& entry : argMems.at(&sub)) {
      if (keshDestroyMem(entry.second) != 0) kesh::fatalError("Failed to destroy memory");
    }
    if (keshDestroyPatternNode(nodes.at(&sub)) != 0) kesh::fatalError("Failed to destroy pattern node");
  }
  if (keshDestroyPatternJob(job) != 0) kesh::fatalError("Failed to destroy pattern job");
  if (keshDestroyPatternGraph(graph) != 0) kesh::fatalError("Failed to destroy pattern graph");
  for (const SubCommand& sub : command.subCommands) {
    if (keshDestroyPattern(patterns.at(&sub)) != 0) kesh::fatalError("Failed to destroy pattern");
  }
}
