// What lint says of a template, and the proof of each by the expansion that publishes.
#include <gtest/gtest.h>

#include "dialogs/TemplateLint.h"
#include "templates/PageTemplate.h"

namespace zeb {
namespace {

std::string Lint(std::string_view text, std::string_view name = "now.txt", std::string_view escape = "") {
  std::string all;
  for (const LintFinding& found : LintTemplate(text, name, escape))
    all += std::to_string(found.line) + ":" + std::to_string(found.column) + ": " + found.text + "\n";
  return all;
}

// As the file output makes a page of the template, of items that are hard on it.
std::string Published(std::string_view bytes, ValueEscape escape = ValueEscape::kNone) {
  auto snapshot = std::make_shared<ServiceSnapshot>();
  snapshot->currentItem.Edit().ItemName = "A & \"B\" <C>";
  snapshot->currentItem.Edit().Artists = "Abba";
  snapshot->currentItem.Edit().ItemType = 7;
  snapshot->previousItems.resize(2);
  snapshot->previousItems[0].Edit().ItemName = "first";
  snapshot->previousItems[1].Edit().ItemName = "second";
  UploadFileList files;
  const auto page = PageTemplate::FromBytes(bytes);
  const auto expanded = page->Expand({}, *snapshot, "", files, {.escape = escape});
  return EncodeFile(expanded.value_or("too large"), page->Encoding());
}

TEST(TemplateLintTest, EachFindingIsTrueOfWhatIsPublished) {
  const struct {
    const char *text, *finding, *published;
  } cases[] = {
      {"<ZEB_NOW_ARTISTS>\r\n[(<ZEB_NOW_ITEMTYPE>=Song)song]", "", "Abba\r\nsong"},
      {"a <ZEB_THEN_ITEMNAME>", "1:3: There is no 'THEN': the tag is published without its brackets\n",
       "a ZEB_THEN_ITEMNAME"},
      {"<ZEB_NOW_TITEL>.", "1:1: An item has no 'TITEL': nothing is published in its place\n", "."},
      {"<ZEB_PREVIOUS2_ITEMNAME> <ZEB_PREV2_ITEMNAME>",
       "1:1: 'PREVIOUS2': its number counts for nothing; numbers stand behind NEXT and PREV only\n",
       "first second"},
      {"[(<ZEB_NOW_ARTISTS>=Abba)is Abba].", "1:2: Only a value written in capitals can equal 'ABBA'\n", "."},
      {"ä\nä [abc]",
       "2:3: brackets without a condition are left out: '[abc]' becomes 'abc'; in scripts and style sheets "
       "that "
       "changes what they do, so keep those in files of their own\n",
       "ä\nä abc"},
      {"x [(<ZEB_NOW_ARTISTS>!=)a[b]c]",
       "1:26: '[' inside another section: sections cannot be nested, and the first ']' ends the outer one\n"
       "1:30: ']' without a matching '[': it is published as it stands\n",
       "x a[bc]"},
      {"x [(<ZEB_NOW_ARTISTS>=)a",
       "1:3: '[' without a matching ']': the section reaches to the end of the template\n", "x "},
      {"a[[0] b]", "1:8: ']' without a matching '[': it is published as it stands\n", "a[[0] b]"},
      {"a <ZEB_NOW_ITEMNAME", "1:3: '<' without a matching '>'\n", "a A & \"B\" <C>"},
      {"ä&lt;ZEB_NOW_ARTISTS&gt; [b]",
       "1:26: brackets without a condition are left out: '[b]' becomes 'b'; in scripts and style sheets that "
       "changes what they do, so keep those in files of their own\n",
       "äAbba b"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Lint(c.text), c.finding) << c.text;
    const std::string published = Published(c.text);
    EXPECT_EQ(published.substr(0, std::string_view(c.published).size()), c.published) << c.text;
  }
}

TEST(TemplateLintTest, ValuesThatWouldBreakThePageAreNamedOnce) {
  const std::string html = "<html>\r\n<p><ZEB_NOW_ITEMNAME>\r\n<ZEB_NOW_ARTISTS>\r\n</html>";
  const std::string broken =
      "2:4: values are put in as they are: a title such as 'A & \"B\" <C>' breaks the HTML; "
      "set EscapeValues of the page to auto, and lint it with --escape auto\n";
  EXPECT_EQ(Lint(html, "now.html"), broken);
  EXPECT_EQ(Lint(html, "now.html", "off"), broken);
  EXPECT_EQ(Lint(html, "template"), broken) << "told by how it begins";
  EXPECT_EQ(Lint(html, "now.html", "auto"), "");
  EXPECT_EQ(Lint(html, "now.html", "html"), "");
  EXPECT_EQ(Lint(html, "now.html", "json"), "2:4: values are escaped for JSON, but this is HTML\n");
  EXPECT_EQ(Lint("<html>\r\n<p>nothing of ours</html>", "now.html"), "");
  EXPECT_EQ(Lint("{\"title\": \"<ZEB_NOW_ITEMNAME>\"}", "now.json", "auto"), "");
  EXPECT_NE(Published(html).find("A & \"B\" <C>"), std::string::npos);
  EXPECT_NE(Published(html, ValueEscape::kHtml).find("A &amp; &quot;B&quot; &lt;C&gt;"), std::string::npos);
}

TEST(TemplateLintTest, AValueInAScriptIsNamedInWebPagesOnly) {
  const std::string page = "<html>\r\n<SCRIPT>var t = '<ZEB_NOW_ITEMNAME>';</script>\r\n<ZEB_NOW_ARTISTS>";
  EXPECT_EQ(
      Lint(page, "now.html", "auto"),
      "2:18: a value inside <script>: entities mean nothing there, and without them a quote in a title ends "
      "the string; let the script fetch a JSON page\n");
  EXPECT_EQ(Lint(page, "now.xml", "auto"), "");
}

TEST(TemplateLintTest, AFileThatIsNotInTheEncodingThatItDeclaresIsNamed) {
  EXPECT_EQ(
      Lint("<meta charset=\"utf-8\">\xE4", "a.txt"),
      "1:1: the file says that it is UTF-8, but not all of it is: those bytes are read as Windows-1252\n");
  EXPECT_EQ(Published("<meta charset=\"utf-8\">\xE4"), "<meta charset=\"utf-8\">ä");
  EXPECT_EQ(
      Lint("<meta charset=\"iso-8859-1\">ä", "a.txt"),
      "1:1: the file is UTF-8, but says that it is not: its letters with accents are published wrongly\n");
  EXPECT_EQ(Lint("<meta charset=\"utf-8\">ä", "a.txt"), "");
  EXPECT_EQ(Lint("plain", "a.txt"), "");
}

TEST(TemplateLintTest, IsBoundedAndLinear) {
  std::string many;
  while (many.size() < 1024 * 1024) many += "<ZEB_NOW_X>]\n";
  const auto found = LintTemplate(many, "a.txt", "");
  ASSERT_EQ(found.size(), kMostFindings);
  EXPECT_EQ(found.back().line, static_cast<int>(kMostFindings / 2));
}

TEST(TemplateLintTest, TheBuildersSamplesAreClean) {
  EXPECT_EQ(
      Lint("<ZEB_NOW_ITEMNAME> by <ZEB_NOW_ARTISTS>####[(<ZEB_NEXT_ITEMNAME>!=)Next: <ZEB_NEXT_ITEMNAME>]"),
      "");
}

}  // namespace
}  // namespace zeb
