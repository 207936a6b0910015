// The built-in cases as the tool holds them: the catalogue has every committed case file under the name it
// binds to, nothing more; each is a read-only array of its file's size followed by its 4-byte length word,
// and an all-zero one takes no file space.
#include "testdata/default_cases.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <string>

#include "testing/read_file.h"

namespace kesh::testdata {
namespace {

using Files = std::map<std::string, std::string>;  // "pattern", "in_ARG" or "golden_ARG" -> content

std::string contentOf(const NamedDatum& datum) { return {reinterpret_cast<const char*>(datum.bytes), *datum.length}; }

class DefaultCaseTest : public ::testing::TestWithParam<unsigned> {};

TEST_P(DefaultCaseTest, MatchesTheCommittedFiles) {
  const DefaultCase& entry = defaultCase(GetParam());
  Files catalogued = {{"pattern", contentOf(entry.pattern)}};
  for (const NamedDatum& input : entry.inputs) catalogued.emplace("in_" + std::string(input.argName), contentOf(input));
  for (const NamedDatum& out : entry.goldens) catalogued.emplace("golden_" + std::string(out.argName), contentOf(out));
  Files committed;  // caseN_pattern.bin, caseN_in_ARG.bin and caseN_golden_ARG.bin
  const std::string prefix = "case" + std::to_string(GetParam()) + "_";
  for (const auto& file : std::filesystem::directory_iterator(KESH_DEFAULT_CASES_DIR)) {
    const std::string stem = file.path().stem().string();
    if (stem.rfind(prefix, 0) == 0) committed[stem.substr(prefix.size())] = kesh::testing::readFile(file.path());
  }
  EXPECT_EQ(catalogued, committed);
}

INSTANTIATE_TEST_SUITE_P(Cases, DefaultCaseTest, ::testing::Range(0u, kDefaultCaseCount),
                         [](const auto& row) { return "Case" + std::to_string(row.param); });

struct Symbol {
  char type = '?';
  unsigned long long address = 0, size = 0;
};

std::map<std::string, Symbol> readSymbols(const std::string& elfFile) {
  std::map<std::string, Symbol> symbols;
  std::FILE* pipe = popen(("nm -P -S --defined-only -t d '" + elfFile + "' 2>/dev/null").c_str(), "r");
  char line[1024], name[512];
  Symbol symbol;
  while (pipe != nullptr && std::fgets(line, sizeof line, pipe) != nullptr) {
    if (std::sscanf(line, "%511s %c %llu %llu", name, &symbol.type, &symbol.address, &symbol.size) != 4) continue;
    symbols[name] = symbol;
  }
  if (pipe != nullptr) pclose(pipe);
  return symbols;
}

TEST(EmbeddedLayoutTest, EveryDatumIsItsFileFollowedByItsLengthWord) {
  for (const std::string elfFile : {KESH_EMBEDDED_OBJECT, KESH_PLAYER_BINARY}) {
    const std::map<std::string, Symbol> symbols = readSymbols(elfFile);
    for (const auto& entry : std::filesystem::directory_iterator(KESH_DEFAULT_CASES_DIR)) {
      const std::string name = entry.path().stem().string();
      SCOPED_TRACE(elfFile + ": " + name);
      const std::string bytes = kesh::testing::readFile(entry.path());
      ASSERT_EQ(symbols.count(name) + symbols.count(name + "_len"), 2u);
      const Symbol &array = symbols.at(name), &length = symbols.at(name + "_len");
      const bool zero = bytes.find_first_not_of('\0') == std::string::npos;
      EXPECT_EQ(array.size, bytes.size());
      EXPECT_EQ(length.size, 4u);
      EXPECT_EQ(length.type, 'R');
      EXPECT_EQ(length.address % 4, 0u);
      EXPECT_EQ(array.type, zero ? 'B' : 'R');
      if (!zero) {
        EXPECT_EQ(length.address, array.address + (bytes.size() + 3) / 4 * 4);
      }
    }
  }
}

}  // namespace
}  // namespace kesh::testdata
