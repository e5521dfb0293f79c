#include <gtest/gtest.h>

#include "text/LetterCase.h"

namespace zeb {
namespace {

TEST(LetterCase, MapsCharactersOneToOne) {
  EXPECT_EQ(LowerCase("ABCXYZ[@ ÄÖÜ ŁÓDŹ ЖЩ ΑΩ"), "abcxyz[@ äöü łódź жщ αω");
  EXPECT_EQ(UpperCase("abcxyz{` äöü łódź жщ αω"), "ABCXYZ{` ÄÖÜ ŁÓDŹ ЖЩ ΑΩ");
  EXPECT_EQ(UpperCase("ﬁ"), "ﬁ");  // would be two letters
}

TEST(LetterCase, CapitalisesWords) {
  const struct {
    const char* text;
    const char* expected;
  } cases[] = {{"hello WORLD", "Hello World"},
               {"élan vital", "Élan Vital"},
               {"rock'n'roll o'NEILL", "Rock'n'roll O'neill"},
               {"(LIVE) \"remix\"", "(Live) \"Remix\""},
               {"1st AC/DC", "1st Ac/dc"},
               {"tab\tnew\nline\u00A0fixed", "Tab\tNew\nLine\u00A0Fixed"},
               {"", ""}};
  for (const auto& c : cases) EXPECT_EQ(CapitaliseWords(c.text), c.expected);
}

TEST(LetterCase, Compares) {
  EXPECT_TRUE(EqualIgnoringCase("Straße ÉTÉ", "sTRAßE été"));
  EXPECT_TRUE(EqualIgnoringCase("", ""));
  EXPECT_FALSE(EqualIgnoringCase("ab", "abc"));
  EXPECT_FALSE(EqualIgnoringCase("abc", "ab"));
  EXPECT_FALSE(EqualIgnoringCase("e", "é"));
  EXPECT_TRUE(EqualIgnoringCase("\u212A", "k"));  // the sign for kelvin: three bytes against one
  EXPECT_TRUE(StartsWithIgnoringCase("Éclair", "éC"));
  EXPECT_TRUE(StartsWithIgnoringCase("x", ""));
  EXPECT_FALSE(StartsWithIgnoringCase("Écl", "éclair"));
  EXPECT_FALSE(EqualIgnoringAsciiCase("É", "é"));
  EXPECT_TRUE(EqualIgnoringAsciiCase("aZ[@", "Az[@"));
  EXPECT_FALSE(EqualIgnoringAsciiCase("[", "{"));  // 32 apart, but no letters
}

TEST(LetterCase, Finds) {
  const auto npos = std::string_view::npos;
  const struct {
    const char* text;
    const char* what;
    std::size_t from;
    std::size_t at;
  } cases[] = {{"Hello World", "WORLD", 0, 6}, {"aaab", "AAB", 0, 1}, {"ÄÖÜ äöü", "öÜ", 0, 2},
               {"ÄÖÜ äöü", "öÜ", 3, 9},        {"abc", "", 3, 3},     {"abc", "", 4, npos},
               {"abc", "abcd", 0, npos},       {"abc", "c", 3, npos}, {"", "a", 0, npos},
               {"1\u212A5", "k5", 0, 1},       {"xÉx", "éX", 0, 1}};
  for (const auto& c : cases) EXPECT_EQ(FindIgnoringCase(c.text, c.what, c.from), c.at) << c.text << c.what;
  std::size_t end = 0;
  EXPECT_EQ(FindIgnoringCase("1\u212A5", "k5", 0, &end), 1u);
  EXPECT_EQ(end, 5u);
  EXPECT_EQ(FindIgnoringAsciiCase("éA<zeb_", "<ZEB_"), 3u);
  EXPECT_EQ(FindIgnoringAsciiCase("<zeb", "<ZEB_"), npos);
  EXPECT_EQ(FindIgnoringAsciiCase("aXax", "AX", 1), 2u);
  EXPECT_EQ(FindIgnoringAsciiCase("a", "b", 5), npos);
}

}  // namespace
}  // namespace zeb
