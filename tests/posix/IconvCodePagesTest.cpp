#include <gtest/gtest.h>

#include "platform/posix/IconvCodePages.h"
#include "text/LanguageFile.h"

namespace zeb {
namespace {

TEST(IconvCodePagesTest, EveryPageGivesItsOwnLetters) {
  const struct {
    int page;
    const char *bytes, *text;
  } cases[] = {
      {932, "\x93\xFA\x96{", "日本"},  // the second letter ends in the byte of "{"
      {936, "\xD6\xD0\xCE\xC4", "中文"},
      {949, "\xC7\xD1\xB1\xDB", "한글"},
      {950, "\xA4\xA4\xA4\xE5", "中文"},
      {1250, "\xE8\xF9", "čů"},
      {1251, "\xD0\xF3", "Ру"},
      {1252, "\xDF\x80", "ß€"},
      {1253, "\xE1", "α"},
      {1254, "\xFE", "ş"},
      {1255, "\xE0\xD1", "אׁ"},
      {1256, "\xC7", "ا"},
      {1257, "\xF0", "š"},
      {65001, "\xC3\x9F", "ß"},
  };
  const IconvCodePages pages;
  for (const auto& one : cases) EXPECT_EQ(pages.Decode(one.page, one.bytes), one.text) << one.page;
}

TEST(IconvCodePagesTest, WhatIsNoTextGivesNothing) {
  const IconvCodePages pages;
  EXPECT_EQ(pages.Decode(932, "\x93"), std::nullopt) << "half a letter";
  EXPECT_EQ(pages.Decode(1252, "\x81"), std::nullopt);
  EXPECT_EQ(pages.Decode(65001, "\xFF"), std::nullopt);
  EXPECT_EQ(pages.Decode(1258, "a"), std::nullopt);
  EXPECT_EQ(pages.Decode(0, "a"), std::nullopt);
  EXPECT_EQ(pages.Decode(1252, ""), "");
}

TEST(IconvCodePagesTest, LanguageFilesAreReadWithThem) {
  const LanguageFile file =
      ReadLanguageFile("CODEPAGE=932\nYes=\x93\xFA\x96{=\nNo={93}{FA}\n%1 files=\x96{%1\n",
                       [](int page, std::string_view bytes) { return IconvCodePages().Decode(page, bytes); });
  EXPECT_TRUE(file.problems.empty());
  EXPECT_EQ(file.language.Translate("Yes"), "日本=");
  EXPECT_EQ(file.language.Translate("No"), "日");
  EXPECT_EQ(file.language.Translate("3 files"), "本3");
}

}  // namespace
}  // namespace zeb
