#include <getopt.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "settings/fatal.h"
#include "settings/tester_setting.h"
#include "settings/word_split.h"

namespace {

using TestCommand = TesterSetting::TestCommand;
using TestSubCommand = TesterSetting::TestSubCommand;

constexpr int kPackOption = 2;
constexpr int32_t kGroupLoopLimit = 64;

// Global options (-h, -r, --session_reused, --command) are deliberately
// absent: inside a command set they are unknown options.
const char kShortOptions[] = ":t:i:o:s:a:c:b:f:l:g:";
const option kLongOptions[] = {
    {"loop", required_argument, nullptr, 'l'},   {"boost", required_argument, nullptr, 'b'},
    {"soft", required_argument, nullptr, 's'},   {"hard", required_argument, nullptr, 'a'},
    {"core", required_argument, nullptr, 'c'},   {"pattern", required_argument, nullptr, 'f'},
    {"input", required_argument, nullptr, 'i'},  {"golden", required_argument, nullptr, 'o'},
    {"group", required_argument, nullptr, 'g'},  {"test", required_argument, nullptr, 't'},
    {"pack", no_argument, nullptr, kPackOption}, {nullptr, 0, nullptr, 0},
};

void printLine(const std::string& text) { std::cout << text << std::endl; }

// Options that act on a pattern act on the last one given so far.
TestSubCommand& currentSubCommand(TestCommand& command) {
  if (command.subCommands.empty()) {
    kesh::settings::fail("No pattern binary found, set pattern binary first!");
  }
  return command.subCommands.back();
}

// -i and -o: the data file binds to the argument named after its base name;
// the first file given for a name wins.
void addData(std::map<std::string, std::vector<uint8_t>>& data, const char* label,
             const char* path) {
  std::cout << label << data.size() << ": " << path << std::endl;
  std::string name = TestCommand::readArgName(path);
  std::vector<uint8_t> bytes = TestCommand::readData(path);
  data.emplace(std::move(name), std::move(bytes));
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
  // A group holds at most 63 instances, so 64 itself is refused.
  if (count >= kGroupLoopLimit) {
    kesh::settings::fail("Invalid group loop count: " + std::to_string(count) +
                         ". Maximum is " + std::to_string(kGroupLoopLimit));
  }
  command.groupLoopCount = count;
}

[[noreturn]] void failMissingArgument(const char* programName) {
  // Scripts match this line as it has always been: on standard output, with
  // the option's code in decimal. exit() still flushes it.
  std::cout << programName << ": option requires an argument -- '" << optopt << "'\n";
  std::exit(1);
}

void applyOption(TestCommand& command, int option, const char* programName) {
  switch (option) {
    case 'f':
      printLine(std::string("Pattern binary: ") + optarg);
      command.subCommands.emplace_back(TestCommand::readData(optarg));
      break;
    case 'i':
      addData(currentSubCommand(command).inputs, "Pattern input ", optarg);
      break;
    case 'o':
      addData(currentSubCommand(command).goldens, "Pattern golden ", optarg);
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
    case kPackOption:
      command.pack = true;
      break;
    case ':':
      failMissingArgument(programName);
    default:
      kesh::settings::fail("Unknown option: " + std::to_string(option));
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
  optind = 0;  // a full restart: the scanner has been used on other vectors before
  for (;;) {
    const int option = getopt_long(argc, argv, kShortOptions, kLongOptions, nullptr);
    if (option == -1) return;
    applyOption(*this, option, argv[0]);
  }
}
