// The catalogue of built-in cases holds every committed case file under the name it binds to, nothing more.
#include "testdata/default_cases.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "testing/read_file.h"

namespace kesh::testdata {
namespace {

using Data = std::map<std::string, std::vector<uint8_t>>;

/// One case as its files hold it: caseN_pattern, caseN_in_* and caseN_golden_*.
struct CaseFiles {
  explicit CaseFiles(unsigned caseNumber) {
    const std::string prefix = "case" + std::to_string(caseNumber) + "_";
    for (const auto& entry : std::filesystem::directory_iterator(KESH_DEFAULT_CASES_DIR)) {
      const std::string stem = entry.path().stem().string();
      const std::vector<uint8_t> bytes = kesh::testing::readFileBytes(entry.path().string());
      if (stem == prefix + "pattern") pattern = bytes;
      if (stem.rfind(prefix + "in_", 0) == 0) inputs[stem.substr(prefix.size() + 3)] = bytes;
      if (stem.rfind(prefix + "golden_", 0) == 0) goldens[stem.substr(prefix.size() + 7)] = bytes;
    }
  }
  std::vector<uint8_t> pattern;
  Data inputs, goldens;
};

std::vector<uint8_t> bytesOf(const NamedDatum& datum) { return {datum.bytes, datum.bytes + *datum.length}; }

Data dataOf(const std::vector<NamedDatum>& data) {
  Data result;
  for (const NamedDatum& datum : data) {
    EXPECT_TRUE(result.emplace(datum.argName, bytesOf(datum)).second) << "bound twice: " << datum.argName;
  }
  return result;
}

class DefaultCaseTest : public ::testing::TestWithParam<unsigned> {};

TEST_P(DefaultCaseTest, MatchesTheCommittedFiles) {
  const DefaultCase& entry = defaultCase(GetParam());
  const CaseFiles files(GetParam());
  ASSERT_FALSE(files.pattern.empty());
  EXPECT_EQ(bytesOf(entry.pattern), files.pattern);
  EXPECT_EQ(dataOf(entry.inputs), files.inputs);
  EXPECT_EQ(dataOf(entry.goldens), files.goldens);
}

INSTANTIATE_TEST_SUITE_P(Cases, DefaultCaseTest, ::testing::Range(0u, kDefaultCaseCount),
                         [](const auto& row) { return "Case" + std::to_string(row.param); });

}  // namespace
}  // namespace kesh::testdata
