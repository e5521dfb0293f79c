// Values that would break the language around them, and how it is chosen.
#include <gtest/gtest.h>

#include "text/Utf8.h"
#include "text/ValueEscapes.h"

namespace zeb {
namespace {

using E = ValueEscape;

std::string Escaped(std::string_view value, E escape) {
  std::string text = "<";  // what stands before a value stays
  AppendEscaped(text, value, escape);
  EXPECT_EQ(text[0], '<');
  return text.substr(1);
}

TEST(ValueEscapes, WriteWhatTheLanguageReadsBackAsTheValue) {
  const std::string value = "A & B <i>\"quoted\"</i> 'x' \\ é \t\r\n";
  EXPECT_EQ(Escaped(value, E::kNone), value);
  const std::string markup = "A &amp; B &lt;i&gt;&quot;quoted&quot;&lt;/i&gt; &#39;x&#39; \\ é \t\r\n";
  EXPECT_EQ(Escaped(value, E::kHtml), markup);
  EXPECT_EQ(Escaped(value, E::kXml), markup);
  EXPECT_EQ(Escaped(value, E::kJson), "A & B \\u003Ci>\\\"quoted\\\"\\u003C/i> 'x' \\\\ é \\t\\r\\n");
  for (const E escape : {E::kNone, E::kHtml, E::kXml, E::kJson}) EXPECT_EQ(Escaped("", escape), "");
  // What is escaped already is escaped again: a title "&amp;" is shown as it is written.
  EXPECT_EQ(Escaped("&amp;", E::kHtml), "&amp;amp;");
}

TEST(ValueEscapes, ControlCharactersNeitherBreakXmlNorJson) {
  for (char32_t c = 0; c < 0x20; ++c) {
    std::string one;
    AppendCharacter(one, c);
    const bool kept = c == '\t' || c == '\n' || c == '\r';
    EXPECT_EQ(Escaped(one, E::kXml), kept ? one : " ");
    const std::string json = Escaped(one, E::kJson);
    EXPECT_EQ(json[0], '\\');
    EXPECT_TRUE(json.size() == (kept ? 2u : 6u)) << json;
  }
  EXPECT_EQ(Escaped(std::string("\x1F\0", 2), E::kJson), "\\u001F\\u0000");
}

TEST(ValueEscapes, WordsAreReadInAnyCaseAndOthersNamed) {
  const struct {
    const char* word;
    std::optional<EscapeChoice> choice;
  } cases[] = {{"", EscapeChoice::kOff},      {"off", EscapeChoice::kOff},   {"HTML", EscapeChoice::kHtml},
               {" xml ", EscapeChoice::kXml}, {"Json", EscapeChoice::kJson}, {"auto", EscapeChoice::kAuto},
               {"yes", std::nullopt},         {"htm", std::nullopt},         {"xmljson", std::nullopt}};
  for (const auto& c : cases) {
    EXPECT_EQ(EscapeChoiceByName(c.word), c.choice) << c.word;
    EXPECT_EQ(WrongEscapeWord(c.word).empty(), c.choice.has_value()) << c.word;
  }
  EXPECT_EQ(WrongEscapeWord("yes"),
            "'yes' is none of html, xml, json, auto and off; values are put in as they are");
  EXPECT_EQ(EscapeFor("yes", "a.html", "<html>"), E::kNone);
  EXPECT_EQ(EscapeFor("", "a.html", "<html>"), E::kNone);
  EXPECT_EQ(EscapeFor("json", "a.html", "<html>"), E::kJson);
}

TEST(ValueEscapes, AutoGoesByTheDestinationThenByTheTemplate) {
  const struct {
    const char *destination, *text;
    E escape;
  } cases[] = {{"/www/now.html", "{", E::kHtml},
               {"C:\\www\\now.HTM", "", E::kHtml},
               {"now.xhtml", "<?xml", E::kHtml},
               {"now.php", "", E::kHtml},
               {"now.asp", "", E::kHtml},
               {"feed.rss", "<html", E::kXml},
               {"feed.atom", "", E::kXml},
               {"list.xspf", "", E::kXml},
               {"now.xml", "", E::kXml},
               {"a.json", "<html", E::kJson},
               {"site.webmanifest", "", E::kJson},
               {"now.txt", "Now: <ZEB_NOW_ITEMNAME>", E::kNone},
               {"now.txt", "<?xml version='1.0'?>", E::kXml},
               {"/w.html/now", "", E::kNone},  // a folder's ending tells nothing
               {"/w/.html", "", E::kHtml},
               {"now.", "x", E::kNone},
               {"", " \r\n\t<!DOCTYPE HTML>", E::kHtml},
               {"", "<HTML lang=en>", E::kHtml},
               {"", "<?XML", E::kXml},
               {"", "{\"title\":", E::kJson},
               {"", "{", E::kJson},
               {"", "[[\"", E::kJson},
               {"", "[(<ZEB_NOW_ITEMNAME>!=)x]", E::kNone},  // an optional section
               {"", "{0D}text", E::kNone},                   // a hex escape
               {"", "?t=<ZEB_NOW_ITEMNAME>", E::kNone},
               {"", "####TEXT:x", E::kNone},
               {"", "", E::kNone}};
  for (const auto& c : cases)
    EXPECT_EQ(EscapeFor("auto", c.destination, c.text), c.escape) << c.destination << ' ' << c.text;
}

}  // namespace
}  // namespace zeb
