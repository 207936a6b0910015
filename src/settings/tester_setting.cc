#include <getopt.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "common/fatal.h"
#include "settings/option_table.h"
#include "settings/parse_hooks.h"
#include "settings/usage_text.h"
#include "settings/tester_setting.h"

namespace {

using kesh::settings::kCommandOption;
using kesh::settings::kSessionReusedOption;

// Appends the option in a form the per-command parser reads back: long names
// written out in full (so abbreviations cannot turn ambiguous there), then
// the argument as its own word. --pack has no argument; it still gets the
// separating blank, which keeps the gathered text well formed.
void gather(std::string& text, const option* longOptions, int code, int longIndex, const char* argument) {
  text += " -";
  if (longIndex != -1) {
    text += '-';
    text += longOptions[longIndex].name;
  } else {
    text += static_cast<char>(code);
  }
  text += ' ';
  if (argument != nullptr) text += argument;
}

[[noreturn]] void failMissingArgument(const char* programName, const std::vector<option>& longOptions,
                                      int longIndex) {
  std::string text = programName;
  if (longIndex != -1) {
    // Names the entry at the scanner's next position, not the failed option;
    // scripts already match this form, so it stays.
    text += ": option requires an argument -- '";
    const int entries = static_cast<int>(longOptions.size()) - 1;
    if (optind >= 0 && optind < entries) text += longOptions[static_cast<std::size_t>(optind)].name;
  } else {
    text += ": option requires an argument - '";
    text += static_cast<char>(optopt);
  }
  kesh::fatal(kesh::FatalStream::kStdout, text + '\n');
}

// The word of an option the scanner did not accept, as the user wrote it.
std::string ignoredWord(char** argv) {
  const char* word = optind > 0 ? argv[optind - 1] : nullptr;
  if (word != nullptr && word[0] == '-' && word[1] == '-') return word;
  return std::string("-") + static_cast<char>(optopt);
}

// The scanner has moved every word that is no option to the end.
void reportOperands(int argc, char** argv, const kesh::settings::ParseHooks& hooks) {
  if (!hooks.optionIgnored) return;
  for (int index = optind; index < argc; ++index) hooks.optionIgnored(argv[index]);
}

}  // namespace

TesterSetting::TesterSetting(int argc, char** argv) {
  const kesh::settings::ScannerTables& tables = kesh::settings::globalScanner();
  const kesh::settings::ParseHooks& hooks = kesh::settings::parseHooks();
  std::vector<TestCommand> commands;
  std::string gathered;
  opterr = 0;
  optind = 0;  // scan from word 1 whatever used the scanner before
  for (;;) {
    int longIndex = -1;
    const int option = getopt_long(argc, argv, tables.shortOptions.c_str(), tables.longOptions.data(), &longIndex);
    if (option == -1) break;
    if (kesh::settings::isGathered(option)) {
      gather(gathered, tables.longOptions.data(), option, longIndex, optarg);
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
        std::vector<TestCommand> fromFile =
            hooks.readCommandFile ? hooks.readCommandFile(argv[0], optarg) : readCommand(argv[0], optarg);
        optind = resumeAt;
        for (TestCommand& command : fromFile) commands.push_back(std::move(command));
        break;
      }
      case ':':
        failMissingArgument(argv[0], tables.longOptions, longIndex);
      default:
        // Unknown options on the program's own command line are ignored.
        if (hooks.optionIgnored) hooks.optionIgnored(ignoredWord(argv).c_str());
        break;
    }
  }
  reportOperands(argc, argv, hooks);
  // The command line contributes at most one set, after those of the files.
  if (!gathered.empty()) {
    if (hooks.commandSetStarts) hooks.commandSetStarts({nullptr, 0, gathered});
    commands.emplace_back(argv[0], gathered);
  }
  groupCommands(commands);
}

std::vector<TesterSetting::TestCommand> TesterSetting::readCommand(const char* programName,
                                                                   const char* fileName) {
  // Each set is built (and its files read) before the next line is looked at,
  // so the first faulty line ends the process before later lines are read.
  std::vector<TestCommand> commands;
  kesh::settings::forEachCommandLine(fileName,
                                     [&](const std::string& line) { commands.emplace_back(programName, line); });
  return commands;
}

void TesterSetting::showHelp() {
  // Assembled first so that the text leaves in one piece and cannot be
  // interleaved with other output.
  std::string text;
  for (const char* line : kesh::settings::usageLines()) {
    text += line;
    text += '\n';
  }
  std::cout.write(text.data(), static_cast<std::streamsize>(text.size()));
  std::cout.flush();
}
