// The embedded case data seen from outside, through the symbol tables of the
// assembled object and of the tool's executable.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "case_files.h"

namespace kesh::testdata {
namespace {

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
    symbol.type = static_cast<char>(std::toupper(static_cast<unsigned char>(symbol.type)));
    symbols[name] = symbol;
  }
  if (pipe != nullptr) pclose(pipe);
  return symbols;
}

// Every committed datum is an array of its file's size, stored read-only and
// followed by its 4-byte length word, unless it is all zero: then it takes no
// file space.
TEST(EmbeddedLayoutTest, EveryDatumIsItsFileFollowedByItsLengthWord) {
  std::vector<std::string> elfFiles = {KESH_EMBEDDED_OBJECT};
#ifdef KESH_PLAYER_BINARY
  elfFiles.push_back(KESH_PLAYER_BINARY);
#endif
  for (const std::string& elfFile : elfFiles) {
    const std::map<std::string, Symbol> symbols = readSymbols(elfFile);
    uint64_t storedBytes = 0, zeroBytes = 0, data = 0;
    for (const auto& entry : std::filesystem::directory_iterator(KESH_DEFAULT_CASES_DIR)) {
      const std::string name = entry.path().stem().string();
      SCOPED_TRACE(elfFile + ": " + name);
      const std::vector<uint8_t> bytes = readFileBytes(entry.path());
      ASSERT_EQ(symbols.count(name), 1u);
      ASSERT_EQ(symbols.count(name + "_len"), 1u);
      const Symbol &array = symbols.at(name), &length = symbols.at(name + "_len");
      const bool zero = std::all_of(bytes.begin(), bytes.end(), [](uint8_t b) { return b == 0; });
      ++data;
      (zero ? zeroBytes : storedBytes) += array.size;
      EXPECT_EQ(array.size, bytes.size());
      EXPECT_EQ(length.size, 4u);
      EXPECT_EQ(length.type, 'R');
      EXPECT_EQ(length.address % 4, 0u);
      EXPECT_EQ(array.type, zero ? 'B' : 'R');
      if (!zero) {
        EXPECT_EQ(length.address, array.address + (bytes.size() + 3) / 4 * 4);
      }
    }
    EXPECT_EQ(data, 36u);
    EXPECT_NEAR(static_cast<double>(storedBytes), 7.3e6, 0.1e6);
    EXPECT_NEAR(static_cast<double>(zeroBytes), 2.1e6, 0.1e6);
  }
}

}  // namespace
}  // namespace kesh::testdata
