#include <string>
#include <vector>

#include "settings/parse_hooks.h"
#include "settings/tester_setting.h"

std::vector<TesterSetting::TestCommand> TesterSetting::readCommand(const char* programName,
                                                                   const char* fileName) {
  // Each set is built (and its files read) before the next line is looked at,
  // so the first faulty line ends the process before later lines are read.
  std::vector<TestCommand> commands;
  kesh::settings::forEachCommandLine(fileName,
                                     [&](const std::string& line) { commands.emplace_back(programName, line); });
  return commands;
}
