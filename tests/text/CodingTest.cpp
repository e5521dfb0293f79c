// Hex escapes, URL coding and paths.
#include <gtest/gtest.h>

#include "text/HexEscapes.h"
#include "text/Paths.h"
#include "text/PercentEncoding.h"

namespace zeb {
namespace {

TEST(HexEscapes, OnePassAndOnlyCapitals) {
  const struct {
    const char* text;
    const char* expected;
  } cases[] = {{"a{22}b", "a\"b"},
               {"{7B}41}", "{41}"},
               {"{7B}{34}1}", "{41}"},
               {"Song {live}", "Song {live}"},
               {"{0d}", "{0d}"},
               {"{E9}", "\xE9"},
               {"{{41}}", "{A}"},
               {"{4", "{4"},
               {"{41", "{41"},
               {"{}", "{}"},
               {"{", "{"},
               {"{4G}{41}", "{4G}A"}};
  for (const auto& c : cases) EXPECT_EQ(UndoHexEscapes(c.text), c.expected) << c.text;
  EXPECT_EQ(UndoHexEscapes("{00}"), std::string(1, '\0'));
}

TEST(HexEscapes, EscapedValuesComeBack) {
  EXPECT_EQ(EscapeValue("a\"{b}\r\n\x7F é"), "a{22}{7B}b}{0D}{0A}{7F} é");
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  all += "{41}{7B}";
  EXPECT_EQ(UndoHexEscapes(EscapeValue(all)), all);
}

TEST(UrlCoding, EncodesBytes) {
  EXPECT_EQ(UrlEncode("a b&c"), "a+b%26c");
  EXPECT_EQ(UrlEncode("AZaz09-_.~"), "AZaz09%2D%5F%2E%7E");
  EXPECT_EQ(UrlEncode("é"), "%C3%A9");
  EXPECT_EQ(UrlEncode("\n"), "%0A");
  EXPECT_EQ(PercentEncoded("AZaz09-_.~ +/é\n"), "AZaz09-_.~%20%2B%2F%C3%A9%0A");
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  EXPECT_EQ(UrlDecode(UrlEncode(all)), all);
  EXPECT_EQ(UrlDecode("%e9%G0%4%"), "\xE9%G0%4%");
}

TEST(Paths, Parts) {
  const struct {
    const char* path;
    const char* name;
    const char* folder;
  } cases[] = {{"C:\\Pics\\a.jpg", "a.jpg", "C:\\Pics\\"},
               {"/srv/www/a", "a", "/srv/www/"},
               {"a\\b/c", "c", "a\\b/"},
               {"a/b\\c", "c", "a/b\\"},
               {"a", "a", ""},
               {"", "", ""},
               {"dir/", "", "dir/"}};
  for (const auto& c : cases) {
    EXPECT_EQ(FileNamePart(c.path), c.name) << c.path;
    EXPECT_EQ(FolderPart(c.path), c.folder) << c.path;
  }
}

TEST(Paths, Joins) {
  EXPECT_EQ(JoinPath("/data", "a/b"), std::string("/data") + kPathSeparator + "a/b");
  EXPECT_EQ(JoinPath("/data/", "a"), "/data/a");
  EXPECT_EQ(JoinPath("/data", "/etc/x"), "/etc/x");
  EXPECT_EQ(JoinPath("/data", "C:\\x"), "C:\\x");
  EXPECT_EQ(JoinPath("/data", "\\\\server\\x"), "\\\\server\\x");
  EXPECT_EQ(JoinPath("", "a"), "a");
}

TEST(Paths, CleanNamesHoldNoSeparator) {
  EXPECT_EQ(CleanForFileName("Radio 1: a/b\\c*?.log"), "Radio_1__a_b_c__.log");
  EXPECT_EQ(CleanForFileName("Señal-Łódź_9"), "Señal-Łódź_9");
  EXPECT_EQ(CleanForFileName("…\n"), "__");
}

}  // namespace
}  // namespace zeb
