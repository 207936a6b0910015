#include "settings/option_table.h"

namespace kesh::settings {

namespace {

ScannerTables buildScanner(bool global) {
  ScannerTables tables;
  tables.shortOptions = ":";
  for (const OptionSpec& entry : optionTable()) {
    if (!global && entry.scope == OptionScope::kGlobal) continue;
    if (hasLetter(entry.code)) {
      tables.shortOptions += static_cast<char>(entry.code);
      if (entry.takesArgument) tables.shortOptions += ':';
    }
    tables.longOptions.push_back(
        option{entry.name, entry.takesArgument ? required_argument : no_argument, nullptr, entry.code});
  }
  tables.longOptions.push_back(option{nullptr, 0, nullptr, 0});
  return tables;
}

}  // namespace

const std::vector<OptionSpec>& optionTable() {
  static const std::vector<OptionSpec> kTable = {
      {"loop", 'l', true, OptionScope::kBoth},
      {"help", 'h', false, OptionScope::kGlobal},
      {"random", 'r', false, OptionScope::kGlobal},
      {"boost", 'b', true, OptionScope::kPerCommand},
      {"soft", 's', true, OptionScope::kPerCommand},
      {"hard", 'a', true, OptionScope::kPerCommand},
      {"core", 'c', true, OptionScope::kPerCommand},
      {"pattern", 'f', true, OptionScope::kPerCommand},
      {"input", 'i', true, OptionScope::kPerCommand},
      {"golden", 'o', true, OptionScope::kPerCommand},
      {"group", 'g', true, OptionScope::kPerCommand},
      {"test", 't', true, OptionScope::kPerCommand},
      {"session_reused", kSessionReusedOption, false, OptionScope::kGlobal},
      {"command", kCommandOption, true, OptionScope::kGlobal},
      {"pack", kPackOption, false, OptionScope::kPerCommand},
  };
  return kTable;
}

bool hasLetter(int code) { return code > kPackOption; }

bool isGathered(int code) {
  for (const OptionSpec& entry : optionTable()) {
    if (entry.code == code) return entry.scope == OptionScope::kPerCommand;
  }
  return false;
}

const ScannerTables& globalScanner() {
  static const ScannerTables kTables = buildScanner(true);
  return kTables;
}

const ScannerTables& perCommandScanner() {
  static const ScannerTables kTables = buildScanner(false);
  return kTables;
}

}  // namespace kesh::settings
