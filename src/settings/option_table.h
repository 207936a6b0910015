// The one table of the tool's options, from which the global and the
// per-command scanners' tables are derived. Immutable after first use;
// thread-safe to read.
#ifndef KESH_SETTINGS_OPTION_TABLE_H_
#define KESH_SETTINGS_OPTION_TABLE_H_

#include <getopt.h>

#include <string>
#include <vector>

namespace kesh::settings {

/// Codes of the options that have no one-letter form; the others use their letter.
enum LongOnlyOption : int { kSessionReusedOption = 0, kCommandOption = 1, kPackOption = 2 };

/// Which parser reads an option.
enum class OptionScope {
  kGlobal,      ///< the program's own command line only
  kBoth,        ///< both parsers, with a meaning of its own in each
  kPerCommand,  ///< a command set; on the program's command line it is gathered into one set
};

/// One option: its long name, its code (the letter when it has one) and whether it takes an argument.
struct OptionSpec {
  const char* name;
  int code;
  bool takesArgument;
  OptionScope scope;
};

/// Every option, in the order of the global scanner's long table (its messages name entries by position).
const std::vector<OptionSpec>& optionTable();

/// True when `code` is an option with a one-letter form.
bool hasLetter(int code);

/// A scanner's option string and long table for one parser.
struct ScannerTables {
  std::string shortOptions;          ///< starts with ':' so a missing argument is told apart
  std::vector<option> longOptions;   ///< ends with the all-zero entry
};

/// The tables of the program's own command line.
const ScannerTables& globalScanner();

/// The tables of a command set's line; global-only options are unknown there.
const ScannerTables& perCommandScanner();

/// True when the global parser passes `code` on to the command line's own command set.
bool isGathered(int code);

}  // namespace kesh::settings

#endif  // KESH_SETTINGS_OPTION_TABLE_H_
