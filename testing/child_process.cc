#include "testing/child_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "testing/read_file.h"
#include "testing/temp_dir.h"

namespace kesh::testing {
namespace {

// The child's side: never returns; a set-up that fails ends it with status 127.
[[noreturn]] void becomeChild(const ChildTask& task, const TempDir& streams) {
  const int flags[] = {O_RDONLY, O_WRONLY | O_CREAT | O_TRUNC, O_WRONLY | O_CREAT | O_TRUNC};
  for (int target : {0, 1, 2}) {
    const int fd = open((streams.path() + "/" + "ioe"[target]).c_str(), flags[target], 0600);
    if (fd < 0 || dup2(fd, target) < 0) _exit(127);
    close(fd);
  }
  if (!task.dir.empty() && chdir(task.dir.c_str()) != 0) _exit(127);
  for (const auto& [name, value] : task.env) {
    static_cast<void>(value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str()));
  }
  if (task.argv.empty()) {
    const int status = task.body();
    std::fflush(nullptr);
    _exit(status);
  }
  std::vector<char*> words;
  for (const std::string& word : task.argv) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  execvp(words[0], words.data());
  _exit(127);
}

}  // namespace

ChildResult runChild(const ChildTask& task) {
  const TempDir streams;
  streams.write("i", task.input);
  // Whatever the parent buffered must not be written twice (std::cout writes through stdio).
  std::fflush(nullptr);
  const pid_t pid = fork();
  if (pid == 0) becomeChild(task, streams);
  int raw = -1;  // neither exited nor signalled when the fork or the wait fails
  while (pid > 0 && waitpid(pid, &raw, 0) < 0 && errno == EINTR) continue;
  return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, WIFSIGNALED(raw) ? WTERMSIG(raw) : 0,
          readFile(streams.path() + "/o"), readFile(streams.path() + "/e")};
}

}  // namespace kesh::testing
