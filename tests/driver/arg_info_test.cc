#include "driver/arg_info.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sample_patterns.h"

namespace {

using Names = std::vector<std::string>;

Names namesAfter(const std::string& text, const Names& before) {
  std::vector<PatternArgInfo> args(before.size());
  for (size_t i = 0; i < before.size(); ++i) args[i].name = before[i];
  assignArgNames(text, args);
  Names names;
  for (const PatternArgInfo& arg : args) names.push_back(arg.name);
  return names;
}

TEST(ArgNames, PiecesAreReadLikeLinesEndedBySemicolons) {
  EXPECT_EQ(namesAfter("a;;c", {"x", "y", "z"}), (Names{"a", "", "c"}));
  EXPECT_EQ(namesAfter(";a", {"x", "y"}), (Names{"", "a"}));
  // A trailing separator adds no piece; entries without a piece keep their name.
  EXPECT_EQ(namesAfter("a;b;", {"x", "y", "z"}), (Names{"a", "b", "z"}));
  EXPECT_EQ(namesAfter("", {"x"}), (Names{"x"}));
}

TEST(ArgNamesDeathTest, MoreNamesThanArgumentsAborts) {
  // Nothing in the tool catches the out-of-range failure, so the process ends.
  auto uncaught = []() noexcept { namesAfter("a;b;c;d", {"", "", ""}); };
  EXPECT_DEATH(uncaught(), "");
}

TEST(ArgInfo, TheLibrarysTableFillsAReusedVectorInArgumentOrder) {
  _kesh_player* player = keshCreatePlayer("arg info test");
  ASSERT_NE(player, nullptr);
  const std::vector<uint8_t> binary = kesh::testing::patternBinary(
      {{"zeta", 7, 12}, {"alpha", 3, 40, true}, {"mid_arg_1", 0, 12}}, {kesh::testing::copyOp(2, 0, 12)});
  _pattern* pattern =
      keshCreatePattern(player, binary.data(), static_cast<uint32_t>(binary.size()), "tester_pattern");
  ASSERT_NE(pattern, nullptr);
  std::vector<PatternArgInfo> args(5);
  args[4].name = "stale";
  getArgInfo(pattern, args);
  Names seen;
  for (const PatternArgInfo& arg : args) {
    seen.push_back(arg.name + " " + std::to_string(arg.index) + " " + std::to_string(arg.size) +
                   (arg.noAlloc != 0 ? " no-alloc" : ""));
  }
  EXPECT_EQ(seen, (Names{"zeta 7 12", "alpha 3 40 no-alloc", "mid_arg_1 0 12"}));
  EXPECT_EQ(keshDestroyPattern(pattern), 0);
  EXPECT_EQ(keshDestroyPlayer(player), 0);
}

}  // namespace
