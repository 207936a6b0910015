// The embedded case data seen through the symbol tables of its object and of the tool.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>

#include "testing/read_file.h"

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

// Every committed datum is a read-only array of its file's size followed by its
// 4-byte length word; an all-zero one takes no file space.
TEST(EmbeddedLayoutTest, EveryDatumIsItsFileFollowedByItsLengthWord) {
  for (const std::string elfFile : {KESH_EMBEDDED_OBJECT, KESH_PLAYER_BINARY}) {
    const std::map<std::string, Symbol> symbols = readSymbols(elfFile);
    for (const auto& entry : std::filesystem::directory_iterator(KESH_DEFAULT_CASES_DIR)) {
      const std::string name = entry.path().stem().string();
      SCOPED_TRACE(elfFile + ": " + name);
      const std::vector<uint8_t> bytes = kesh::testing::readFileBytes(entry.path().string());
      ASSERT_EQ(symbols.count(name) + symbols.count(name + "_len"), 2u);
      const Symbol &array = symbols.at(name), &length = symbols.at(name + "_len");
      const bool zero = std::all_of(bytes.begin(), bytes.end(), [](uint8_t b) { return b == 0; });
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
