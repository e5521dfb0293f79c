#include <gtest/gtest.h>

#include "text/IniFile.h"

namespace zeb {
namespace {

TEST(IniFile, ReadsByTheRulesOfPrivateProfiles) {
  const IniFile file = IniFile::FromBytes(
      "Before=no section\r\n"
      " [ Main ] \n"
      ";Key=comment\n"
      "  key  =  first  \r\n"
      "KEY=second\n"
      "Quoted=\" a \"\n"
      "Single='it'\n"
      "Inner=\"a\" b\n"
      "One=\"\n"
      "Equals=a=b;c\n"
      "Empty=\n"
      "Number= 12 px\n"
      "Minus=-3\n"
      "no equals sign\n"
      "[main]\n"
      "Late=x\n"
      "[Caf\xE9]\nTitle=\x93x\x94");
  const struct {
    const char *key, *value;
  } cases[] = {{"Key", "first"}, {"QUOTED", " a "}, {"single", "it"},    {"Inner", "\"a\" b"},
               {"One", "\""},    {"Empty", ""},     {"Equals", "a=b;c"}, {"Number", "12 px"}};
  for (const auto& [key, value] : cases) EXPECT_EQ(file.Text("mAIN", key), value) << key;
  EXPECT_EQ(file.Text("caf\u00C9", "title"), "\u201Cx\u201D");
  for (const char* key : {"Before", "Late", ";Key", "no equals sign", "missing"})
    EXPECT_EQ(file.Text("Main", key), std::nullopt) << key;
  EXPECT_EQ(file.Integer("Main", "Number"), 12);
  EXPECT_EQ(file.Integer("Main", "Minus"), -3);
  EXPECT_EQ(file.Integer("Main", "missing"), 0);
}

TEST(IniFile, WritingKeepsTheRestOfTheFile) {
  IniFile file = IniFile::FromBytes("; top\r\n[A]\r\nx=1\r\n\r\n[B]\r\ny=2\r\n");
  file.Write("a", "X", "3");
  file.Write("A", "new", " blank ");
  file.Write("C", "z", "'q'");
  file.Write("B", "y", "two\nlines");
  EXPECT_EQ(file.ToBytes(),
            "; top\r\n[A]\r\nX=3\r\nnew=\" blank \"\r\n\r\n[B]\r\ny=two lines\r\n\r\n[C]\r\nz=\"'q'\"\r\n");
  const IniFile again = IniFile::FromBytes(file.ToBytes());
  EXPECT_EQ(again.Text("A", "new"), " blank ");
  EXPECT_EQ(again.Text("C", "z"), "'q'");
}

TEST(IniFile, KeepsUtf16AndLineFeeds) {
  const std::string utf16("\xFF\xFE[\0A\0]\0\n\0k\0=\0\xE9\0\n\0", 18);
  IniFile file = IniFile::FromBytes(utf16);
  EXPECT_EQ(file.Text("A", "k"), "\u00E9");
  EXPECT_EQ(file.ToBytes(), utf16);
}

}  // namespace
}  // namespace zeb
