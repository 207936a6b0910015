#include "driver/arg_info.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Names = std::vector<std::string>;

Names namesAfter(const std::string& text, Names before) {
  std::vector<PatternArgInfo> args(before.size());
  for (size_t i = 0; i < before.size(); ++i) args[i].name = before[i];
  assignArgNames(text, args);
  for (size_t i = 0; i < before.size(); ++i) before[i] = args[i].name;
  return before;
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

}  // namespace
