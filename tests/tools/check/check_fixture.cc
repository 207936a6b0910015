#include "check_fixture.h"

#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "check_config.h"
#include "e2e_config.h"
#include "testing/sample_patterns.h"

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

}  // namespace

void CheckTest::SetUp() {
  PlayerTest::SetUp();
  writeCopyCase(16);
  std::vector<uint8_t> prefix(8);  // what copy.bin's output starts with
  for (uint32_t i = 0; i < prefix.size(); ++i) prefix[i] = static_cast<uint8_t>(i * 7 + 3);
  writeFile("short/out.bin", prefix);
  writeFile("short/in.bin", std::vector<uint8_t>(8));
  writeFile("empty/out.bin", {});
  writeFile("long/out.bin", std::vector<uint8_t>(32));
  writeFile("long/in.bin", std::vector<uint8_t>(4 << 20));  // far past the buffer: the tool crashes
  writeFile("stray.bin", std::vector<uint8_t>(16));
  writeFile("lib.bin", std::vector<uint8_t>(16));
  writeFile("noalloc.bin", patternBinary({{"in", 0, 16}, {"out", 1, 16}, {"lib", 2, 16, true}}, {copyOp(1, 0, 16)}));
  writeText("garbage.bin", "not a pattern");
  mkdir((dir_ + "/folder.bin").c_str(), 0755);
}

CheckRun CheckTest::check(const std::vector<std::string>& args, const std::string& failing) {
  // Through the launcher the tool runs under, as a cross build needs it.
  std::string line = "cd " + shellWord(dir_) + " || exit 126; unset KESH_EMU_FAIL;";
  if (!failing.empty()) line += " KESH_EMU_FAIL=" + shellWord(failing);
  for (const char* word : kLauncher) line += word != nullptr ? " " + shellWord(word) : "";
  line += " " + shellWord(KESH_CHECK_PATH) + " --cores 4";
  for (const std::string& arg : args) line += " " + shellWord(arg);
  line += " >check.out 2>check.err";
  const int status = std::system(line.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readWhole(dir_ + "/check.out"),
          readWhole(dir_ + "/check.err")};
}

}  // namespace kesh::testing
