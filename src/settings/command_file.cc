#include <fstream>
#include <string>
#include <vector>

#include "settings/fatal.h"
#include "settings/file_kind.h"
#include "settings/tester_setting.h"

std::vector<TesterSetting::TestCommand> TesterSetting::readCommand(const char* programName,
                                                                   const char* fileName) {
  std::ifstream file;
  if (!kesh::settings::isDirectory(fileName)) file.open(fileName);
  if (!file.is_open()) kesh::settings::failCannotOpen(fileName);

  // Every line is a command set, empty ones and an unterminated last one
  // included; a carriage return stays in the line. Each set is built (and
  // its files read) before the next line is looked at.
  std::vector<TestCommand> commands;
  std::string line;
  while (std::getline(file, line)) commands.emplace_back(programName, line);
  return commands;
}
