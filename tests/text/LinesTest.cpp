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
  EXPECT_EQ(SplitAt(',', ""), Pieces{""});
  EXPECT_EQ(SplitAt(',', ",a b,"), (Pieces{"", "a b", ""}));
  EXPECT_EQ(SplitAt(';', "a,b"), Pieces{"a,b"});
  const auto cut = [](std::string_view text) {
    const FirstWord first = CutFirstWord(text);
    return Pieces{first.word, first.rest};
  };
  EXPECT_EQ(cut("UPDATE"), (Pieces{"UPDATE", ""}));
  EXPECT_EQ(cut("SET  LOG x"), (Pieces{"SET", " LOG x"}));
  EXPECT_EQ(cut(" a"), (Pieces{"", "a"}));
}

}  // namespace
}  // namespace zeb
