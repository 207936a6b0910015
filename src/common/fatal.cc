#include "common/fatal.h"

#include <cstdlib>
#include <iostream>

namespace kesh {

namespace {

FatalHandler installedHandler = nullptr;

}  // namespace

void fatal(FatalStream stream, const std::string& text) {
  if (installedHandler != nullptr) {
    installedHandler(stream, text);
    std::abort();  // a handler that returns breaks its contract
  }
  std::ostream& out = stream == FatalStream::kStdout ? std::cout : std::cerr;
  out << text;
  out.flush();
  // Nothing is torn down: the process is ending and the library's objects die with it.
  std::exit(1);
}

void fatalError(const std::string& line) { fatal(FatalStream::kStderr, line + '\n'); }

void fatalCannotOpen(const char* path) { fatalError(std::string("Error: cannot open file ") + path); }

void setFatalHandler(FatalHandler handler) { installedHandler = handler; }

}  // namespace kesh
