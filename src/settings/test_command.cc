#include <getopt.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "common/fatal.h"
#include "common/group_limits.h"
#include "settings/option_table.h"
#include "settings/parse_hooks.h"
#include "settings/tester_setting.h"
#include "settings/word_split.h"
#include "testdata/default_cases.h"

namespace {

using TestCommand = TesterSetting::TestCommand;
using TestSubCommand = TesterSetting::TestSubCommand;

std::vector<uint8_t> copyOf(const kesh::testdata::NamedDatum& datum) {
  return std::vector<uint8_t>(datum.bytes, datum.bytes + *datum.length);
}

// Same rule as data given by file: a name already present keeps its data.
void insertAll(const std::vector<kesh::testdata::NamedDatum>& data,
               std::map<std::string, std::vector<uint8_t>>& into) {
  for (const kesh::testdata::NamedDatum& datum : data) into.emplace(datum.argName, copyOf(datum));
}

void printLine(const std::string& text) { std::cout << text << std::endl; }

// Options that act on a pattern act on the last one given so far.
TestSubCommand& currentSubCommand(TestCommand& command) {
  if (command.subCommands.empty()) {
    kesh::fatalError("No pattern binary found, set pattern binary first!");
  }
  return command.subCommands.back();
}

// -i and -o: the data file binds to the argument named after its base name;
// the first file given for a name wins.
void addData(TestCommand& command, kesh::settings::DataRole role, const char* path) {
  TestSubCommand& subCommand = currentSubCommand(command);
  const bool input = role == kesh::settings::DataRole::kInput;
  std::map<std::string, std::vector<uint8_t>>& data = input ? subCommand.inputs : subCommand.goldens;
  std::cout << (input ? "Pattern input " : "Pattern golden ") << data.size() << ": " << path << std::endl;
  std::string name = TestCommand::readArgName(path);
  std::vector<uint8_t> bytes = kesh::settings::loadData(role, path);
  const bool kept = data.emplace(name, std::move(bytes)).second;
  const kesh::settings::ParseHooks& hooks = kesh::settings::parseHooks();
  if (hooks.dataBound) {
    hooks.dataBound({role, command.subCommands.size() - 1, name, path, kept});
  }
}

void setBoost(TestCommand& command, const char* text) {
  TestSubCommand& subCommand = currentSubCommand(command);
  const int32_t boost = std::atoi(text);
  printLine(std::string("Set boost value to ") + (boost == -1 ? "random value" : text));
  // The last -b of the line decides randomness for the whole set, while each
  // pattern keeps the first boost given for it.
  command.randomBoost = boost == -1;
  subCommand.nodeOptions.emplace(PATTERN_NODE_OPTION_BOOST, boost);
}

void setCore(TestCommand& command, const char* text) {
  TestSubCommand& subCommand = currentSubCommand(command);
  printLine(std::string("Set core affinity to ") + text);
  subCommand.nodeOptions.emplace(PATTERN_NODE_OPTION_CORE_AFFINITY, std::atoi(text));
}

void setGraphOption(TestCommand& command, pattern_graph_option_type key, const char* label,
                    const char* text) {
  printLine(std::string(label) + text);
  command.graphOptions[key] = std::atoi(text);  // the last value given wins
}

void setGroupLoopCount(TestCommand& command, const char* text) {
  const int32_t count = std::atoi(text);
  // The refused count itself is named as the maximum in the message.
  if (count >= kesh::kRefusedGroupLoopCount) {
    kesh::fatalError("Invalid group loop count: " + std::to_string(count) + ". Maximum is " +
                     std::to_string(kesh::kRefusedGroupLoopCount));
  }
  command.groupLoopCount = count;
}

[[noreturn]] void failMissingArgument(const char* programName) {
  // Scripts match this line as it has always been: on standard output, with
  // the option's code in decimal.
  kesh::fatal(kesh::FatalStream::kStdout,
              std::string(programName) + ": option requires an argument -- '" + std::to_string(optopt) + "'\n");
}

void applyOption(TestCommand& command, int option, const char* programName) {
  switch (option) {
    case 'f':
      printLine(std::string("Pattern binary: ") + optarg);
      command.subCommands.emplace_back(kesh::settings::loadData(kesh::settings::DataRole::kPattern, optarg));
      break;
    case 'i':
      addData(command, kesh::settings::DataRole::kInput, optarg);
      break;
    case 'o':
      addData(command, kesh::settings::DataRole::kGolden, optarg);
      break;
    case 'b':
      setBoost(command, optarg);
      break;
    case 'c':
      setCore(command, optarg);
      break;
    case 'a':
      setGraphOption(command, PATTERN_GRAPH_OPTION_HARD_LIMIT, "Set hard limit to ", optarg);
      break;
    case 's':
      setGraphOption(command, PATTERN_GRAPH_OPTION_SOFT_LIMIT, "Set soft limit to ", optarg);
      break;
    case 'l':
      setGroupLoopCount(command, optarg);
      break;
    case 'g':
      command.groupIndex = std::atoi(optarg);
      break;
    case 't':
      command.setupDefaultTest(std::atoi(optarg));
      break;
    case kesh::settings::kPackOption:
      command.pack = true;
      break;
    case ':':
      failMissingArgument(programName);
    default:
      kesh::fatalError("Unknown option: " + std::to_string(option));
  }
}

}  // namespace

