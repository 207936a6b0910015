#include <getopt.h>

#include <cstdlib>
#include <iostream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "settings/tester_setting.h"

namespace {

constexpr int kSessionReusedOption = 0;
constexpr int kCommandOption = 1;
constexpr int kPackOption = 2;

const char kShortOptions[] = ":hrl:t:i:o:s:a:c:b:f:g:";
// The order matters: the long form of the missing-argument message names an
// entry by position.
const option kLongOptions[] = {
    {"loop", required_argument, nullptr, 'l'},
    {"help", no_argument, nullptr, 'h'},
    {"random", no_argument, nullptr, 'r'},
    {"boost", required_argument, nullptr, 'b'},
    {"soft", required_argument, nullptr, 's'},
    {"hard", required_argument, nullptr, 'a'},
    {"core", required_argument, nullptr, 'c'},
    {"pattern", required_argument, nullptr, 'f'},
    {"input", required_argument, nullptr, 'i'},
    {"golden", required_argument, nullptr, 'o'},
    {"group", required_argument, nullptr, 'g'},
    {"test", required_argument, nullptr, 't'},
    {"session_reused", no_argument, nullptr, kSessionReusedOption},
    {"command", required_argument, nullptr, kCommandOption},
    {"pack", no_argument, nullptr, kPackOption},
    {nullptr, 0, nullptr, 0},
};
constexpr int kLongOptionCount = static_cast<int>(std::size(kLongOptions)) - 1;

bool isGathered(int option) {
  switch (option) {
    case 'b': case 's': case 'a': case 'c': case 'f':
    case 'i': case 'o': case 'g': case 't': case kPackOption:
      return true;
    default:
      return false;
  }
}

// Appends the option in a form the per-command parser reads back: long names
// written out in full (so abbreviations cannot turn ambiguous there), then
// the argument as its own word. --pack has no argument; it still gets the
// separating blank, which keeps the gathered text well formed.
void gather(std::string& text, int option, int longIndex, const char* argument) {
  text += " -";
  if (longIndex != -1) {
    text += '-';
    text += kLongOptions[longIndex].name;
  } else {
    text += static_cast<char>(option);
  }
  text += ' ';
  if (argument != nullptr) text += argument;
}

[[noreturn]] void failMissingArgument(const char* programName, int longIndex) {
  std::cout << programName;
  if (longIndex != -1) {
    // Names the entry at the scanner's next position, not the failed option;
    // scripts already match this form, so it stays.
    std::cout << ": option requires an argument -- '";
    if (optind >= 0 && optind < kLongOptionCount) std::cout << kLongOptions[optind].name;
  } else {
    std::cout << ": option requires an argument - '" << static_cast<char>(optopt);
  }
  std::cout << std::endl;
  std::exit(1);
}

}  // namespace

TesterSetting::TesterSetting(int argc, char** argv) {
  std::vector<TestCommand> commands;
  std::string gathered;
  opterr = 0;
  optind = 0;  // scan from word 1 whatever used the scanner before
  for (;;) {
    int longIndex = -1;
    const int option = getopt_long(argc, argv, kShortOptions, kLongOptions, &longIndex);
    if (option == -1) break;
    if (isGathered(option)) {
      gather(gathered, option, longIndex, optarg);
      continue;
    }
    switch (option) {
      case 'l':
        loopCount = std::atoi(optarg);
        break;
      case 'h':
        help = true;
        break;
      case 'r':
        random = true;
        break;
      case kSessionReusedOption:
        sessionReused = true;
        break;
      case kCommandOption: {
        // Building the file's sets restarts the scanner on their own words;
        // the scan of the program's arguments resumes after the file name.
        const int resumeAt = optind;
        std::vector<TestCommand> fromFile = readCommand(argv[0], optarg);
        optind = resumeAt;
        for (TestCommand& command : fromFile) commands.push_back(std::move(command));
        break;
      }
      case ':':
        failMissingArgument(argv[0], longIndex);
      default:
        break;  // unknown options on the program's own command line are ignored
    }
  }
  // The command line contributes at most one set, after those of the files.
  if (!gathered.empty()) commands.emplace_back(argv[0], gathered);
  groupCommands(commands);
}
