// What the checker keeps of one command set after the tool's parser built it:
// where it came from, its patterns and their data bindings (paths, not bytes),
// and the settings that decide what the library is given. Plain values.
#ifndef KESH_CHECK_SET_RECORD_H_
#define KESH_CHECK_SET_RECORD_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "check/diagnostics.h"

namespace kesh::check {

/// Input or golden.
enum class DataRole { kInput, kGolden };

/// One -i or -o as the parser handled it.
struct DataBinding {
  DataRole role = DataRole::kInput;  ///< -i or -o
  std::string name;                  ///< the argument name the file binds to
  std::string path;                  ///< as written
  bool kept = true;                  ///< false: an earlier file already had the name
};

/// Data carried by a built-in case: its size by argument name.
using BuiltInData = std::map<std::string, uint64_t>;

/// One pattern of a command set.
struct PatternRecord {
  std::string path;           ///< the pattern file, empty for a built-in case
  int builtInCase = -1;       ///< -t's case number, -1 for a file
  std::vector<DataBinding> bindings;  ///< -i and -o given for it, in order
  BuiltInData builtInInputs;  ///< data of the built-in case
  BuiltInData builtInGoldens; ///< goldens of the built-in case
  std::map<int, int32_t> nodeOptions;  ///< what the library will be given (0 boost, 1 core)
};

/// One command set.
struct SetRecord {
  Location where;                       ///< command file and line, or the command line
  std::string line;                     ///< the set's text as the parser read it
  std::vector<PatternRecord> patterns;  ///< in order
  std::map<int, int32_t> graphOptions;  ///< 0 hard limit, 1 soft limit
  bool randomBoost = false;             ///< boosts are drawn before each execution
  int32_t groupLoopCount = 1;           ///< executions per group run
  int32_t groupIndex = -1;              ///< -1: a group of its own
  bool built = false;                   ///< the parser finished it
  std::string stop;                     ///< the tool's message when it would stop here
  bool stopToStdout = false;            ///< that message goes to standard output
  std::string stopWord;                 ///< the word the parser stopped at, when known
};

}  // namespace kesh::check

#endif  // KESH_CHECK_SET_RECORD_H_
