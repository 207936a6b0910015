// The embedded case data seen from outside, through the symbol tables of the
// assembled object and of the tool's executable.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "case_files.h"

namespace kesh::testdata {
namespace {

struct Symbol {
  char type = '?';
  uint64_t address = 0;
  uint64_t size = 0;
};

std::map<std::string, Symbol> readSymbols(const std::string& elfFile) {
  std::map<std::string, Symbol> symbols;
  const std::string command = "nm -P -S --defined-only -t d '" + elfFile + "' 2>/dev/null";
  std::FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return symbols;
  char line[1024];
  while (std::fgets(line, sizeof line, pipe) != nullptr) {
    std::istringstream fields(line);
    std::string name;
    Symbol symbol;
    if (fields >> name >> symbol.type >> symbol.address >> symbol.size) {
      symbol.type = static_cast<char>(std::toupper(static_cast<unsigned char>(symbol.type)));
      symbols[name] = symbol;
    }
  }
  pclose(pipe);
  return symbols;
}

uint64_t roundUp4(uint64_t size) { return (size + 3) / 4 * 4; }

bool allZero(const std::vector<uint8_t>& bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](uint8_t b) { return b == 0; });
}

/// Data-file stem -> content, for every committed datum.
std::map<std::string, std::vector<uint8_t>> committedData() {
  std::map<std::string, std::vector<uint8_t>> data;
  for (const auto& entry : std::filesystem::directory_iterator(KESH_DEFAULT_CASES_DIR)) {
    if (entry.path().extension() == ".bin") data[entry.path().stem().string()] = readFileBytes(entry.path());
  }
  return data;
}

std::vector<std::string> elfFilesToCheck() {
  std::vector<std::string> files = {KESH_EMBEDDED_OBJECT};
#ifdef KESH_PLAYER_BINARY
  files.push_back(KESH_PLAYER_BINARY);
#endif
  return files;
}

class EmbeddedLayoutTest : public testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    data_ = committedData();
    symbols_ = readSymbols(GetParam());
    ASSERT_EQ(data_.size(), 36u) << "the catalogue has 36 data";
  }
  std::map<std::string, std::vector<uint8_t>> data_;
  std::map<std::string, Symbol> symbols_;
};

TEST_P(EmbeddedLayoutTest, EveryDatumIsAnArrayOfItsFileSizeFollowedByItsLengthWord) {
  for (const auto& [name, bytes] : data_) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(symbols_.count(name) && symbols_.count(name + "_len"));
    const Symbol& array = symbols_.at(name);
    const Symbol& length = symbols_.at(name + "_len");
    EXPECT_EQ(array.size, bytes.size());
    EXPECT_EQ(length.size, 4u);
    EXPECT_EQ(length.type, 'R');
    EXPECT_EQ(length.address % 4, 0u);
    if (allZero(bytes)) {
      EXPECT_EQ(array.type, 'B') << "zero data must take no file space";
    } else {
      EXPECT_EQ(array.type, 'R');
      EXPECT_EQ(length.address, array.address + roundUp4(bytes.size()));
    }
  }
}

// Stored arrays and length words form one gap-free sequence, so the length
// word of a zero datum stands where its array would have stood.
TEST_P(EmbeddedLayoutTest, StoredDataFormOneSequenceOfAboutSevenMegabytes) {
  std::vector<Symbol> stored;
  uint64_t storedArrayBytes = 0;
  uint64_t zeroArrayBytes = 0;
  for (const auto& entry : data_) {
    const Symbol& array = symbols_.at(entry.first);
    (array.type == 'R' ? storedArrayBytes : zeroArrayBytes) += array.size;
    if (array.type == 'R') stored.push_back(array);
    stored.push_back(symbols_.at(entry.first + "_len"));
  }
  std::sort(stored.begin(), stored.end(), [](const Symbol& a, const Symbol& b) { return a.address < b.address; });
  for (size_t i = 1; i < stored.size(); ++i) {
    EXPECT_EQ(stored[i].address, roundUp4(stored[i - 1].address + stored[i - 1].size)) << "entry " << i;
  }
  EXPECT_NEAR(static_cast<double>(storedArrayBytes), 7.3e6, 0.1e6);
  EXPECT_NEAR(static_cast<double>(zeroArrayBytes), 2.1e6, 0.1e6);
}

INSTANTIATE_TEST_SUITE_P(BuiltFiles, EmbeddedLayoutTest, testing::ValuesIn(elfFilesToCheck()));

}  // namespace
}  // namespace kesh::testdata
