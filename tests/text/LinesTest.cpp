#include <gtest/gtest.h>

#include "text/Lines.h"

namespace zeb {
namespace {

using Parts = std::vector<std::string_view>;

TEST(Lines, EveryKindOfEndIsTaken) {
  std::string_view rest = "one\r\n\r\rtwo\n\nthree";
  Parts lines;
  while (!rest.empty()) lines.push_back(TakeLine(rest));
  EXPECT_EQ(lines, (Parts{"one", "", "", "two", "", "three"}));
  EXPECT_EQ(TakeLine(rest), "");
  rest = "x\r";
  EXPECT_EQ(TakeLine(rest), "x");
  EXPECT_TRUE(rest.empty());
}

TEST(Lines, PartsLieBetweenSeparators) {
  EXPECT_EQ(SplitAt("a||b|", "|"), (Parts{"a", "", "b", ""}));
  EXPECT_EQ(SplitAt("", "|"), (Parts{""}));
  EXPECT_EQ(SplitAt("a####b#####c", "####"), (Parts{"a", "b", "#c"}));
}

}  // namespace
}  // namespace zeb
