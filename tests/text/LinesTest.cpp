#include <gtest/gtest.h>

#include "text/Lines.h"

namespace zeb {
namespace {

using Pieces = std::vector<std::string_view>;

TEST(Lines, EndInAnyOfThreeWays) {
  const struct {
    std::string_view text;
    Pieces lines;
  } cases[] = {{"", {""}},
               {"a", {"a"}},
               {"a\nb\r\nc\rd", {"a", "b", "c", "d"}},
               {"\r\n", {"", ""}},
               {"\n\r\n\r", {"", "", "", ""}},
               {"a\r\n\r\nb\n", {"a", "", "b", ""}}};
  for (const auto& [text, lines] : cases) {
    Pieces found;
    ForEachLine(text, [&](std::string_view line) { found.push_back(line); });
    EXPECT_EQ(found, lines) << text;
  }
}

TEST(Lines, AreSplitAndCut) {
  EXPECT_EQ(SplitAt("", ","), Pieces{""});
  EXPECT_EQ(SplitAt(",a b,", ","), (Pieces{"", "a b", ""}));
  EXPECT_EQ(SplitAt("a,b", ";"), Pieces{"a,b"});
  const auto cut = [](std::string_view text) {
    const FirstWord first = CutFirstWord(text);
    return Pieces{first.word, first.rest};
  };
  EXPECT_EQ(cut("UPDATE"), (Pieces{"UPDATE", ""}));
  EXPECT_EQ(cut("SET  LOG x"), (Pieces{"SET", " LOG x"}));
  EXPECT_EQ(cut(" a"), (Pieces{"", "a"}));
}

TEST(Lines, EveryKindOfEndIsTaken) {
  std::string_view rest = "one\r\n\r\rtwo\n\nthree";
  Pieces lines;
  while (!rest.empty()) lines.push_back(TakeLine(rest));
  EXPECT_EQ(lines, (Pieces{"one", "", "", "two", "", "three"}));
  EXPECT_EQ(TakeLine(rest), "");
  rest = "x\r";
  EXPECT_EQ(TakeLine(rest), "x");
  EXPECT_TRUE(rest.empty());
}

TEST(Lines, PiecesLieBetweenSeparators) {
  EXPECT_EQ(SplitAt("a||b|", "|"), (Pieces{"a", "", "b", ""}));
  EXPECT_EQ(SplitAt("", "|"), (Pieces{""}));
  EXPECT_EQ(SplitAt("a####b#####c", "####"), (Pieces{"a", "b", "#c"}));
}

}  // namespace
}  // namespace zeb
