#include "driver/out_of_memory.h"
#include "driver/output_guard.h"
#include "driver/pattern_tester.h"

int main(int argc, char** argv) {
  guardStandardOutput();
  failOnOutOfMemory();
  PatternTester tester;
  const int status = tester.run(argc, argv);
  // A run whose log did not reach its reader must not report its verdict.
  flushStandardOutput();
  return status;
}
