// Capture of what code writes to std::cout, through the process-wide stream buffer: one thread at a time.
#ifndef KESH_TESTING_STDOUT_CAPTURE_H_
#define KESH_TESTING_STDOUT_CAPTURE_H_

#include <functional>
#include <iostream>
#include <sstream>
#include <string>

namespace kesh::testing {

/// What `body` wrote to std::cout; the stream's format flags stay as `body` left them.
inline std::string captureStdout(const std::function<void()>& body) {
  std::ostringstream captured;
  std::streambuf* const saved = std::cout.rdbuf(captured.rdbuf());
  body();
  std::cout.rdbuf(saved);
  return captured.str();
}

}  // namespace kesh::testing

#endif  // KESH_TESTING_STDOUT_CAPTURE_H_
