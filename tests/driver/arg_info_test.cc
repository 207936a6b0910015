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

// Pieces are read like lines ended by semicolons: a trailing separator adds no
// piece, and entries without a piece keep their name.
TEST(ArgNames, PiecesAreReadLikeLinesEndedBySemicolons) {
  EXPECT_EQ(namesAfter(";a;;c", {"w", "x", "y", "z"}), (Names{"", "a", "", "c"}));
  EXPECT_EQ(namesAfter("a;b;", {"x", "y", "z"}), (Names{"a", "b", "z"}));
}

TEST(ArgNamesDeathTest, MoreNamesThanArgumentsAborts) {
  // Nothing in the tool catches the out-of-range failure, so the process ends.
  EXPECT_DEATH([]() noexcept { namesAfter("a;b;c;d", {"", "", ""}); }(), "");
}

}  // namespace
