#include "testing/stdout_capture.h"

#include <iostream>
#include <sstream>

namespace kesh::testing {

std::string captureStdout(const std::function<void()>& body) {
  std::ostringstream captured;
  std::streambuf* const saved = std::cout.rdbuf(captured.rdbuf());
  body();
  std::cout.rdbuf(saved);
  return captured.str();
}

}  // namespace kesh::testing
