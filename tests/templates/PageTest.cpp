#include <gtest/gtest.h>

#include "templates/PageChunks.h"
#include "templates/PageTemplate.h"
#include "tests/templates/LiteralExpansion.h"
#include "tests/templates/StationFixture.h"
#include "text/SharedTime.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

std::string Page(Station& station, const std::string& page) {
  UploadFileList files;
  return ExpandPage(page, *station.service.TakeSnapshot(), "", files).value();
}

TEST(ExpandPage, ConstructsAtEveryPlaceAroundTheCut) {
  Station station;
  const std::string sections =
      "[(<ZEB_NOW_ITEMTYPE>=Song)A][(<ZEB_NOW_ITEMTYPE>!=Song)B]<ZEB_NOW_ARTISTS><<ZEB_X>[[q]<b>";
  for (std::size_t before = 1900; before <= 2001; ++before) {
    std::string literal;
    while (CountCharacters(literal) < before) literal += "é";
    EXPECT_EQ(Page(station, literal + sections + literal + literal),
              literal + "AABBA<<ZEB_X>[[q]<b>" + literal + literal)
        << before;
  }
}

TEST(ExpandPage, LongConstructsAreTakenWhole) {
  Station station;
  const std::string body(5000, 'x'), before(10, 'b'), after(3000, 'a');
  EXPECT_EQ(Page(station, before + "[(<ZEB_NOW_ITEMTYPE>=Song)" + body + "]" + after), before + body + after);
  EXPECT_EQ(Page(station, before + "[(<ZEB_NOW_ITEMTYPE>!=Song)" + body + "]" + after), before + after);
  EXPECT_EQ(Page(station, before + "<ZEB_FOO" + body + ">" + after), before + "ZEB_FOO" + body + after);
  // Without an end, a section reaches to the end of the page.
  EXPECT_EQ(Page(station, before + "[(<ZEB_NOW_ITEMTYPE>=Song)" + body + after), before + body + after);
}

TEST(ExpandPage, PlainBracketsAreThePiecesOwn) {
  Station station;
  const std::string before(1990, 'b'), middle(20, 'm');
  // The first piece ends without the section's "]", which is ordinary text in the second.
  EXPECT_EQ(Page(station, before + "[" + middle + "]!"), before + middle + "]!");
}

TEST(ExpandPage, CutsBeforeWhatIsNotCompleteButNeverTheLastPiece) {
  struct {
    std::size_t before;
    const char* text;
    std::size_t end;
  } const cases[] = {{1990, "<ZEB_NOW_", 1999},  {1990, "<ZEB_NOW_ARTISTS>", 1990},
                     {1999, "<b>", 2000},        {1999, "[(<ZEB>)]", 1999},
                     {1999, "[[(<ZEB>)]", 1999}, {1998, "[[(<ZEB>)]", 2000}};
  for (const auto& c : cases) {
    std::string page(c.before, 'x');
    page += c.text;
    EXPECT_EQ(ChunkEnd(page, 0), c.end) << c.before << c.text;
  }
}

TEST(UndoEscapedTags, EditorsWriteTagsInTwoWays) {
  struct {
    std::string_view page, expected;
  } const cases[] = {
      {"", ""},
      {"a &lt;b&gt; c", "a &lt;b&gt; c"},
      {"&lt;ZEB_NOW_ITEMNAME&gt; &lt;b&gt;", "<ZEB_NOW_ITEMNAME> &lt;b&gt;"},
      {"&gt;&LT;zeb_NOW_X&GT;&gt;", "&gt;<ZEB_NOW_X>&gt;"},
      {"%3CZEB_A%3E%3e%3cZEB_B%3e", "<ZEB_A>%3e<ZEB_B>"},
      {"&lt;ZEB_A &lt;ZEB_B&gt; &lt;i&gt; &gt;", "<ZEB_A <ZEB_B> &lt;i> &gt;"},
      {"&lt;ZEB_A%3e &lt;ZEB", "<ZEB_A%3e &lt;ZEB"},
      {"%3cZEB_A&gt; &amp;lt;ZEB_B", "<ZEB_A&gt; &amp;lt;ZEB_B"},
      {"&&lt;ZEB_é&gt;%%3cZEB_%3e%", "&<ZEB_é>%<ZEB_>%"},
      {"&lt;ZEB_A", "<ZEB_A"},
  };
  for (const auto& c : cases) EXPECT_EQ(UndoEscapedTags(c.page), c.expected) << c.page;
}

WallTime Moment() {
  return std::chrono::local_days(std::chrono::year(2026) / 3 / 2) + std::chrono::hours(9) +
         std::chrono::minutes(5) + std::chrono::seconds(33);
}

