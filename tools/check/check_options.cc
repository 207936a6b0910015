#include "check/check_options.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

namespace kesh::check {

namespace {

// The whole word must be a number in 1..256, like the host library reads it.
int coresFrom(const char* text) {
  if (text == nullptr || *text == '\0') return 0;
  char* end = nullptr;
  const long value = std::strtol(text, &end, 10);
  if (*end != '\0' || value < 1 || value > 256) return 0;
  return static_cast<int>(value);
}

}  // namespace

int hostLibraryCores() {
  const int fromEnvironment = coresFrom(std::getenv("KESH_EMU_CORES"));
  if (fromEnvironment != 0) return fromEnvironment;
  const unsigned hardware = std::thread::hardware_concurrency();
  return hardware == 0 ? 1 : static_cast<int>(hardware);
}

CheckOptions parseCheckOptions(int argc, const char* const* argv) {
  CheckOptions options;
  int i = 1;
  for (; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--") {
      ++i;
      break;
    }
    if (word == "--werror") {
      options.werror = true;
    } else if (word == "--json") {
      options.json = true;
    } else if (word == "--help") {
      options.help = true;
    } else if (word == "--cores" || word.rfind("--cores=", 0) == 0) {
      const char* value = word == "--cores" ? (i + 1 < argc ? argv[++i] : nullptr) : argv[i] + 8;
      options.cores = coresFrom(value);
      if (options.cores == 0) options.error = "--cores needs a number from 1 to 256";
    } else {
      break;  // kesh_player's arguments start here
    }
  }
  for (; i < argc; ++i) options.playerArgs.emplace_back(argv[i]);
  if (options.cores == 0 && options.error.empty()) options.cores = hostLibraryCores();
  return options;
}

std::string checkUsage() {
  return "Usage: kesh_check [--werror] [--json] [--cores N] [--] KESH_PLAYER_ARGUMENTS...\n"
         "Checks what kesh_player would do with the same arguments, without running anything.\n"
         "  --werror     warnings fail the check too (exit status 1)\n"
         "  --json       print the findings as one JSON document\n"
         "  --cores N    cores of the device (default: as the host library counts them)\n"
         "  --help       print this text\n"
         "Exit status: 0 clean, 1 errors (or warnings with --werror), 2 could not check.\n";
}

}  // namespace kesh::check
