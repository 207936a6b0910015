// The tester's settings: global options, command sets and their patterns.
// Everything is held by value; copies are deep. Not thread-safe: settings
// are built and used on the one main thread.
#ifndef KESH_SETTINGS_TESTER_SETTING_H_
#define KESH_SETTINGS_TESTER_SETTING_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "kesh/kesh_pattern.h"

/// The settings built from the program's arguments and command files.
class TesterSetting {
 public:
  /// One pattern of a command set, with its data keyed by argument name.
  class TestSubCommand {
   public:
    /// Takes over `binary` as the pattern binary; the maps start empty.
    explicit TestSubCommand(std::vector<uint8_t> binary);

    /// Draws a boost value in 0..100 into key 0 of nodeOptions and prints it.
    void updateRandom();

    std::map<pattern_node_option_type, int32_t> nodeOptions;
    std::map<std::string, std::vector<uint8_t>> inputs;
    std::map<std::string, std::vector<uint8_t>> goldens;
    std::vector<uint8_t> patternBinary;
  };

  /// One command set: one line of per-command options.
  class TestCommand {
   public:
    /// Builds the command set from `line`; `programName` is word 0 of the
    /// argument vector given to the parser. Ends the process on bad input.
    TestCommand(const char* programName, const std::string& line);

    /// Draws fresh random boosts for every sub-command when randomBoost is set.
    void updateRandom();

    /// Pointers to the words' own buffers, one per word, no terminating null.
    std::vector<char*> getArgs(std::vector<std::string>& args) const;

    /// Parses a per-command argument vector into this command set.
    void parseArg(int argc, char** argv);

    /// The argument name a data file binds to: its base name less the last extension.
    static std::string readArgName(const char* path);

    /// The whole content of the file at `path`; ends the process if it cannot be opened.
    static std::vector<uint8_t> readData(const char* path);

    /// Appends a sub-command holding copies of built-in case `caseNumber`.
    void setupDefaultTest(int caseNumber);

    std::vector<TestSubCommand> subCommands;
    std::map<pattern_graph_option_type, int32_t> graphOptions;
    bool randomBoost = false;
    bool pack = false;
    int32_t groupLoopCount = 1;
    std::string commandLine;
    int32_t groupIndex = -1;
  };

  /// Parses the program's arguments, reads every file, groups the command sets.
  TesterSetting(int argc, char** argv);

  /// Writes the usage text to standard output in one piece.
  void showHelp();

  /// Builds one command set per line of the file `fileName`.
  std::vector<TestCommand> readCommand(const char* programName, const char* fileName);

  /// Moves `commands` into commandGroups: ungrouped sets alone, then groups by index.
  void groupCommands(std::vector<TestCommand>& commands);

  /// Shuffles the order of commandGroups with a freshly seeded engine.
  void shuffleGroups();

  bool help = false;
  bool sessionReused = false;
  bool random = false;
  int32_t loopCount = 1;
  std::vector<std::vector<TestCommand>> commandGroups;
};

#endif  // KESH_SETTINGS_TESTER_SETTING_H_
