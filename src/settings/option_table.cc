#include "settings/option_table.h"

namespace kesh::settings {

namespace {

ScannerTables buildScanner(bool global) {
  ScannerTables tables;
  tables.shortOptions = ":";
  for (const OptionSpec& spec : optionTable()) {
    if (!global && spec.scope == OptionScope::kGlobal) continue;
    if (hasLetter(spec.code)) {
      tables.shortOptions += static_cast<char>(spec.code);
      if (spec.takesArgument) tables.shortOptions += ':';
    }
    tables.longOptions.push_back(
        option{spec.name, spec.takesArgument ? required_argument : no_argument, nullptr, spec.code});
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
  for (const OptionSpec& spec : optionTable()) {
    if (spec.code == code) return spec.scope == OptionScope::kPerCommand;
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
