#include "player_test.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "test_patterns.h"

namespace kesh::testing {
namespace {

std::string readWhole(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// Splits "a=1, b=\"x, y\", c=T2" into values, keeping quoted commas.
std::vector<std::string> splitArgs(const std::string& text) {
  std::vector<std::string> values;
  std::string current;
  bool quoted = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (quoted && c == '\\' && i + 1 < text.size()) {
      current += c;
      current += text[++i];
      continue;
    }
    if (c == '"') quoted = !quoted;
    if (!quoted && c == ',' && i + 1 < text.size() && text[i + 1] == ' ') {
      values.push_back(current);
      current.clear();
      ++i;
      continue;
    }
    current += c;
  }
  if (!current.empty()) values.push_back(current);
  for (std::string& value : values) {
    const size_t equals = value.find('=');
    if (equals != std::string::npos && value[0] != '"') value = value.substr(equals + 1);
  }
  return values;
}

TraceCall parseLine(const std::string& line) {
  TraceCall call;
  const size_t open = line.find('(');
  const size_t close = line.rfind(") = ");
  if (open == std::string::npos || close == std::string::npos || close < open) {
    call.name = line;
    return call;
  }
  call.name = line.substr(0, open);
  call.args = splitArgs(line.substr(open + 1, close - open - 1));
  call.result = line.substr(close + 4);
  const size_t note = call.result.find(" (");
  if (note != std::string::npos) call.result.resize(note);
  return call;
}

}  // namespace

std::vector<TraceCall> parseTrace(const std::string& text) {
  std::vector<TraceCall> calls;
  std::istringstream stream(text);
  std::string line;
  while (std::getline(stream, line)) {
    if (!line.empty()) calls.push_back(parseLine(line));
  }
  return calls;
}

std::vector<std::string> callNames(const std::vector<TraceCall>& calls) {
  std::vector<std::string> names;
  for (const TraceCall& call : calls) names.push_back(call.name);
  return names;
}

size_t countCalls(const std::vector<TraceCall>& calls, const std::string& name) {
  return callsOf(calls, name).size();
}

std::vector<TraceCall> callsOf(const std::vector<TraceCall>& calls, const std::string& name) {
  std::vector<TraceCall> found;
  for (const TraceCall& call : calls) {
    if (call.name == name) found.push_back(call);
  }
  return found;
}

std::string maskTimes(const std::string& text) {
  static const std::regex timing(
      "(    (IP time|Driver time|Timestamp start|Timestamp end) of sub-command [0-9]+: )-?[0-9]+");
  return std::regex_replace(text, timing, "$1#");
}

std::vector<std::string> linesStartingWith(const std::string& text, const std::string& prefix) {
  std::vector<std::string> found;
  std::istringstream stream(text);
  std::string line;
  while (std::getline(stream, line)) {
    if (line.compare(0, prefix.size(), prefix) == 0) found.push_back(line);
  }
  return found;
}

void PlayerTest::SetUp() {
  const char* tmp = std::getenv("TMPDIR");
  std::string pattern = std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/kesh_e2e_XXXXXX";
  ASSERT_NE(mkdtemp(pattern.data()), nullptr);
  dir_ = pattern;
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

void PlayerTest::writeCopyCase(uint32_t size, const std::vector<size_t>& flips) {
  std::vector<uint8_t> input(size);
  for (uint32_t i = 0; i < size; ++i) input[i] = static_cast<uint8_t>(i * 7 + 3);
  std::vector<uint8_t> golden = input;
  for (size_t at : flips) golden.at(at) ^= 0x5a;
  writeFile("copy.bin", copyPattern(size));
  writeFile("in.bin", input);
  writeFile("out.bin", golden);
}

PlayerResult PlayerTest::run(const std::vector<std::string>& args, const EnvVars& env) {
  return runPlayer(dir_, args, env);
}

PlayerResult PlayerTest::runTraced(const std::vector<std::string>& args, std::vector<TraceCall>& calls,
                                   EnvVars env) {
  const std::string tracePath = dir_ + "/trace.log";
  std::filesystem::remove(tracePath);
  env.emplace_back("KESH_EMU_TRACE", tracePath);
  PlayerResult result = run(args, env);
  calls = parseTrace(readWhole(tracePath));
  return result;
}

}  // namespace kesh::testing
