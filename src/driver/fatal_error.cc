#include "driver/fatal_error.h"

#include <cstdlib>
#include <iostream>

void fatalError(const std::string& message) {
  std::cerr << message << '\n' << std::flush;
  // Tearing down library objects after a failure could fail again and hide the
  // first message, so the process ends where it stands.
  std::exit(1);
}
