// The input's first line is the tool's argument vector; every further line is a command-file line, parsed
// on its own and as each --command file named. Fatal errors are thrown and caught; no data file is opened.
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "common/fatal.h"
#include "settings/parse_hooks.h"
#include "settings/tester_setting.h"
#include "settings/word_split.h"

struct Intercepted {};
static std::vector<std::string> commandLines;
static std::size_t builtInCases = 0, commandFiles = 0;

static std::vector<TesterSetting::TestCommand> parseLines(const char* programName) {
  std::vector<TesterSetting::TestCommand> commands;
  for (const std::string& line : commandLines) {
    try {
      commands.emplace_back(programName, line);
    } catch (const Intercepted&) {
      kesh::settings::resetScanner();
    }
  }
  return commands;
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  std::cout.rdbuf(nullptr);  // the parsers' echo lines are not under test
  kesh::setFatalHandler([](kesh::FatalStream, const std::string&) { throw Intercepted{}; });
  kesh::settings::ParseHooks& hooks = kesh::settings::parseHooks();
  hooks.readData = [](auto, const char* path) { return std::vector<uint8_t>(std::string(path).size() % 7); };
  // Built-in cases are copied whole: more than two, or the 8 MB case 5, only load the allocator.
  hooks.optionApplied = [](int code, const char* argument) {
    if (code == 't' && (++builtInCases > 2 || std::atoi(argument) == 5)) throw Intercepted{};
  };
  hooks.readCommandFile = [](const char* programName, const char*) {
    ++commandFiles;
    return parseLines(programName);
  };
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  std::istringstream text(std::string(reinterpret_cast<const char*>(data), size));
  std::string first;
  std::getline(text, first);
  commandLines.clear();
  for (std::string line; std::getline(text, line);) commandLines.push_back(line);
  builtInCases = commandFiles = 0;
  parseLines("kesh_player");
  std::vector<std::string> words = kesh::settings::splitCommandWords("kesh_player", first);
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  try {
    TesterSetting setting(static_cast<int>(words.size()), argv.data());
    std::size_t sets = 0;
    for (const auto& group : setting.commandGroups) sets += group.size();
    // At most one set per line of every command file, plus the command line's own.
    if (sets > commandLines.size() * commandFiles + 1) __builtin_trap();
  } catch (const Intercepted&) {
  }
  return 0;
}
