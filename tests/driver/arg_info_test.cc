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

// A trailing separator adds no piece; entries without a piece keep their name.
TEST(ArgNames, PiecesAreReadLikeLinesEndedBySemicolons) {
  EXPECT_EQ(namesAfter(";a;;c", {"w", "x", "y", "z"}), (Names{"", "a", "", "c"}));
  EXPECT_EQ(namesAfter("a;b;", {"x", "y", "z"}), (Names{"a", "b", "z"}));
}

TEST(ArgNamesDeathTest, MoreNamesThanArgumentsAborts) {
  EXPECT_DEATH([]() noexcept { namesAfter("a;b;c;d", {"", "", ""}); }(), "");  // nothing catches it: the process ends
}

}  // namespace
