// The catalogue of built-in cases against the committed case files: every
// case's pattern and data under the names they bind to, nothing more.
#include "testdata/default_cases.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "case_files.h"

namespace kesh::testdata {
namespace {

std::vector<uint8_t> bytesOf(const NamedDatum& datum) {
  return std::vector<uint8_t>(datum.bytes, datum.bytes + *datum.length);
}

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
  const CaseFiles files(static_cast<int>(GetParam()));
  ASSERT_FALSE(files.pattern.empty());
  EXPECT_EQ(bytesOf(entry.pattern), files.pattern);
  EXPECT_EQ(dataOf(entry.inputs), files.inputs);
  EXPECT_EQ(dataOf(entry.goldens), files.goldens);
}

INSTANTIATE_TEST_SUITE_P(Cases, DefaultCaseTest, ::testing::Range(0u, kDefaultCaseCount),
                         [](const ::testing::TestParamInfo<unsigned>& param) {
                           return "Case" + std::to_string(param.param);
                         });

}  // namespace
}  // namespace kesh::testdata
