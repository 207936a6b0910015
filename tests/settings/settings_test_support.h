// Scratch files and output capture for the settings tests. Single-threaded use only.
#ifndef KESH_TESTS_SETTINGS_SETTINGS_TEST_SUPPORT_H_
#define KESH_TESTS_SETTINGS_SETTINGS_TEST_SUPPORT_H_

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>

#include "common/fatal.h"

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

/// Sends standard output to `sink` while alive, also when a fatal error unwinds through it.
class StdoutTo {
 public:
  explicit StdoutTo(std::ostringstream& sink) : saved_(std::cout.rdbuf(sink.rdbuf())) {}
  ~StdoutTo() { std::cout.rdbuf(saved_); }
  StdoutTo(const StdoutTo&) = delete;
  StdoutTo& operator=(const StdoutTo&) = delete;

 private:
  std::streambuf* saved_;
};

/// Runs `body` with standard output captured; returns what it wrote.
inline std::string captureStdout(const std::function<void()>& body) {
  std::ostringstream out;
  {
    StdoutTo redirect(out);
    body();
  }
  return out.str();
}

/// What throwIntercepted throws: a fatal error's message and its stream.
struct Intercepted {
  FatalStream stream;
  std::string text;
};

/// A fatal handler that throws Intercepted, so a test sees the error and goes on.
[[noreturn]] inline void throwIntercepted(FatalStream stream, const std::string& text) {
  throw Intercepted{stream, text};
}

}  // namespace kesh::settings::testing

#endif  // KESH_TESTS_SETTINGS_SETTINGS_TEST_SUPPORT_H_
