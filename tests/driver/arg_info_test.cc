#include "driver/arg_info.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "test_patterns.h"

namespace {

using kesh::testing::patternBinary;

std::vector<std::string> namesAfter(const std::string& text, std::vector<PatternArgInfo> args) {
  assignArgNames(text, args);
  std::vector<std::string> names;
  for (const PatternArgInfo& arg : args) names.push_back(arg.name);
  return names;
}

std::vector<PatternArgInfo> entries(std::vector<std::string> names) {
  std::vector<PatternArgInfo> args(names.size());
  for (size_t i = 0; i < names.size(); ++i) args[i].name = names[i];
  return args;
}

TEST(ArgNames, PiecesAreReadLikeLinesEndedBySemicolons) {
  using Names = std::vector<std::string>;
  EXPECT_EQ(namesAfter("a;b;c", entries({"", "", ""})), (Names{"a", "b", "c"}));
  EXPECT_EQ(namesAfter("a;;c", entries({"x", "y", "z"})), (Names{"a", "", "c"}));
  EXPECT_EQ(namesAfter(";a", entries({"x", "y"})), (Names{"", "a"}));
  // A trailing separator adds no piece; entries without a piece keep their name.
  EXPECT_EQ(namesAfter("a;b;", entries({"x", "y", "z"})), (Names{"a", "b", "z"}));
  EXPECT_EQ(namesAfter("", entries({"x"})), (Names{"x"}));
}

TEST(ArgNamesDeathTest, MoreNamesThanArgumentsAborts) {
  // Nothing in the tool catches the out-of-range failure, so the process ends.
  auto uncaught = []() noexcept { namesAfter("a;b;c;d", entries({"", "", ""})); };
  EXPECT_DEATH(uncaught(), "");
}

// Through the host library: a pattern's own argument table comes back whole.
class ArgInfoTest : public ::testing::Test {
 protected:
  void SetUp() override {
    player_ = keshCreatePlayer("arg info test");
    ASSERT_NE(player_, nullptr);
  }
  void TearDown() override {
    for (_pattern* pattern : patterns_) EXPECT_EQ(keshDestroyPattern(pattern), 0);
    EXPECT_EQ(keshDestroyPlayer(player_), 0);
  }
  _pattern* load(const std::vector<uint8_t>& binary) {
    _pattern* pattern =
        keshCreatePattern(player_, binary.data(), static_cast<uint32_t>(binary.size()), "tester_pattern");
    EXPECT_NE(pattern, nullptr);
    patterns_.push_back(pattern);
    return pattern;
  }

  _kesh_player* player_ = nullptr;
  std::vector<_pattern*> patterns_;
};

TEST_F(ArgInfoTest, TablesAreDistributedInArgumentOrder) {
  using kesh::testing::copyOp;
  _pattern* pattern = load(patternBinary(
      {{"zeta", 7, 12, false}, {"alpha", 3, 40, true}, {"mid_arg_1", 0, 12, false}}, {copyOp(2, 0, 12)}));
  std::vector<PatternArgInfo> args;
  getArgInfo(pattern, args);
  ASSERT_EQ(args.size(), 3u);
  EXPECT_EQ(args[0].name, "zeta");
  EXPECT_EQ(args[1].name, "alpha");
  EXPECT_EQ(args[2].name, "mid_arg_1");
  EXPECT_EQ(args[0].index, 7u);
  EXPECT_EQ(args[1].index, 3u);
  EXPECT_EQ(args[2].index, 0u);
  EXPECT_EQ(args[0].size, 12u);
  EXPECT_EQ(args[1].size, 40u);
  EXPECT_EQ(args[0].noAlloc, 0u);
  EXPECT_NE(args[1].noAlloc, 0u);
  EXPECT_EQ(args[2].noAlloc, 0u);
}

TEST_F(ArgInfoTest, ReusedVectorShrinksToTheArgumentCount) {
  std::vector<PatternArgInfo> args(5);
  args[4].name = "stale";
  getArgInfo(load(kesh::testing::copyPattern(8)), args);
  ASSERT_EQ(args.size(), 2u);
  EXPECT_EQ(args[0].name, "in");
  EXPECT_EQ(args[1].name, "out");
  EXPECT_EQ(args[1].index, 1u);
  EXPECT_EQ(args[1].size, 8u);
}

}  // namespace
