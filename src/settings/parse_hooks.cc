#include "settings/parse_hooks.h"

#include <getopt.h>

#include <fstream>

#include "common/fatal.h"
#include "settings/file_kind.h"

namespace kesh::settings {

ParseHooks& parseHooks() {
  static ParseHooks hooks;
  return hooks;
}

void forEachCommandLine(const char* fileName, const std::function<void(const std::string& line)>& build) {
  std::ifstream file;
  if (!isDirectory(fileName)) file.open(fileName);
  if (!file.is_open()) fatalCannotOpen(fileName);
  const ParseHooks& hooks = parseHooks();
  std::string line;
  for (int lineNumber = 1; std::getline(file, line); ++lineNumber) {
    if (hooks.commandSetStarts) hooks.commandSetStarts(CommandOrigin{fileName, lineNumber, line});
    build(line);
  }
}

void resetScanner() {
  char name[] = "scanner";
  char* words[] = {name, nullptr};
  const option none[] = {{nullptr, 0, nullptr, 0}};
  optind = 0;  // a restart forgets the position inside the old words
  getopt_long(1, words, ":", none, nullptr);
}

std::vector<uint8_t> loadData(DataRole role, const char* path) {
  const ParseHooks& hooks = parseHooks();
  return hooks.readData ? hooks.readData(role, path) : TesterSetting::TestCommand::readData(path);
}

}  // namespace kesh::settings
