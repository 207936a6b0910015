#include <cstddef>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include "settings/tester_setting.h"

void TesterSetting::groupCommands(std::vector<TestCommand>& commands) {
  std::map<int32_t, std::vector<TestCommand>> grouped;
  for (TestCommand& command : commands) {
    if (command.groupIndex == -1) {
      commandGroups.emplace_back();
      commandGroups.back().push_back(std::move(command));
    } else {
      grouped[command.groupIndex].push_back(std::move(command));
    }
  }
  // Ungrouped sets run first, one by one; then groups by ascending index.
  for (auto& entry : grouped) commandGroups.push_back(std::move(entry.second));
}

void TesterSetting::shuffleGroups() {
  // A fresh seed for every run, so each run may see a new order.
  std::random_device device("/dev/urandom");
  std::minstd_rand engine(device());
  const std::size_t count = commandGroups.size();
  if (count < 2) return;
  for (std::size_t position = 0; position + 1 < count; ++position) {
    std::uniform_int_distribution<std::size_t> pick(0, count - 1 - position);
    const std::size_t offset = pick(engine);
    if (offset != 0) std::swap(commandGroups[position], commandGroups[position + offset]);
  }
}