TEST(InsertRefreshHeader, BehindTheFirstHtmlLine) {
  std::string page = "<!-- <hTmL --><HEAD>\r\n<html>\r\n";
  InsertRefreshHeader(page, {30, true, "1.2.3"}, Moment());
  EXPECT_EQ(page,
            "<!-- <hTmL --><HEAD>\r\n"
            "<!-- ZEB last updated this file...09:05:05 02 March 2026 -->\r\n"
            "<meta content=\"Hexmoor ZEB 1.2.3\" name=\"RE-GENERATOR\">\r\n"
            "<meta HTTP-EQUIV=\"REFRESH\" CONTENT=\"30\">\r\n"
            "<meta http-equiv=\"pragma\" content=\"no-cache\">\r\n"
            "<meta http-equiv=\"Expires\" content=\"0\">\r\n"
            "<!-- End of ZEB modifications -->\r\n\r\n"
            "<html>\r\n");
}

TEST(InsertRefreshHeader, TagsOnlyWhenAskedFor) {
  for (const std::int32_t seconds : {0, -1}) {
    std::string page = "\r\n<html lang=\"en\">\r\n";
    InsertRefreshHeader(page, {seconds, false, "1.2.3"}, Moment());
    EXPECT_EQ(page.find("HTTP-EQUIV"), std::string::npos);
    EXPECT_EQ(page.find("http-equiv"), std::string::npos);
    EXPECT_TRUE(page.starts_with("\r\n<html lang=\"en\">\r\n<!-- ZEB last updated"));
  }
}

// The header's length changes with the month, and with what a pair asks for; pieces are cut accordingly.
TEST(PageTemplate, PutsTheHeaderOfTheMomentIn) {
  Station station;
  station.service.ShowTitle = "Evening";
  std::string text = "<html>\r\n";
  for (int i = 0; i < 2000; ++i) text += "[" + std::to_string(i) + "]<ZEB_SPECIAL_SHOWTITLE>";
  const PageTemplate page(text, {});
  for (int month = 1; month <= 12; ++month)
    for (const std::int32_t seconds : {0, 5, 30})
      for (const bool noCache : {false, true}) {
        ServiceSnapshot snapshot = *station.service.TakeSnapshot();
        snapshot.moment =
            std::chrono::local_days(std::chrono::year(2026) / month / 2) + std::chrono::minutes(month);
        const RefreshHeader header{seconds, noCache, "1.2.3"};
        std::string general = text;
        InsertRefreshHeader(general, header, snapshot.moment);
        UploadFileList files;
        const auto expanded = page.Expand(header, snapshot, "", files);
        ASSERT_TRUE(expanded);
        EXPECT_TRUE(*expanded == ExpandPage(general, snapshot, "", files)) << month << " " << seconds;
      }
}

// A locale's month could be written in any way.
TEST(PageTemplate, AHeaderWithBracketsIsExpandedWithItsPage) {
  Station station;
  LocaleFormats odd;
  odd.longDate = "[(\"<ZEB_NOW_ARTISTS>\"!=)\"<<\"]yyyy";
  InstallLocale(odd);
  const SnapshotPtr snapshot = station.service.TakeSnapshot();
  std::string general = "<html>\r\n[a]";
  UploadFileList files;
  const auto expanded = PageTemplate(general, {}).Expand({0, false, "1.2.3"}, *snapshot, "", files);
  InsertRefreshHeader(general, {0, false, "1.2.3"}, snapshot->moment);
  InstallLocale({});
  EXPECT_EQ(expanded, ExpandPage(general, *snapshot, "", files));
  EXPECT_NE(expanded->find("file...12:00:00 <<2026"), std::string::npos) << *expanded;
}

TEST(PageTemplate, GrowthEndsAtItsBound) {
  Station station;
  clsZEBItemInfo large = Item(std::string(1 << 20, 'x'), "", 7);
  station.service.SetCurrentItem(large);
  const SnapshotPtr snapshot = station.service.TakeSnapshot();
  std::string fits, grows = "<ZEB";  // the second is for the general expansion
  for (int i = 0; i < 15; ++i) fits += "<ZEB_NOW_ITEMNAME>";
  for (int i = 0; i < 4000; ++i) grows += "><ZEB_NOW_ITEMNAME";
  UploadFileList files;
  const auto page = PageTemplate(fits, {}).Expand({}, *snapshot, "", files);
  ASSERT_TRUE(page);
  EXPECT_EQ(page->size(), 15u << 20);
  for (const std::string& text : {fits + fits, fits + grows, grows}) {
    EXPECT_FALSE(PageTemplate(text, {}).Expand({}, *snapshot, "", files));
    EXPECT_FALSE(ExpandPage(text, *snapshot, "", files));
    EXPECT_LE(station.Expand(text).size(), kMaxPageBytes + (2 << 20));
  }
  // A simple text that is put in again and again.
  EXPECT_FALSE(PageTemplate("<ZEB_SIMPLETEXT><ZEB_SIMPLETEXT>", {}).Expand({}, *snapshot, fits, files));
}

TEST(InsertRefreshHeader, OtherPagesStayAsTheyAre) {
  for (const char* text : {"", "text\r\n", "\r\n<html>\n", "<HTM\r\nL>"}) {
    std::string page = text;
    InsertRefreshHeader(page, {30, true, "1.2.3"}, Moment());
    EXPECT_EQ(page, text);
  }
}

}  // namespace
}  // namespace zeb
