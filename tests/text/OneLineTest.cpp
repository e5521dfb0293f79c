// Control characters in text from outside.
#include <gtest/gtest.h>

#include "text/OneLine.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

TEST(OneLine, EveryControlCharacterIsABlankOrGone) {
  const std::string nul(1, '\0');
  const struct {
    std::string text, oneLine, blanked, without;
  } cases[] = {{"plain é 日", "plain é 日", "plain é 日", "plain é 日"},
               {"", "", "", ""},
               {"a\r\nb", "a b", "a  b", "ab"},
               {"\ta" + nul + "\x7F\x1B", " a ", " a   ", "a"},
               {"a\xC2\x85\xC2\x9Bz", "a z", "a  z", "az"},          // next line, terminal control
               {"a\xE2\x80\xA8\xE2\x80\xA9z", "a z", "a  z", "az"},  // line and paragraph separator
               {"\xC2\xA0\xE2\x80\xA7\xE2\x80\xAA", "\xC2\xA0\xE2\x80\xA7\xE2\x80\xAA",
                "\xC2\xA0\xE2\x80\xA7\xE2\x80\xAA", "\xC2\xA0\xE2\x80\xA7\xE2\x80\xAA"},  // their neighbours
               {"\xC2", "\xC2", "\xC2", "\xC2"},
               {"\xE2\x80", "\xE2\x80", "\xE2\x80", "\xE2\x80"}};
  for (const auto& c : cases) {
    EXPECT_EQ(OneLine(c.text, c.text.size()), c.oneLine);
    std::string blanked = c.text;
    BlankControls(blanked);
    EXPECT_EQ(blanked, c.blanked);
    EXPECT_EQ(WithoutControls(c.text), c.without);
  }
  std::string text = "one\ntwo\nthree";
  BlankControls(text, 4);
  EXPECT_EQ(text, "one\ntwo three");
  EXPECT_EQ(OneLine("éééé", 2), "éé");
}

TEST(OneLine, EveryCharacterStaysWhatItIsOrBecomesOneBlank) {
  for (char32_t c = 0; c < 0x3000; ++c) {
    std::string one;
    AppendCharacter(one, c);
    const bool control = c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;
    std::string blanked = one;
    BlankControls(blanked);
    EXPECT_EQ(blanked, control ? " " : one) << static_cast<std::uint32_t>(c);
    EXPECT_EQ(WithoutControls(one), control ? "" : one) << static_cast<std::uint32_t>(c);
  }
}

}  // namespace
}  // namespace zeb
