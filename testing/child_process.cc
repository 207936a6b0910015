#include "testing/child_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "testing/read_file.h"
#include "testing/temp_dir.h"

namespace kesh::testing {
namespace {

// Points descriptor `target` at the file `name` of `streams`, or ends the child.
void redirect(int target, const TempDir& streams, const char* name, int flags) {
  const int fd = open((streams.path() + name).c_str(), flags, 0600);
  if (fd < 0 || dup2(fd, target) < 0) _exit(127);
  close(fd);
}

// The child's side: never returns.
[[noreturn]] void becomeChild(const ChildTask& task, const TempDir& streams) {
  redirect(0, streams, "/in", O_RDONLY);
  redirect(1, streams, "/out", O_WRONLY | O_CREAT | O_TRUNC);
  redirect(2, streams, "/err", O_WRONLY | O_CREAT | O_TRUNC);
  if (!task.dir.empty() && chdir(task.dir.c_str()) != 0) {
    std::fprintf(stderr, "cannot enter %s: %s\n", task.dir.c_str(), std::strerror(errno));
    _exit(127);
  }
  for (const auto& [name, value] : task.env) {
    static_cast<void>(value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str()));
  }
  if (task.argv.empty()) {
    const int status = task.body();
    std::cout.flush();
    std::fflush(nullptr);
    _exit(status);
  }
  std::vector<char*> words;
  for (const std::string& word : task.argv) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  execvp(words[0], words.data());
  std::fprintf(stderr, "cannot run %s: %s\n", words[0], std::strerror(errno));
  _exit(127);
}

}  // namespace

ChildResult runChild(const ChildTask& task) {
  const TempDir streams;
  streams.write("in", task.input);
  // Whatever the parent buffered must not be written twice.
  std::cout.flush();
  std::cerr.flush();
  std::fflush(nullptr);
  const pid_t pid = fork();
  if (pid == 0) becomeChild(task, streams);
  int raw = 0;
  pid_t waited = pid;
  while (pid > 0 && (waited = waitpid(pid, &raw, 0)) < 0 && errno == EINTR) continue;
  if (pid < 0 || waited != pid) {
    return {-1, 0, "", std::string(pid < 0 ? "fork: " : "waitpid: ") + std::strerror(errno) + "\n"};
  }
  return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, WIFSIGNALED(raw) ? WTERMSIG(raw) : 0,
          readFile(streams.path() + "/out"), readFile(streams.path() + "/err")};
}

}  // namespace kesh::testing
