// Runs a program, or code that ends the process, in a child with its standard streams captured;
// blocks until it ends. Safe from any thread (the child inherits only the calling thread).
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
  std::vector<std::string> argv;  ///< program (looked up on PATH) and its arguments; empty to run `body` instead
  std::function<int()> body;      ///< code run in the forked child when `argv` is empty; returns the exit status
  std::string dir;                ///< working directory of the child; "" keeps the parent's
  /// Variables set in the child, in order; a missing value unsets the variable.
  std::vector<std::pair<std::string, std::optional<std::string>>> env;
  std::string input;  ///< what the child reads on standard input
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