TesterSetting::TestCommand::TestCommand(const char* programName, const std::string& line)
    : commandLine(line) {
  std::vector<std::string> words = kesh::settings::splitCommandWords(programName, line);
  std::vector<char*> argv = getArgs(words);  // points into `words`, which outlives the parse
  parseArg(static_cast<int>(argv.size()), argv.data());
}

std::vector<char*> TesterSetting::TestCommand::getArgs(std::vector<std::string>& args) const {
  std::vector<char*> argv;
  argv.reserve(args.size());
  for (std::string& word : args) argv.push_back(word.data());
  return argv;
}

void TesterSetting::TestCommand::parseArg(int argc, char** argv) {
  const kesh::settings::ScannerTables& tables = kesh::settings::perCommandScanner();
  const kesh::settings::ParseHooks& hooks = kesh::settings::parseHooks();
  optind = 0;  // a full restart: the scanner has been used on other vectors before
  for (;;) {
    const int option = getopt_long(argc, argv, tables.shortOptions.c_str(), tables.longOptions.data(), nullptr);
    if (option == -1) return;
    if (hooks.optionApplied && option != ':' && option != '?') hooks.optionApplied(option, optarg);
    applyOption(*this, option, argv[0]);
  }
}

std::string TesterSetting::TestCommand::readArgName(const char* path) {
  std::string name(path);
  std::string::size_type slash = name.rfind('/');
  if (slash != std::string::npos) name.erase(0, slash + 1);
  std::string::size_type dot = name.rfind('.');
  if (dot != std::string::npos) name.erase(dot);
  return name;
}

void TesterSetting::TestCommand::setupDefaultTest(int caseNumber) {
  std::cout << "Test default case: " << caseNumber << std::endl;
  // Taken as unsigned, so a negative number is refused as well.
  if (static_cast<unsigned>(caseNumber) >= kesh::testdata::kDefaultCaseCount) {
    kesh::fatalError("Invalid mode: " + std::to_string(caseNumber));
  }
  const kesh::testdata::DefaultCase& selected = kesh::testdata::defaultCase(static_cast<unsigned>(caseNumber));
  subCommands.emplace_back(copyOf(selected.pattern));
  TestSubCommand& added = subCommands.back();
  insertAll(selected.inputs, added.inputs);
  insertAll(selected.goldens, added.goldens);
}

TesterSetting::TestSubCommand::TestSubCommand(std::vector<uint8_t> binary)
    : patternBinary(std::move(binary)) {}
