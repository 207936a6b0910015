// Argument parsing with captured output, fatal errors turned into values, and
// the settings tests' common fixture. Single-threaded use only.
#ifndef KESH_TESTS_SETTINGS_SETTINGS_TEST_SUPPORT_H_
#define KESH_TESTS_SETTINGS_SETTINGS_TEST_SUPPORT_H_

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "common/fatal.h"
#include "settings/tester_setting.h"
#include "testing/read_file.h"
#include "testing/stdout_capture.h"
#include "testing/temp_dir.h"

namespace kesh::settings::testing {

using kesh::testing::captureStdout;
using kesh::testing::readFile;

/// The settings the global parser builds from "prog" and `args`; what it
/// prints goes to `echo`, or to standard output when null.
inline TesterSetting parseArguments(std::vector<std::string> args, std::string* echo) {
  args.insert(args.begin(), "prog");
  std::vector<char*> argv;
  for (std::string& arg : args) argv.push_back(arg.data());
  std::optional<TesterSetting> setting;
  const auto parse = [&] { setting.emplace(static_cast<int>(argv.size()), argv.data()); };
  if (echo == nullptr) parse();
  if (echo != nullptr) *echo = captureStdout(parse);
  return std::move(*setting);
}

/// What a body printed, and the fatal error it ended with (text "" when none).
struct Ending {
  std::string echo;
  FatalStream stream = FatalStream::kStdout;
  std::string text;
};

/// Runs `body` with standard output captured and fatal errors thrown back to here.
inline Ending runToFatal(const std::function<void()>& body) {
  Ending ending;
  setFatalHandler([](FatalStream stream, const std::string& text) { throw Ending{"", stream, text}; });
  ending.echo = captureStdout([&] {
    try {
      body();
    } catch (const Ending& fatal) {
      ending.stream = fatal.stream;
      ending.text = fatal.text;
    }
  });
  setFatalHandler(nullptr);
  return ending;
}

/// A scratch folder holding a pattern file `p`, and the echo of the last parse.
class SettingsTest : public ::testing::Test {
 protected:
  /// The settings of the program's arguments `args`; their echo goes to `echo`.
  TesterSetting parse(const std::vector<std::string>& args) { return parseArguments(args, &echo); }

  kesh::testing::TempDir dir;
  std::string p = dir.write("p.bin", std::string("P\0\n", 3)), echo;
};

}  // namespace kesh::settings::testing

#endif  // KESH_TESTS_SETTINGS_SETTINGS_TEST_SUPPORT_H_
