#include <gtest/gtest.h>

#include "platform/simulated/TestEnvironment.h"
#include "templates/cTextField.h"
#include "templates/cTextFieldModifier.h"

namespace zeb {
namespace {

// Drops tags, which is enough to see when it is asked.
struct TagDropper : Markup {
  Result<MarkupDocument> ReadXml(std::string_view) override { return Failure{"no"}; }
  std::string HtmlToText(std::string_view html) override {
    std::string text;
    bool inTag = false;
    for (const char c : html) {
      if (c == '<') inTag = true;
      if (!inTag) text += c;
      if (c == '>') inTag = false;
    }
    return text;
  }
};

struct Settings {
  const char *prefix = "", *suffix = "";
  std::int32_t start = 0, length = 0, line = 0, cell = 0, letters = 0;
  bool optional = false, keep = false;
  std::vector<std::string> blanks = {};
};

TEST(TextField, FindsItsValue) {
  const std::string cells =
      "<tr><td>a &amp;</td><TD class=x><b>b</b> c</TD><td>d<td>e</td><td></td><td>f</tr>";
  const struct {
    Settings settings;
    std::string text, value;
    int begin = 0, end = 0;
  } cases[] = {
      {{}, "abc", ""},
      {{"", "", 0, 3}, "abc", ""},
      {{"", "c"}, "abc", ""},
      {{"Title=", "{0D}"}, "title=Song A\rmore", "Song A", 6, 12},
      {{"", "|", 1, 0, 0, 0, 0, true}, "Song A", "Song ", 1, 6},
      {{"", "|", 1, 0, 0, 0, 0, true}, "S", ""},
      {{"", "|", 1}, "Song A", ""},
      {{"", "|", 1}, "|Song", ""},
      {{"", "", 3, 2}, "\u0142\u0142\u00E9\u00E8x", "\u00E9\u00E8", 3, 5},
      {{"", "", 4}, "abc", ""},
      {{"", "", 0, 0, 3}, "a\nb", ""},
      {{"", "", 0, 0, 2}, "a\n", ""},
      {{"", "\r", 0, 0, 2}, "a\r\nb\r\nc", "b", 3, 4},
      {{"=", "\n", 2, 0, 2}, "a\nx=y\nz", "y", 5, 6},
      {{"", "z", 1, 3}, "abcz", ""},
      {{"", "", 0, 0, 0, 1}, cells, "a &amp;", 0, 7},
      {{"", "", 0, 0, 0, 2}, cells, "b c", 0, 10},
      {{"", "", 0, 0, 0, 2, 0, false, true}, cells, "<b>b</b> c", 0, 10},
      {{"", "", 0, 0, 0, 3}, cells, "d", 0, 1},
      {{"", "", 0, 0, 0, 4}, cells, "e", 0, 1},
      {{"", "", 0, 0, 0, 5}, cells, ""},
      {{"", "", 0, 0, 0, 6}, cells, "f", 0, 1},
      {{"", "", 0, 0, 0, 2}, "<TR><TD>a<TD>b<TR><TD>c</TR>", "b", 0, 1},
      {{"", "", 0, 0, 0, 2}, "<td>a<td>b</Table>", "b", 0, 1},
      {{"", "", 0, 0, 0, 2}, "<td>a<td>b", ""},
      {{"", "", 0, 0, 0, 7}, cells, ""},
      {{"", "", 1, 0, 0, 0, 1}, "stra\u00E9", "STRA\u00C9", 1, 6},
      {{"", "", 1, 0, 0, 0, 2}, "ABC", "abc", 1, 4},
      {{"", "", 1, 0, 0, 0, 3}, "the OLD song", "The Old Song", 1, 13},
      {{"", "", 1, 0, 0, 0, 0, false, false, {"{2D}", "aND", ""}}, "a-b AND c", "a b   c", 1, 10},
  };
  TagDropper markup;
  for (const auto& [settings, text, value, begin, end] : cases) {
    cTextField field(&markup);
    field.SetRawPrefix(settings.prefix);
    field.SetRawSuffix(settings.suffix);
    field.Start = settings.start;
    field.Length = settings.length;
    field.LineNumber = settings.line;
    field.HTMLCellNumber = settings.cell;
    field.CorrectCase = settings.letters;
    field.SuffixOptional = settings.optional;
    field.KeepHTML = settings.keep;
    field.ReplaceWithSpaces = settings.blanks;
    EXPECT_EQ(field.GetField(text), value) << text;
    EXPECT_EQ(field.LastStartPosition(), begin) << text;
    EXPECT_EQ(field.LastEndPosition(), end) << text;
  }
}

TEST(TextField, ReadsAndWritesItsKeys) {
  TestEnvironment ports;
  ports.files.Put("/data/f.ini",
                  "[S]\nK.Start=0\nK.Length=-4\nK.LineNumber=2\nK.CorrectCase=3\nK.Prefix=\"{3C}b \"\n"
                  "K.Suffix=\nK.ReplaceWithSpaces=-,{2C},_\nOther=1\n");
  cTextField field;
  EXPECT_FALSE(field.HasSettings());
  field.Start = 7;
  field.Length = 9;
  field.SetRawSuffix("s");
  ASSERT_TRUE(field.ReadFromConfigFile(ports.files, "/data/f.ini", "s", "k").Ok());
  EXPECT_EQ(field.Start, 7);
  EXPECT_EQ(field.Length, 9);
  EXPECT_EQ(field.LineNumber, 2);
  EXPECT_EQ(field.CorrectCase, 3);
  EXPECT_EQ(field.RawPrefix(), "{3C}b ");
  EXPECT_EQ(field.Prefix(), "<b ");
  EXPECT_EQ(field.Suffix(), "s");
  EXPECT_EQ(field.ReplaceWithSpaces, (std::vector<std::string>{"-", "{2C}", "_"}));

  ASSERT_TRUE(field.WriteToConfigFile(ports.files, "/data/f.ini", "S", "L").Ok());
  EXPECT_NE(ports.files.Contents("/data/f.ini").find("Other=1\n"), std::string::npos);
  cTextField again;
  ASSERT_TRUE(again.ReadFromConfigFile(ports.files, "/data/f.ini", "S", "L").Ok());
  EXPECT_EQ(again.RawPrefix(), field.RawPrefix());
  EXPECT_EQ(again.Start, 7);
  EXPECT_EQ(again.ReplaceWithSpaces, field.ReplaceWithSpaces);
  EXPECT_FALSE(again.ReadFromConfigFile(ports.files, "/data/missing.ini", "S", "L").Ok());
}

TEST(TextFieldModifier, WrapsInItsRawTexts) {
  TestEnvironment ports;
  ports.files.Put("/data/f.ini", "[S]\nK.Prefix={3C}\nK.Suffix=!\n");
  cTextFieldModifier modifier;
  ASSERT_TRUE(modifier.ReadFromConfigFile(ports.files, "/data/f.ini", "S", "K").Ok());
  EXPECT_EQ(modifier.Prefix(), "<");
  EXPECT_EQ(modifier.ProcessField("x"), "{3C}x!");
}

}  // namespace
}  // namespace zeb
