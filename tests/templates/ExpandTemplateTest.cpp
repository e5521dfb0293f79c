#include <gtest/gtest.h>

#include "core/OutputTypes.h"
#include "tests/templates/StationFixture.h"

namespace zeb {
namespace {

struct Case {
  std::string_view text, expected;
};

void ExpectExpansions(Station& station, const std::vector<Case>& cases) {
  for (const Case& c : cases) EXPECT_EQ(station.Expand(c.text, "S<ZEB_SIMPLETEXT>T"), c.expected) << c.text;
}

TEST(ExpandTemplate, SectionsWithoutAConditionLoseTheirBrackets) {
  Station station;
  ExpectExpansions(station, {{"", ""},
                             {"[plain]", "plain"},
                             {"[]", ""},
                             {"a[b", "ab"},
                             {"a[", "a["},
                             {"[", "["},
                             {"x]y", "x]y"},
                             {"[[plain]", "[[plain]"},
                             {"[[[plain]", "[[plain"},
                             {"a[[", "a[["},
                             {"[a[b]c]", "a[bc]"},
                             {"[][][é]", "é"},
                             {"[(ZEB)]", "(ZEB)"}});
}

TEST(ExpandTemplate, ConditionsOnItems) {
  Station station;
  ExpectExpansions(
      station,
      {{"[(<ZEB_NOW_ITEMTYPE>=Song)x]", "x"},
       {"[(<ZEB_NOW_ItemType>=PELMORA)x]", "x"},
       {"[(<ZEB_NOW_ITEMTYPE>!=song)x]", ""},
       {"[(<ZEB_NEXT_ITEMTYPE>=Voice)x][(<ZEB_NEXT_ITEMTYPE>=Jingle)y]", "xy"},
       {"[(<ZEB_NEXT2_ITEMTYPE>=SpotSet)x]", "x"},
       {"[(<ZEB_PREV_ITEMTYPE>=Cart)x]", ""},  // the word tests code 2, the item has 12
       {"[(<ZEB_PREV2_ITEMTYPE>=)x][(<ZEB_PREV2_ITEMTYPE>=anything)y]", "xy"},
       {"[(<ZEB_NOW_ARTISTS>=Abba)x]", "x"},
       {"[(<ZEB_COMING_ARTISTS>=Coming Artist)x]", ""},
       {"[(<ZEB_COMING_ARTISTS>!=)x]", "x"},
       {"[(<ZEB_NEXT2_ARTISTS>!=)x][(<ZEB_NEXT2_ARTISTS>=)y]", "y"},
       {"[(<ZEB_NEXT2_ARTISTS>)x][(<ZEB_COMING_ARTISTS>)y]", "y"},  // no operator: "!="
       {"[(<ZEB_NOW_ITEMTYPE>=Song)[(<ZEB_NOW_NOTES>!=)x]]", "[(No <ZEB_NOW_ITEMNAME> [in] here!=)x]"},
       {"[(<ZEB_NOW_ITEMTYPE>=Song)open", "open"},
       {"[(<ZEB_NOW_ARTISTS>=no end]", ""},
       {"[(<ZEB_NOW_ARTISTS>!=no end]", "(ABBA!=no end"},
       {"[(<ZEB_NEXT3_ITEMNAME>!=)x]", "(ZEB_NEXT3_ITEMNAME!=)x"},
       {"[(<ZEB_Now_ARTISTS>!=)x]", "(ZEB_Now_ARTISTS!=)x"},
       {"[(<ZEB_SIMPLETEXT>=)x]", "(ST=)x"},
       {"[(<ZEB>=)x]", "(ZEB=)x"},
       {"[(<ZEB_NOW_ARTISTS=)x]", "x"}});  // the condition has no ">", so all but "[" is its tag
}

TEST(ExpandTemplate, ConditionsOnSpecialElements) {
  Station station;
  ExpectExpansions(station, {{"[(<ZEB_SPECIAL_SHOWTITLE>!=)On: <ZEB_SPECIAL_SHOWTITLE>]", "On: Breakfast"},
                             {"[(<ZEB_SPECIAL_SHOWTITLE>=Breakfast)x]", ""},
                             {"[(<ZEB_SPECIAL_SHOWREFERENCE>=42)x]", "x"},
                             {"[(<ZEB_SPECIAL_PresenterReference>=)x]", "x"},
                             {"[(<ZEB_SPECIAL_CURRENTDATETIME>!=)x]", ""},
                             {"[(<ZEB_SPECIAL_SERVICENAME>!=)x]", ""},
                             {"[(<ZEB_SPECIAL>!=)x]", ""},
                             {"[(<ZEB_SPECIALS_SHOWTITLE>!=)x]", "(ZEB_SPECIALS_SHOWTITLE!=)x"}});
}

TEST(ExpandTemplate, Tags) {
  Station station;
  ExpectExpansions(
      station,
      {{"<ZEB_NOW_ITEMNAME>", "Crème Brûlée"},
       {"<ZEB_NOWPLAYING_ItemName>!", "Crème Brûlée!"},
       {"<ZEB_NOW_NOTES>", "No <ZEB_NOW_ITEMNAME> [in] here"},
       {"<ZEB_NEXT_ITEMNAME>|<ZEB_NEXT0_ITEMNAME>|<ZEB_NEXT2_ITEMNAME>", "Next One|Next One|Next Two"},
       {"<ZEB_PREVIOUS2_ITEMNAME>|<ZEB_PREV2_ITEMNAME>|", "Before||"},
       {"<ZEB_NEXT3_ITEMNAME>|<ZEB_NEXT99999999999_X>", "ZEB_NEXT3_ITEMNAME|ZEB_NEXT99999999999_X"},
       {"<ZEB_NEXé2_ITEMNAME>", "Next Two"},
       {"<ZEBéNOW_ITEMNAME>", "Crème Brûlée"},  // the fifth character on is the slot
       {"<ZEB_COMINGUP_ITEMNAME>", "Soon"},
       {"<ZEB_NOW_ITEMTYPE>", "Song"},
       {"<ZEB_NOW_UNKNOWN>|<ZEB_NOW>|<ZEB_NOW_>", "||"},
       {"<ZEB_FOO_BAR>|<ZEB>|<ZEB_>|<ZEBRA>", "ZEB_FOO_BAR|ZEB|ZEB_|ZEBRA"},
       {"<ZEB_Now_ItemName>", "ZEB_Now_ItemName"},
       {"<ZEB_SPECIAL_SERVICENAME>", "Radio Ümlaut"},
       {"<ZEB_SPECIAL_PRESENTERFULLNAME>", "Zoë"},
       {"<ZEB_SPECIAL_NOW_HH:NN>|<ZEB_SPECIAL_now_hh:nn>", "12:00|12:00"},
       {"<ZEB_SPECIAL_LastUpdateNumber>", "Unknown tag LastUpdateNumber"},
       {"<ZEB_SPECIAL>", "Unknown tag ZEB_SPECIAL"},
       {"<ZEB_SIMPLETEXT>|<ZEB_SIMPLETEXT>", "ST|ST"},
       {"<ZEB_SIMPLE>", "ZEB_SIMPLE"},
       {"<<ZEB_NOW_ITEMNAME>", "<<ZEB_NOW_ITEMNAME>"},
       {"<<<ZEB_NOW_ITEMNAME>", "<<Crème Brûlée"},
       {"<é<ZEB_NOW_ITEMNAME>", "<éCrème Brûlée"},
       {"<b><ZEB_NOW_ITEMTYPE></b><", "<b>Song</b><"},
       {"<ZEB_[(<ZEB_NOW_ITEMTYPE>=Song)NOW]_ARTISTS>", "ABBA"}});
}

TEST(ExpandTemplate, ATagThatIsNeverClosedIsReplacedOnce) {
  Station station;
  // The first name has 16 characters, so the text goes on at the 17th.
  ExpectExpansions(station, {{"é <ZEB_NOW_ITEMTYPE", "é SongYPE"},
                             {"<ZEB_FOO", "ZEB_FOOO"},
                             {"<ZEB_NOW_ITEMTYPE>....<ZEB_NOW_é", "Song....ZEB_NOW_é"}});
}

TEST(ExpandTemplate, TheDefaultSimpleText) {
  Station station;
  EXPECT_EQ(station.Expand(kDefaultSimpleTextFormat),
            "Crème Brûlée by ABBA...No <ZEB_NOW_ITEMNAME> [in] here(Coming soon, Coming Artist)");
  station.service.SetCurrentItem(Item("Station call", "", 3));
  EXPECT_EQ(station.Expand(kDefaultSimpleTextFormat), "Station call(Coming soon, Coming Artist)");
}

TEST(ExpandTemplate, PicturesAndFilesAreCollectedOnce) {
  Station station;
  EXPECT_EQ(
      station.Expand("<ZEB_NOW_PICTUREFILENAME_2>,<ZEB_NOW_PICTUREFILENAME>,<ZEB_NOW_PICTUREFILENAME_2>,"
                     "<ZEB_NOW_PICTUREFILENAME_3>,<ZEB_NOW_PICTUREFILENAME_-1>"),
      "b.jpg,a.jpg,b.jpg,nopicture.jpg,nopicture.jpg");
  EXPECT_EQ(station.uploads.Paths(), (std::vector<std::string>{"C:\\More\\one.css", "C:\\More\\two.js",
                                                               "C:\\Pics\\b.jpg", "C:\\Pics\\a.jpg"}));

  EXPECT_EQ(station.Expand("<ZEB_NOW_PictureFileName>"), "C:\\Pics\\a.jpg");
  EXPECT_EQ(station.uploads.Paths().size(), 2U);

  station.uploads.Add("c:\\more\\ONE.css");
  EXPECT_EQ(station.uploads.Paths().size(), 2U);

  station.Expand("[(<ZEB_NOW_ARTISTS>!=)x]");  // a condition shows nothing of the item
  EXPECT_TRUE(station.uploads.Empty());
  station.Expand("<ZEB_SIMPLETEXT>", "<ZEB_NOW_ARTISTS>");
  EXPECT_EQ(station.uploads.Paths().size(), 2U);
}

TEST(ExpandTemplate, ValuesForUrls) {
  Station station;
  const ValueEncoding latin{true, CharacterSet::kIso8859_1};
  EXPECT_EQ(
      station.Expand("?é=<ZEB_NOW_ITEMNAME>&p=<ZEB_NOW_PICTUREFILENAME>&s=<ZEB_SPECIAL_PRESENTERFULLNAME>",
                     "", latin),
      "?é=Cr%E8me+Br%FBl%E9e&p=a.jpg&s=Zo%EB");
  EXPECT_EQ(
      station.Expand("<ZEB_NOW_ITEMNAME>|<ZEB_FOO BAR>|<ZEB_SIMPLETEXT>", " <ZEB_NOW_ITEMTYPE> ", {true}),
      "Cr%C3%A8me+Br%C3%BBl%C3%A9e|ZEB_FOO BAR| Song ");
}

TEST(ExpandTemplate, OnlyBlanksAreTrimmed) {
  Station station;
  for (const auto& [value, expected] : std::vector<std::pair<std::string, std::string>>{
           {"   ", ""}, {"", ""}, {"  a b  ", "a b"}, {"\t a\n", "\t a\n"}, {"\u00a0x ", "\u00a0x"}}) {
    station.service.SetComingSoonItem(Item(value, "", 7));
    EXPECT_EQ(station.Expand("(<ZEB_COMING_ITEMNAME>)"), "(" + expected + ")");
  }
}

TEST(JoinArtistNames, EveryCombination) {
  struct {
    std::string a, b, c, joined;
  } const cases[] = {{"", "", "", ""},          {" A ", "", "", "A"},
                     {"A", "B", "", "A and B"}, {"A", " B ", "C", "A, B and C"},
                     {"", "B", "C", "B and C"}, {"A", "", "C ", "A and C"},
                     {"", "", " C ", " C "},    {"A", " ", "", "A and "},
                     {" ", "B", "", "B"}};
  for (const auto& c : cases) {
    clsZEBItemInfo item;
    item.Edit().Artist1Name = c.a;
    item.Edit().Artist2Name = c.b;
    item.Edit().Artist3Name = c.c;
    EXPECT_EQ(JoinArtistNames(item), c.joined);
  }
}

}  // namespace
}  // namespace zeb
