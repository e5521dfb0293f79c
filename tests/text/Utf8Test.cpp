#include <gtest/gtest.h>

#include <random>

#include "text/Encodings.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

TEST(Utf8, TellsValidFromBroken) {
  for (const std::string_view valid :
       {"", "abc", "é", "\xED\x9F\xBF", "\xEE\x80\x80", "\xF4\x8F\xBF\xBF", "\xF0\x90\x80\x80", "12345678é"})
    EXPECT_TRUE(IsValidUtf8(valid)) << valid;
  for (const std::string_view broken :
       {"\x80", "\xC3", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xE2\x82",
        "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "12345678\xE9",
        "1234567\xE9xxxxxxxx", "\xE2\x28\xA1"})
    EXPECT_FALSE(IsValidUtf8(broken)) << broken;
}

TEST(Utf8, CountsAndCutsByCharacters) {
  const std::string text = "aé€😀z";
  EXPECT_EQ(CountCharacters(text), 5u);
  const std::size_t ends[] = {0, 1, 3, 6, 10, 11, 11};
  for (std::size_t n = 0; n < std::size(ends); ++n) EXPECT_EQ(SkipCharacters(text, 0, n), ends[n]) << n;
  EXPECT_EQ(SkipCharacters(text, 3, 2), 10u);
  EXPECT_EQ(SkipCharacters(text, 11, 1), 11u);
  EXPECT_EQ(FirstCharacters(text, 3), "aé€");
  // A limit of 2000 characters never cuts one in two.
  std::string many;
  for (int i = 0; i < 2001; ++i) many += "é";
  EXPECT_EQ(FirstCharacters(many, 2000).size(), 4000u);
  EXPECT_TRUE(IsValidUtf8(FirstCharacters(many, 2000)));
}

TEST(Utf8, EveryCharacterComesBack) {
  for (char32_t c = 0; c < 0x110000; c += c < 0x11000 ? 1 : 97) {
    if (c >= 0xD800 && c < 0xE000) continue;
    std::string text;
    AppendCharacter(text, c);
    ASSERT_TRUE(IsValidUtf8(text)) << static_cast<unsigned>(c);
    std::size_t offset = 0;
    ASSERT_EQ(NextCharacter(text, offset), c);
    ASSERT_EQ(offset, text.size());
  }
  for (const char32_t none : {char32_t{0xD800}, char32_t{0xDFFF}, char32_t{0x110000}}) {
    std::string text;
    AppendCharacter(text, none);
    EXPECT_EQ(text, "\uFFFD");
  }
}

TEST(Utf8, BrokenBytesNeverStopTheWalk) {
  std::mt19937 random(7);
  for (int round = 0; round < 2000; ++round) {
    std::string bytes(random() % 24, '\0');
    for (char& c : bytes) c = static_cast<char>(random() % 3 == 0 ? random() : 0xC0 + random() % 0x40);
    const std::string text = DecodeLenient(bytes);
    ASSERT_TRUE(IsValidUtf8(text));
    ASSERT_EQ(DecodeLenient(text), text);
    for (std::size_t at = 0; at < bytes.size();) NextCharacter(bytes, at);
    std::size_t characters = 0;
    for (std::size_t at = 0; at < text.size(); ++characters) NextCharacter(text, at);
    ASSERT_EQ(CountCharacters(text), characters) << text;
  }
}

}  // namespace
}  // namespace zeb
