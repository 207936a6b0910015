// Scratch files, output capture, and running code that may end the process
// in a child, for the settings tests. Single-threaded use only.
#ifndef KESH_TESTS_SETTINGS_SETTINGS_TEST_SUPPORT_H_
#define KESH_TESTS_SETTINGS_SETTINGS_TEST_SUPPORT_H_

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>

namespace kesh::settings::testing {

/// A scratch directory, removed with its content when destroyed.
struct TempDir {
  TempDir() { mkdtemp(path.data()); }
  ~TempDir() { std::filesystem::remove_all(path); }
  /// Writes `content` to `name` in the directory; returns its path.
  std::string write(const std::string& name, const std::string& content) const {
    std::ofstream(path + "/" + name, std::ios::binary) << content;
    return path + "/" + name;
  }
  std::string path = (std::filesystem::temp_directory_path() / "kesh_settings_XXXXXX").string();
};

/// The whole content of `path`.
inline std::string slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

/// Runs `body` with standard output captured; returns what it wrote.
inline std::string captureStdout(const std::function<void()>& body) {
  std::ostringstream out;
  std::streambuf* saved = std::cout.rdbuf(out.rdbuf());
  body();
  std::cout.rdbuf(saved);
  return out.str();
}

/// Exit status (or minus the signal) and both streams of a child.
struct ChildResult {
  int status;
  std::string out, err;
};

/// Runs `body` in a forked child whose fd 1 and 2 go to files; status 0 if it returns.
inline ChildResult runInChild(const std::function<void()>& body) {
  TempDir dir;
  std::fflush(nullptr);
  if (fork() == 0) {
    dup2(open((dir.path + "/out").c_str(), O_WRONLY | O_CREAT, 0600), 1);
    dup2(open((dir.path + "/err").c_str(), O_WRONLY | O_CREAT, 0600), 2);
    body();
    std::cout.flush();
    _exit(0);
  }
  int raw = 0;
  wait(&raw);
  return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -WTERMSIG(raw), slurp(dir.path + "/out"), slurp(dir.path + "/err")};
}

}  // namespace kesh::settings::testing

#endif  // KESH_TESTS_SETTINGS_SETTINGS_TEST_SUPPORT_H_
