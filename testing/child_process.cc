#include "testing/child_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "testing/read_file.h"
#include "testing/temp_dir.h"

namespace kesh::testing {
namespace {

// Points descriptor `target` at `path`; false if the file cannot be opened.
bool redirect(int target, const std::string& path, int flags) {
  const int fd = open(path.c_str(), flags, 0600);
  if (fd < 0 || dup2(fd, target) < 0) return false;
  close(fd);
  return true;
}

// The child's side: never returns.
[[noreturn]] void becomeChild(const ChildTask& task, const TempDir& streams) {
  if (!redirect(0, streams.path() + "/in", O_RDONLY) ||
      !redirect(1, streams.path() + "/out", O_WRONLY | O_CREAT | O_TRUNC) ||
      !redirect(2, streams.path() + "/err", O_WRONLY | O_CREAT | O_TRUNC)) {
    _exit(127);
  }
  if (!task.dir.empty() && chdir(task.dir.c_str()) != 0) {
    std::fprintf(stderr, "cannot enter %s: %s\n", task.dir.c_str(), std::strerror(errno));
    _exit(127);
  }
  for (const auto& [name, value] : task.env) {
    if (value) {
      setenv(name.c_str(), value->c_str(), 1);
    } else {
      unsetenv(name.c_str());
    }
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
  ChildResult result;
  if (pid < 0) {
    result.err = std::string("fork: ") + std::strerror(errno) + "\n";
    return result;
  }
  int raw = 0;
  pid_t waited = 0;
  do {
    waited = waitpid(pid, &raw, 0);
  } while (waited < 0 && errno == EINTR);
  if (waited != pid) {
    result.err = std::string("waitpid: ") + std::strerror(errno) + "\n";
    return result;
  }
  if (WIFEXITED(raw)) result.status = WEXITSTATUS(raw);
  if (WIFSIGNALED(raw)) result.signal = WTERMSIG(raw);
  result.out = readFile(streams.path() + "/out");
  result.err = readFile(streams.path() + "/err");
  return result;
}

}  // namespace kesh::testing
