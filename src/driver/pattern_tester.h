// The run driver: runs, command groups, players and verdicts. Holds no state;
// runs on the main thread only.
#ifndef KESH_DRIVER_PATTERN_TESTER_H_
#define KESH_DRIVER_PATTERN_TESTER_H_

#include "settings/tester_setting.h"

/// Turns the program's arguments into test passes and an exit status.
class PatternTester {
 public:
  /// Shows the help or runs the requested passes; 0 when all passed (or none
  /// was due), -1 as soon as one failed. Fatal errors end the process.
  int run(int argc, char** argv);
  /// One pass over every command group; true when every comparison passed.
  bool runAllCommand(TesterSetting& setting);
};

#endif  // KESH_DRIVER_PATTERN_TESTER_H_
