// Runs kesh_player as a child and passes its standard output and standard
// error through to this process's own, each stream's bytes unchanged and in
// order, while handing every chunk to a reader. One child at a time per
// object; not thread-safe.
#ifndef KESH_REPORT_CHILD_RUN_H_
#define KESH_REPORT_CHILD_RUN_H_

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace kesh::report {

/// What the reader is told.
struct ChildListener {
  std::function<void(const char* data, size_t size)> stdoutChunk;  ///< bytes of standard output, in order
  std::function<void(const char* data, size_t size)> stderrChunk;  ///< bytes of standard error, in order
  std::function<void()> beforeWrite;      ///< before output is written through to this process's own
  std::function<void(pid_t pid)> wokeUp;  ///< after each round of output read, while the child may run
};

/// How the child ended.
struct ChildEnd {
  int status = 1;   ///< exit status, 128 + n when killed by signal n, 127 when it could not start
  int signal = 0;   ///< the killing signal, 0 if it exited
  std::string why;  ///< why it could not start, empty otherwise
};

/// Runs `argv` (argv[0] a path) with environment `env`, writing its output through to
/// descriptors 1 and 2 and to `listener`; returns when it has ended and both streams closed.
ChildEnd runChild(const std::vector<std::string>& argv, const std::vector<std::string>& env,
                  const ChildListener& listener);

}  // namespace kesh::report

#endif  // KESH_REPORT_CHILD_RUN_H_
