#include "player_test.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "e2e_config.h"
#include "sample_patterns.h"

namespace kesh::testing {
namespace {

std::string readWhole(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::string shellWord(const std::string& word) {
  std::string out = "'";
  for (char c : word) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return out + "'";
}

// `text` with the number after `then`, in each line that has `first` before it, replaced by "#".
std::string maskNumbers(std::string text, const std::string& first, const std::string& then) {
  for (size_t at = text.find(first); at != std::string::npos; at = text.find(first, at + 1)) {
    const size_t number = text.find(then, at) + then.size();
    if (number < then.size() || number > text.find('\n', at)) continue;
    text.replace(number, text.find_first_not_of("-0123456789", number) - number, "#");
  }
  return text;
}

}  // namespace

std::string linesWith(const std::string& text, const std::vector<std::string>& needles) {
  std::istringstream stream(text);
  std::string found;
  for (std::string line; std::getline(stream, line);) {
    const auto in = [&](const std::string& needle) { return line.find(needle) != std::string::npos; };
    if (std::any_of(needles.begin(), needles.end(), in)) found += line + "\n";
  }
  return found;
}

size_t countLines(const std::string& text, const std::string& needle) {
  const std::string lines = linesWith(text, {needle});
  return static_cast<size_t>(std::count(lines.begin(), lines.end(), '\n'));
}

void PlayerTest::SetUp() {
  dir_ = (std::filesystem::temp_directory_path() / "kesh_e2e_XXXXXX").string();
  ASSERT_NE(mkdtemp(dir_.data()), nullptr);
}

void PlayerTest::TearDown() {
  std::error_code ignored;
  std::filesystem::remove_all(dir_, ignored);
}

void PlayerTest::writeFile(const std::string& name, const std::vector<uint8_t>& bytes) {
  std::filesystem::create_directories(std::filesystem::path(dir_ + "/" + name).parent_path());
  std::ofstream file(dir_ + "/" + name, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  ASSERT_TRUE(file.good()) << name;
}

void PlayerTest::writeText(const std::string& name, const std::string& text) {
  writeFile(name, std::vector<uint8_t>(text.begin(), text.end()));
}

void PlayerTest::writeCopyCase(uint32_t size, const std::vector<size_t>& flips, const std::string& golden) {
  std::vector<uint8_t> input(size);
  for (uint32_t i = 0; i < size; ++i) input[i] = static_cast<uint8_t>(i * 7 + 3);
  writeFile("copy.bin", copyPattern(size));
  writeFile("in.bin", input);
  for (size_t at : flips) input.at(at) ^= 0x5a;
  writeFile(golden, input);
}

PlayerRun PlayerTest::run(const std::vector<std::string>& args, const std::string& failing) {
  // Through the shell, which starts the launcher (if any) by name; the test's
  // own library settings never leak into the tool.
  std::string line = "cd " + shellWord(dir_) + " || exit 126; unset KESH_EMU_FAIL; KESH_EMU_TRACE=trace.log";
  if (!failing.empty()) line += " KESH_EMU_FAIL=" + shellWord(failing);
  for (const char* word : kLauncher) line += word != nullptr ? " " + shellWord(word) : "";
  line += " " + shellWord(KESH_PLAYER_PATH);
  for (const std::string& arg : args) line += " " + shellWord(arg);
  line += " >stdout.log 2>stderr.log";
  std::filesystem::remove(dir_ + "/trace.log");
  const int status = std::system(line.c_str());
  return {status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : -1,
          maskNumbers(readWhole(dir_ + "/stdout.log"), " of sub-command ", ": "), readWhole(dir_ + "/stderr.log"),
          maskNumbers(readWhole(dir_ + "/trace.log"), "kind=", "value=")};
}

}  // namespace kesh::testing
