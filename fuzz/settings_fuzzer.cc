// The input's first line is the tool's argument vector; every further line is
// a command-file line, parsed on its own and as each --command file named.
// Fatal errors are thrown and caught per line and data files are never opened,
// so only the parsing itself is exercised.
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "common/fatal.h"
#include "settings/option_table.h"
#include "settings/parse_hooks.h"
#include "settings/tester_setting.h"

namespace {

// Built-in cases are copied whole: more of them, or the 8 MB one, only load the allocator.
constexpr int kMaxBuiltInCases = 2;
constexpr int kLargestCase = 5;

struct Intercepted {};
[[noreturn]] void throwIntercepted(kesh::FatalStream, const std::string&) { throw Intercepted{}; }

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::string::size_type start = 0;
  for (;;) {
    const std::string::size_type end = text.find(separator, start);
    parts.emplace_back(text, start, end == std::string::npos ? std::string::npos : end - start);
    if (end == std::string::npos) return parts;
    start = end + 1;
  }
}

std::vector<std::string> commandLines;
int builtInCases = 0;
std::size_t commandFiles = 0;

void installHooks() {
  kesh::setFatalHandler(throwIntercepted);
  kesh::settings::ParseHooks& hooks = kesh::settings::parseHooks();
  hooks.readData = [](kesh::settings::DataRole role, const char* path) {
    return std::vector<uint8_t>(std::string(path).size() % 7, static_cast<uint8_t>(role));
  };
  hooks.optionApplied = [](int code, const char* argument) {
    if (code != 't') return;
    if (++builtInCases > kMaxBuiltInCases || std::atoi(argument) == kLargestCase) throw Intercepted{};
  };
  // Every --command file is the input's own command lines, each line on its own.
  hooks.readCommandFile = [](const char* programName, const char*) {
    ++commandFiles;
    std::vector<TesterSetting::TestCommand> commands;
    for (const std::string& line : commandLines) {
      try {
        commands.emplace_back(programName, line);
      } catch (const Intercepted&) {
        kesh::settings::resetScanner();
      }
    }
    return commands;
  };
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  installHooks();
  std::cout.rdbuf(nullptr);  // the parsers' echo lines are not under test
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  std::vector<std::string> lines = split(std::string(reinterpret_cast<const char*>(data), size), '\n');
  std::vector<std::string> words = split(lines.front(), ' ');
  commandLines.assign(lines.begin() + 1, lines.end());
  builtInCases = 0;
  commandFiles = 0;
  for (const std::string& line : commandLines) {
    try {
      TesterSetting::TestCommand command("kesh_player", line);
    } catch (const Intercepted&) {
      kesh::settings::resetScanner();
    }
  }

  words.insert(words.begin(), "kesh_player");
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
