#include "driver/pattern_tester.h"

int main(int argc, char** argv) {
  PatternTester tester;
  return tester.run(argc, argv);
}
