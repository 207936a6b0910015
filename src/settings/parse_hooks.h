// Hooks through which a program that embeds the settings parsers (a checker,
// a fuzzer) sees what they do and replaces their file reading. The tool
// installs none, so its behaviour is that of the parsers alone. Process-wide
// and single-threaded, like the parsers; every member is optional.
#ifndef KESH_SETTINGS_PARSE_HOOKS_H_
#define KESH_SETTINGS_PARSE_HOOKS_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "settings/tester_setting.h"

namespace kesh::settings {

/// What a data file is read as.
enum class DataRole { kPattern, kInput, kGolden };

/// Where the words of a command set come from.
struct CommandOrigin {
  const char* fileName;     ///< the command file; nullptr for the program's own command line
  int lineNumber;           ///< 1-based line of the command file; 0 for the command line
  const std::string& line;  ///< the words as the per-command parser receives them
};

/// One -i or -o file bound to a pattern's argument.
struct DataBinding {
  DataRole role;              ///< kInput or kGolden
  std::size_t subCommand;     ///< 0-based position of the pattern within its command set
  const std::string& argName; ///< the argument the file binds to
  const char* path;           ///< the file as given
  bool kept;                  ///< false when the name was already bound and this file is dropped
};

/// The hooks; an empty member is not called.
struct ParseHooks {
  /// Replaces reading a data file's bytes (the default ends the process if it cannot be opened).
  std::function<std::vector<uint8_t>(DataRole role, const char* path)> readData;
  /// Told before a command set's words are parsed.
  std::function<void(const CommandOrigin& origin)> commandSetStarts;
  /// Told of every per-command option before it is applied; `argument` is null when it takes none.
  std::function<void(int code, const char* argument)> optionApplied;
  /// Told of every -i/-o binding after it is made or dropped.
  std::function<void(const DataBinding& binding)> dataBound;
  /// Told of every word of the program's command line that the global parser ignores.
  std::function<void(const char* word)> optionIgnored;
  /// Replaces building the command sets of one --command file (see forEachCommandLine).
  std::function<std::vector<TesterSetting::TestCommand>(const char* programName, const char* fileName)>
      readCommandFile;
};

/// The process-wide hooks, empty until a program fills them.
ParseHooks& parseHooks();

/// Calls `build` with every line of the command file `fileName` in order (empty lines and an
/// unterminated last one included, a carriage return kept), telling commandSetStarts first.
/// Ends the process if the file cannot be opened; a `build` that returns lets the next line follow.
void forEachCommandLine(const char* fileName, const std::function<void(const std::string& line)>& build);

/// Leaves the option scanner idle, as a parse that ran to its end leaves it. A parse ended by a
/// fatal handler leaves it inside the words of its line, which are gone by then: call this after
/// catching such an error and before the global parser scans on (readCommandFile hooks must).
void resetScanner();

/// The data file's bytes through the readData hook, or TestCommand::readData without one.
std::vector<uint8_t> loadData(DataRole role, const char* path);

}  // namespace kesh::settings

#endif  // KESH_SETTINGS_PARSE_HOOKS_H_
