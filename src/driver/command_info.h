// The live execution record of one command set on one player: its patterns,
// graph, nodes, job and argument memory. Owns every library object it creates
// except the player; refers to (does not own) its command set, whose
// sub-commands must not move while the record lives. Not thread-safe: used by
// the run driver on the main thread only.
#ifndef KESH_DRIVER_COMMAND_INFO_H_
#define KESH_DRIVER_COMMAND_INFO_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "driver/arg_info.h"
#include "kesh/kesh_pattern.h"
#include "settings/tester_setting.h"

/// One execution of a command set: set up, played by the run driver, waited,
/// compared and released.
class CommandInfo {
 public:
  using SubCommand = TesterSetting::TestSubCommand;

  /// Loads the patterns, builds the graph and creates, fills and binds every
  /// argument's memory; the job is not played. Ends the process on failure.
  CommandInfo(TesterSetting::TestCommand& commandSet, _kesh_player* playerHandle);
  /// Releases memory and nodes, the job, the graph and the patterns, in that order.
  ~CommandInfo();
  CommandInfo(const CommandInfo&) = delete;
  CommandInfo& operator=(const CommandInfo&) = delete;

  /// Waits for the job and prints the timing of every sub-command.
  void wait();
  /// Reads every output back, compares it with its golden, prints one line per
  /// argument and unmaps all memory; true when no comparison failed.
  bool compare();
  /// True when `result` equals the start of `golden`; otherwise prints the diff
  /// listing. `golden` must be at least as long as `result`.
  static bool compareGolden(const std::vector<uint8_t>& result, const std::vector<uint8_t>& golden);

  /// The player the record was set up on; not owned.
  _kesh_player* player;
  /// The command set executed; not owned.
  TesterSetting::TestCommand& command;
  /// The built graph; owned.
  _pattern_graph* graph = nullptr;
  /// The played job, written by the run driver when it plays the graph; owned.
  _pattern_job* job = nullptr;
  /// Argument descriptors per sub-command.
  std::map<const SubCommand*, std::vector<PatternArgInfo>> argInfos;
  /// Mapped host address per sub-command and argument name.
  std::map<const SubCommand*, std::map<std::string, void*>> argAddrs;
  /// Memory handle per sub-command and argument name; owned.
  std::map<const SubCommand*, std::map<std::string, _kesh_mem*>> argMems;
  /// Graph node per sub-command; owned.
  std::map<const SubCommand*, _pattern_node_handle*> nodes;
  /// Loaded pattern per sub-command; owned.
  std::map<const SubCommand*, _pattern*> patterns;

 private:
  void createPatterns();
  void createGraph();
  void addNodes();
  void bindArguments(const SubCommand& sub);
  void bindArgument(const SubCommand& sub, _pattern_node_handle* node, const PatternArgInfo& arg,
                    std::map<std::string, _kesh_mem*>& mems, std::map<std::string, void*>& addrs);
  bool compareArgument(const SubCommand& sub, const std::string& name, _kesh_mem* mem, const void* addr);
};

#endif  // KESH_DRIVER_COMMAND_INFO_H_
