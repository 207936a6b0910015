#include "settings/fatal.h"

#include <cstdlib>
#include <iostream>

namespace kesh::settings {

void fail(const std::string& line) {
  std::cerr << line << std::endl;
  // Nothing is torn down: the process is ending and the library's objects die with it.
  std::exit(1);
}

void failCannotOpen(const char* path) { fail(std::string("Error: cannot open file ") + path); }

}  // namespace kesh::settings
