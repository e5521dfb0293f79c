#include <gtest/gtest.h>

#include "platform/common/LibxmlMarkup.h"

namespace zeb {
namespace {

class LibxmlMarkupTest : public testing::Test {
 protected:
  std::vector<std::string> Texts(const std::string& xml, const std::string& path) {
    const Result<MarkupDocument> document = markup.ReadXml(xml);
    if (!document) return {"failed: " + document.Reason()};
    std::vector<std::string> texts;
    for (const std::size_t element : document.Value().Select(path))
      texts.emplace_back(document.Value().TextOf(element));
    return texts;
  }
  LibxmlMarkup markup;
};
using Lines = std::vector<std::string>;

TEST_F(LibxmlMarkupTest, SelectsByPathAndReadsTexts) {
  const std::string xml =
      "<?xml version='1.0' encoding='windows-1252'?><R><A>1<B>\u00E9 &amp; &#x41;</B></A><C><A>no</A></C>"
      "<A><![CDATA[<2>]]></A><A/></R>";
  EXPECT_EQ(Texts(xml, "/R/A"), (Lines{"1\u00E9 & A", "<2>", ""}));
  EXPECT_EQ(Texts(xml, "/R/A/B"), Lines{"\u00E9 & A"});
  EXPECT_EQ(Texts(xml, "/A"), Lines{});
  const MarkupDocument document = markup.ReadXml(xml).Value();
  const std::size_t c = document.Select("/R/C").at(0);
  ASSERT_EQ(document.Select("./A", c).size(), 1u);
  EXPECT_EQ(document.TextOf(document.Select("./A", c)[0]), "no");
}

TEST_F(LibxmlMarkupTest, RefusesWhatIsWrongOnOneLine) {
  std::string nested;
  for (int i = 0; i < 1000000; ++i) nested += "<a>";
  std::string many = "<a>";
  for (int i = 0; i < 300000; ++i) many += "<b/>";
  testing::internal::CaptureStderr();
  for (const std::string& xml : {std::string(), std::string("text"), std::string("<a><b></a>"),
                                 std::string("<a>&undefined;</a>"), nested, many + "</a>"}) {
    const Result<MarkupDocument> document = markup.ReadXml(xml);
    ASSERT_FALSE(document.Ok()) << xml.substr(0, 30);
    EXPECT_FALSE(document.Reason().empty());
    EXPECT_EQ(document.Reason().find('\n'), std::string::npos);
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// An entity that is left out would be a title with a hole.
TEST_F(LibxmlMarkupTest, RefusesEntitiesByTheirNameAndFetchesNone) {
  const auto refused = [](const std::string& name) {
    return Lines{
        "failed: it uses the entity '" + name +
        "'; of entities only &amp; &lt; &gt; &quot; &apos; and numbers are read, so the text itself must "
        "stand in its place"};
  };
  EXPECT_EQ(Texts("<!DOCTYPE R [<!ENTITY who 'Ann'>]><R>by &who;</R>", "/R"), refused("who"));
  EXPECT_EQ(Texts("<!DOCTYPE R [<!ENTITY x SYSTEM 'file:///etc/hostname'>]><R>[&x;]</R>", "/R"),
            refused("x"));
  EXPECT_EQ(Texts("<!DOCTYPE R [<!ENTITY x SYSTEM 'http://127.0.0.1:9/x'>]><R><A/><B>&x;</B></R>", "/R"),
            refused("x"));
  EXPECT_EQ(Texts("<!DOCTYPE R SYSTEM 'http://127.0.0.1:9/x.dtd'><R>&eacute;</R>", "/R"), refused("eacute"));
  EXPECT_EQ(Texts("<!DOCTYPE R [<!ENTITY % p '<!ENTITY y \"z\">'> %p;]><R>&y;</R>", "/R"), refused("y"));
  const std::string name(500, 'n');
  EXPECT_EQ(Texts("<!DOCTYPE R [<!ENTITY " + name + " 'x'>]><R>&" + name + ";</R>", "/R"),
            refused(name.substr(0, 64)));
  std::string bomb = "<!DOCTYPE R [<!ENTITY a0 'aaaaaaaaaa'>";
  for (int i = 1; i < 12; ++i) {
    bomb += "<!ENTITY a" + std::to_string(i) + " '";
    for (int j = 0; j < 10; ++j) bomb += "&a" + std::to_string(i - 1) + ";";
    bomb += "'>";
  }
  bomb += "]>";
  // One that grows without end is refused by the library before its name is known.
  EXPECT_EQ(Texts(bomb + "<R>&a11;</R>", "/R"), Lines{"failed: line 1: Detected an entity reference loop"});
  // In attributes, which nobody reads, neither.
  const auto inAttribute = Texts(bomb + "<R a='&a11;'>text</R>", "/R");
  ASSERT_EQ(inAttribute.size(), 1u);
  EXPECT_LT(inAttribute[0].size(), 300u);
  EXPECT_NE(Texts("<!DOCTYPE R [<!ENTITY a '&b;'><!ENTITY b '&a;'>]><R>&a;</R>", "/R").at(0).find("failed: "),
            std::string::npos);
}

TEST_F(LibxmlMarkupTest, WhatIsDeclaredAndNotUsedDoesNoHarm) {
  EXPECT_EQ(
      Texts("<!DOCTYPE R [<!ENTITY who 'Ann'>]><R>A &amp; B &lt;&gt;&quot;&apos; &#233;&#xE9;</R>", "/R"),
      Lines{"A & B <>\"' éé"});
  EXPECT_EQ(Texts("<!DOCTYPE R SYSTEM 'http://127.0.0.1:9/x.dtd'><R>plain</R>", "/R"), Lines{"plain"});
  EXPECT_EQ(Texts("<R><![CDATA[&who;]]><!-- &who; --></R>", "/R"), Lines{"&who;"});
  // Declaring a predefined one again, as XML allows, changes nothing.
  EXPECT_EQ(Texts("<!DOCTYPE R [<!ENTITY amp '&#38;#38;'>]><R>&amp;</R>", "/R"), Lines{"&"});
}

TEST_F(LibxmlMarkupTest, TurnsHtmlIntoText) {
  const struct {
    const char *html, *text;
  } cases[] = {{"<b>b</b> c", "b c"},
               {"a<!-- x --><script>var x = '</b>';</script> &eacute;&#8217;&amp;</p>", "a \u00E9\u2019&"},
               {" <i> one\r\n two</i><br>three ", "one two\nthree"},
               {"<b>\u0142\u00F3d\u017A</b>", "\u0142\u00F3d\u017A"},
               {"<p>Artist</p><p>Title</p>", "Artist Title"},
               {"<div>a<div>b</div>c</div>d", "a b c d"},
               {"<ul><li>a<li>b</ul>c", "a b c"},
               {"<table><tr><td>a</td><td>b</td></tr><tr><td>c</td></tr></table>d", "a b c d"},
               {"<p>a</p><br><p>b</p>", "a\nb"},
               {"S<b>o</b>n<span>g</span> <x>y</x>z", "Song yz"},
               {"a</", "a"},
               {"", ""}};
  for (const auto& [html, text] : cases) EXPECT_EQ(markup.HtmlToText(html), text) << html;
}

}  // namespace
}  // namespace zeb
