#include "report/child_run.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

namespace kesh::report {

namespace {

// Writes all of `data` to `fd`; a reader that went away (or a full disk) is not
// the child's business: its output is still read and reported.
void writeAll(int fd, const char* data, size_t size) {
  while (size > 0) {
    const ssize_t n = write(fd, data, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return;
    data += n;
    size -= static_cast<size_t>(n);
  }
}

[[noreturn]] void execChild(const std::vector<std::string>& argv, const std::vector<std::string>& env, int out, int err,
                            int report) {
  // The tool gets the default dispositions whatever the report's (it ignores interrupts).
  signal(SIGPIPE, SIG_DFL);
  signal(SIGINT, SIG_DFL);
  signal(SIGQUIT, SIG_DFL);
  dup2(out, 1);
  dup2(err, 2);
  std::vector<char*> args;
  for (const std::string& word : argv) args.push_back(const_cast<char*>(word.c_str()));
  args.push_back(nullptr);
  std::vector<char*> envp;
  for (const std::string& entry : env) envp.push_back(const_cast<char*>(entry.c_str()));
  envp.push_back(nullptr);
  execve(args[0], args.data(), envp.data());
  const int why = errno;
  writeAll(report, reinterpret_cast<const char*>(&why), sizeof why);
  _exit(127);
}

}  // namespace

ChildEnd runChild(const std::vector<std::string>& argv, const std::vector<std::string>& env,
                  const ChildListener& listener) {
  ChildEnd end;
  int out[2], err[2], report[2];
  if (pipe(out) != 0 || pipe(err) != 0 || pipe2(report, O_CLOEXEC) != 0) {
    end.why = std::strerror(errno);
    end.status = 127;
    return end;
  }
  // As system() does: an interrupt from the terminal reaches the tool (same process
  // group), and the report outlives it to write the results up to that point.
  struct sigaction ignore {
  }, savedInt{}, savedQuit{};
  ignore.sa_handler = SIG_IGN;
  sigemptyset(&ignore.sa_mask);
  sigaction(SIGINT, &ignore, &savedInt);
  sigaction(SIGQUIT, &ignore, &savedQuit);
  const pid_t pid = fork();
  if (pid == 0) {
    close(out[0]);
    close(err[0]);
    close(report[0]);
    execChild(argv, env, out[1], err[1], report[1]);
  }
  close(out[1]);
  close(err[1]);
  close(report[1]);
  if (pid < 0) {
    end.why = std::strerror(errno);
    sigaction(SIGINT, &savedInt, nullptr);
    sigaction(SIGQUIT, &savedQuit, nullptr);
    end.status = 127;
    close(out[0]);
    close(err[0]);
    close(report[0]);
    return end;
  }
  int execError = 0;
  if (read(report[0], &execError, sizeof execError) == static_cast<ssize_t>(sizeof execError)) {
    end.why = std::strerror(execError);
  }
  close(report[0]);

  pollfd streams[2] = {{out[0], POLLIN, 0}, {err[0], POLLIN, 0}};
  const std::function<void(const char*, size_t)>* chunkFns[2] = {&listener.stdoutChunk, &listener.stderrChunk};
  std::vector<char> buffer(1 << 16);
  int open = 2;
  while (open > 0) {
    if (poll(streams, 2, -1) < 0) {
      if (errno == EINTR) continue;
      break;
    }
    for (int k = 0; k < 2; ++k) {
      if (streams[k].fd < 0 || streams[k].revents == 0) continue;
      const ssize_t n = read(streams[k].fd, buffer.data(), buffer.size());
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) {
        close(streams[k].fd);
        streams[k].fd = -1;
        --open;
        continue;
      }
      if (listener.beforeWrite) listener.beforeWrite();
      writeAll(k + 1, buffer.data(), static_cast<size_t>(n));
      if (*chunkFns[k]) (*chunkFns[k])(buffer.data(), static_cast<size_t>(n));
    }
    if (listener.wokeUp) listener.wokeUp(pid);
  }
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  sigaction(SIGINT, &savedInt, nullptr);
  sigaction(SIGQUIT, &savedQuit, nullptr);
  if (WIFSIGNALED(status)) {
    end.signal = WTERMSIG(status);
    end.status = 128 + end.signal;
  } else {
    end.status = WEXITSTATUS(status);
  }
  return end;
}

}  // namespace kesh::report
