#include "driver/pattern_tester.h"

#include <cstdint>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "driver/command_info.h"
#include "common/fatal.h"
#include "common/group_limits.h"
#include "kesh/kesh_pattern.h"

namespace {

std::string runPrefix(int64_t run, int32_t loopCount) {
  if (loopCount == 1) return "";
  if (loopCount == -1) return "[" + std::to_string(run) + "] ";
  return "[" + std::to_string(run) + "/" + std::to_string(loopCount) + "] ";
}

void destroyPlayer(_kesh_player*& player) {
  if (keshDestroyPlayer(player) != 0) kesh::fatalError("Failed to destroy player");
  player = nullptr;
}

using Records = std::vector<std::shared_ptr<CommandInfo>>;

// Sets up and plays every repetition of `command`; all plays precede any wait.
void startCommand(TesterSetting::TestCommand& command, _kesh_player* player, Records& records) {
  const int32_t repeats = command.groupLoopCount;
  if (repeats != -1 && repeats < 1) return;
  // A count of -1 repeats until the group limit ends the process.
  for (int64_t j = 1; repeats == -1 || j <= repeats; ++j) {
    command.updateRandom();
    std::cout << "Running command: " << command.commandLine << std::endl;
    records.push_back(std::make_shared<CommandInfo>(command, player));
    if (records.size() > kesh::kMaxJobsPerGroup) {
      kesh::fatalError(
          "Exceed maximum number of commands in one command group, make sure the command group size is less "
          "than " + std::to_string(kesh::kRefusedGroupLoopCount));
    }
    CommandInfo& record = *records.back();
    if (keshPlayPatternGraph(record.player, record.graph, 0, &record.job) != 0) {
      kesh::fatalError("Failed to play pattern");
    }
  }
}

bool finishGroup(Records& records) {
  for (const std::shared_ptr<CommandInfo>& record : records) record->wait();
  bool passed = true;
  // Every record is compared, also after a failure, so that all results show.
  for (const std::shared_ptr<CommandInfo>& record : records) passed = record->compare() && passed;
  // Released newest first, the reverse of the set-up order.
  while (!records.empty()) records.pop_back();
  return passed;
}

}  // namespace

int PatternTester::run(int argc, char** argv) {
  TesterSetting setting(argc, argv);
  if (setting.help) {
    setting.showHelp();
    return 0;
  }
  for (int64_t i = 1; setting.loopCount == -1 || i <= setting.loopCount; ++i) {
    const std::string prefix = runPrefix(i, setting.loopCount);
    std::cout << prefix << "Test pattern start..." << std::endl;
    if (setting.random) setting.shuffleGroups();
    const bool passed = runAllCommand(setting);
    std::cout << prefix << (passed ? "Test pattern passed!!!" : "Test pattern failed!!!") << std::endl;
    if (!passed) return -1;
  }
  return 0;
}

bool PatternTester::runAllCommand(TesterSetting& setting) {
  bool passed = true;
  _kesh_player* player = nullptr;
  if (setting.commandGroups.empty()) return passed;
  for (std::vector<TesterSetting::TestCommand>& group : setting.commandGroups) {
    if (!setting.sessionReused || player == nullptr) {
      player = keshCreatePlayer("KESH pattern tester");
      if (player == nullptr) kesh::fatalError("Failed to create player");
    }
    Records records;
    for (TesterSetting::TestCommand& command : group) startCommand(command, player, records);
    passed = finishGroup(records) && passed;
    if (!setting.sessionReused) destroyPlayer(player);
  }
  if (player != nullptr) destroyPlayer(player);
  return passed;
}
