// Runs a program, or code that ends the process or reads settings once per process, in a child
// with its standard streams captured; blocks until it ends. Safe from any thread (the child
// inherits only the calling thread).
#ifndef KESH_TESTING_CHILD_PROCESS_H_
#define KESH_TESTING_CHILD_PROCESS_H_

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kesh::testing {

/// What to run in the child, and how.
struct ChildTask {
  /// Program (looked up on PATH) and its arguments; empty to run `body` instead.
  std::vector<std::string> argv;
  /// Code run in the forked child when `argv` is empty; what it returns is the exit status.
  std::function<int()> body;
  /// Working directory of the child; "" keeps the parent's.
  std::string dir;
  /// Variables set in the child, in order; a missing value unsets the variable.
  std::vector<std::pair<std::string, std::optional<std::string>>> env;
  /// What the child reads on standard input.
  std::string input;
};

/// How a child ended and what it wrote.
struct ChildResult {
  int status = -1;  ///< exit status; -1 when a signal ended the child
  int signal = 0;   ///< the signal that ended the child, 0 when it exited
  std::string out;  ///< standard output
  std::string err;  ///< standard error
};

/// Runs `task` in a new process and waits for it; a program that cannot start ends with status 127.
ChildResult runChild(const ChildTask& task);

}  // namespace kesh::testing

#endif  // KESH_TESTING_CHILD_PROCESS_H_
