#include <gtest/gtest.h>

#include <stdexcept>

#include "core/clsZEBItemInfo.h"
#include "text/LetterCase.h"

namespace zeb {
namespace {

struct TextField {
  std::string ItemFields::*field;
  std::string name;
};

// clang-format off
#define TEXT(name) {&ItemFields::name, #name}
// The custom fields, which are never published, come last.
const std::vector<TextField> kTexts = {
  TEXT(CartLine1), TEXT(CartLine2), TEXT(CartLine3), TEXT(CartArtistsHREF), TEXT(ItemName), TEXT(ItemHREF),
  TEXT(TitleID), TEXT(AlbumName), TEXT(ItemReference), TEXT(SchedulerReference), TEXT(ItemCode),
  TEXT(Artist1Name), TEXT(Artist2Name), TEXT(Artist3Name), TEXT(Artists), TEXT(Artist1HREF),
  TEXT(Artist2HREF), TEXT(Artist3HREF), TEXT(OnlineStoreReference), TEXT(PictureHREF),
  TEXT(CopyrightProductTitle), TEXT(CopyrightMusicTitle), TEXT(CopyrightRecordLabel),
  TEXT(CopyrightRecordNumber), TEXT(CopyrightComposer), TEXT(CopyrightPerformer), TEXT(CopyrightPublisher),
  TEXT(CopyrightCode), TEXT(Notes), TEXT(WebNotes), TEXT(RDSNotes), TEXT(DABNotes), TEXT(CustomField1),
  TEXT(CustomField2), TEXT(CustomField3),
};
#undef TEXT
// clang-format on
constexpr std::size_t kCustomFields = 3;

constexpr float ItemFields::*kReals[] = {&ItemFields::CartItemLength, &ItemFields::CopyrightTotalDuration,
                                         &ItemFields::CopyrightMusicDuration};
constexpr std::int32_t ItemFields::*kIntegers[] = {&ItemFields::CartNumber, &ItemFields::ItemType};

clsZEBItemInfo FullItem() {
  clsZEBItemInfo item;
  int number = 0;
  for (const TextField& text : kTexts) item.Edit().*text.field = "Value of field " + std::to_string(++number);
  for (const auto field : kReals) item.Edit().*field = static_cast<float>(++number) + 0.5F;
  for (const auto field : kIntegers) item.Edit().*field = ++number;
  item.Edit().ItemStartDate = 46083;  // 2 March 2026
  item.Edit().ItemStartTime = 43200;
  item.ItemIndexNumber = 3;
  item.AddPictureFile("a.jpg");
  item.AddPictureFile("b.jpg");
  item.AddAdditionalFile("c.pdf");
  return item;
}

TEST(ItemInfo, TextElementsResolveInAnyCase) {
  const clsZEBItemInfo item = FullItem();
  std::size_t published = kTexts.size() - kCustomFields;
  for (const auto& [field, name] : kTexts) {
    const std::string expected = published > 0 ? item.Fields().*field : "";
    for (const std::string& written : {name, LowerCase(name), UpperCase(name)})
      EXPECT_EQ(item.GetElementByName(written, true), expected) << written;
    if (published > 0) --published;
  }
}

TEST(ItemInfo, OtherElements) {
  clsZEBItemInfo item = FullItem();
  ItemFields& fields = item.Edit();
  fields.ItemName = "Name";
  fields.CartLine1 = "L1";
  fields.CartLine2 = "L2";
  fields.CartLine3 = "L3";
  fields.ItemType = 12;
  fields.CartNumber = -7;
  fields.CartItemLength = 3.5F;
  fields.CopyrightMusicDuration = 180;
  fields.CopyrightTotalDuration = 0;
  fields.ItemStartTime = 45296.5F;
  const std::vector<std::string> nameAndValue({"itemtitle=Name",
                                               "\xC4\xB0temName=Name",
                                               "cartdesc1=L1",
                                               "CartDesc2=L2",
                                               "cartdesc3=L3",
                                               "cartdescription1=L1",
                                               "cartdescription2=L2",
                                               "CARTDESCRIPTION3=L3",
                                               "CartNumber=-7",
                                               "cartitemlength=3.5",
                                               "copyrightmusicduration=180",
                                               "copyrighttotalduration=0",
                                               "itemindexnumber=3",
                                               "numberpictures=2",
                                               "itemtype=Cart",
                                               "itemstartdate=02/03/2026",
                                               "itemstarttime=45296.5",
                                               "itemstartdatetime=02/03/2026 12:34:56",
                                               "ItemStartDateTimeXML=2026-03-02T12:34:56",
                                               "picturefilename=a.jpg",
                                               "picturefilename0=a.jpg",
                                               "picturefilename_0=a.jpg",
                                               "picturefilename1=a.jpg",
                                               "PictureFileName_2=b.jpg",
                                               "picturefilename_x=a.jpg",
                                               "picturefilename9=",
                                               "picturefilename-1=",
                                               "picturefilename99999999999=",
                                               "NotesRTF=",
                                               "itemnam=",
                                               "itemnamee=",
                                               "="});
  for (const std::string& line : nameAndValue) {
    const std::size_t end = line.find('=');
    EXPECT_EQ(item.GetElementByName(line.substr(0, end), true), line.substr(end + 1)) << line;
  }
  EXPECT_EQ(item.GetElementByName("ITEMTYPE", false), "12");
  EXPECT_EQ(item.GetElementByName(std::string(100000, 'a'), true), "");

  std::string line = "now: ";
  item.AppendElementByName(line, "picturefilename2", true);
  item.AppendElementByName(line, "nothing", true);
  EXPECT_EQ(line, "now: b.jpg");
}

TEST(ItemInfo, ItemTypeTexts) {
  const std::vector<std::string> texts = {"", "", "Cart", "Jingle", "Advert", "",       "",       "Song",
                                          "", "", "",     "",       "Cart",   "Jingle", "Advert", ""};
  for (std::size_t type = 0; type < texts.size(); ++type)
    EXPECT_EQ(ItemTypeText(static_cast<std::int32_t>(type)), texts[type]) << type;
  EXPECT_EQ(ItemTypeText(-2), "");
}

TEST(ItemInfo, AStartDateNeverSetIsEmptyInAllItsForms) {
  clsZEBItemInfo item;
  item.Edit().ItemStartTime = 10;
  for (const char* name : {"itemstartdate", "itemstartdatetime", "itemstartdatetimexml"})
    EXPECT_EQ(item.GetElementByName(name, true), "") << name;
}

TEST(ItemInfo, EveryFieldDecidesWhetherItemsAreTheSame) {
  const clsZEBItemInfo item = FullItem();
  std::vector<std::function<void(clsZEBItemInfo&)>> changes = {
      [](clsZEBItemInfo& changed) { ++changed.ItemIndexNumber; },
      [](clsZEBItemInfo& changed) { changed.SetPictureFileName(2, "B.jpg"); },
      [](clsZEBItemInfo& changed) { changed.SetAdditionalFile(1, "d.pdf"); }};
  for (const TextField& text : kTexts) {
    changes.emplace_back([&](clsZEBItemInfo& changed) { changed.Edit().*text.field += "x"; });
    changes.emplace_back([&](clsZEBItemInfo& changed) { (changed.Edit().*text.field)[0] = 'v'; });
  }
  for (const auto field : kReals)
    changes.emplace_back([=](clsZEBItemInfo& changed) { changed.Edit().*field += 0.25F; });
  for (const auto field : kIntegers)
    changes.emplace_back([=](clsZEBItemInfo& changed) { ++(changed.Edit().*field); });

  EXPECT_TRUE(item.IsSame(FullItem(), true));
  EXPECT_TRUE(item.IsSame(item.Copy(), true));
  for (std::size_t i = 0; i < changes.size(); ++i) {
    clsZEBItemInfo changed = item.Copy();
    changes[i](changed);
    EXPECT_FALSE(item.IsSame(changed, false)) << i;
    EXPECT_FALSE(changed.IsSame(item, false)) << i;
  }
}

TEST(ItemInfo, StartMomentsDifferBeyondOneSecondWhenAskedFor) {
  struct {
    std::int32_t day;
    float time;
    bool same;
  } const cases[] = {{46083, 43200.5F, true},  {46083, 43201, true},  {46083, 43199, true},
                     {46083, 43201.5F, false}, {46084, 43200, false}, {46082, 43200, false}};
  const clsZEBItemInfo item = FullItem();
  for (const auto& [day, time, same] : cases) {
    clsZEBItemInfo other = FullItem();
    other.Edit().ItemStartDate = day;
    other.Edit().ItemStartTime = time;
    EXPECT_EQ(item.IsSame(other, true), same) << day << " " << time;
    EXPECT_TRUE(item.IsSame(other, false)) << day << " " << time;
  }
  clsZEBItemInfo beforeMidnight = FullItem(), afterMidnight = FullItem();
  beforeMidnight.Edit().ItemStartTime = 86399.5F;
  afterMidnight.Edit().ItemStartDate = 46084;
  afterMidnight.Edit().ItemStartTime = 0.5F;
  EXPECT_TRUE(beforeMidnight.IsSame(afterMidnight, true));
}

TEST(ItemInfo, ListsAreComparedOverTheAskedRecordsCount) {
  const clsZEBItemInfo item = FullItem();
  clsZEBItemInfo morePictures = FullItem(), moreFiles = FullItem();
  morePictures.AddPictureFile("c.jpg");
  moreFiles.AddAdditionalFile("d.pdf");
  for (const clsZEBItemInfo& more : {morePictures, moreFiles}) {
    EXPECT_TRUE(item.IsSame(more, true));
    EXPECT_FALSE(more.IsSame(item, true));
  }
  EXPECT_TRUE(clsZEBItemInfo().IsSame(clsZEBItemInfo(), true));
  clsZEBItemInfo emptyButMade;
  emptyButMade.Edit();
  EXPECT_TRUE(clsZEBItemInfo().IsSame(emptyButMade, true));
}

TEST(ItemInfo, ListsRefuseRepeatsAndIndexesOutside) {
  clsZEBItemInfo item;
  EXPECT_TRUE(item.AddPictureFile("a.jpg"));
  EXPECT_FALSE(item.AddPictureFile("A.JPG"));
  EXPECT_TRUE(item.AddPictureFile("\xC3\x84.jpg"));
  EXPECT_FALSE(item.AddPictureFile("\xC3\xA4.jpg"));
  EXPECT_EQ(item.NumberPictures(), 2);
  item.SetPictureFileName(0, "zero");
  item.SetPictureFileName(3, "three");
  EXPECT_EQ(item.PictureFileName(0), "");
  EXPECT_EQ(item.PictureFileName(3), "");
  EXPECT_EQ(item.NumberPictures(), 2);
  EXPECT_THROW(item.PictureFileName(-1), std::out_of_range);
  EXPECT_THROW(item.SetAdditionalFile(-1, "x"), std::out_of_range);
  item.ClearPictures();
  EXPECT_EQ(item.NumberPictures(), 0);
  EXPECT_TRUE(item.AddPictureFile("A.JPG"));
}

TEST(ItemInfo, LongListsKeepTheRulesAndEndAtTheirLimit) {
  clsZEBItemInfo item;
  for (int round = 0; round < 2; ++round)
    for (std::size_t i = 0; i < kMaxItemFiles; ++i)
      item.AddAdditionalFile((round == 0 ? "file" : "FILE") + std::to_string(i));
  EXPECT_EQ(item.NumberAdditionalFiles(), static_cast<int>(kMaxItemFiles));
  item.AddAdditionalFile("one more");
  EXPECT_EQ(item.NumberAdditionalFiles(), static_cast<int>(kMaxItemFiles));

  clsZEBItemInfo fifty;
  for (int i = 1; i <= 50; ++i) fifty.AddPictureFile("p" + std::to_string(i));
  fifty.SetPictureFileName(50, "new");
  EXPECT_FALSE(fifty.AddPictureFile("NEW"));
  EXPECT_TRUE(fifty.AddPictureFile("p50"));
}

TEST(ItemInfo, EntriesThatBecameEqualCollapseInTheCopy) {
  clsZEBItemInfo item;
  for (const char* name : {"a", "b", "c"}) item.AddPictureFile(name);
  item.SetPictureFileName(2, "A");
  EXPECT_EQ(item.NumberPictures(), 3);
  const clsZEBItemInfo copy = item.Copy();
  ASSERT_EQ(copy.NumberPictures(), 2);
  EXPECT_EQ(copy.PictureFileName(1), "a");
  EXPECT_EQ(copy.PictureFileName(2), "c");
  EXPECT_EQ(item.NumberPictures(), 3);
}

TEST(ItemInfo, CopiesAreIndependentBothWays) {
  clsZEBItemInfo item = FullItem();
  clsZEBItemInfo copy = item.Copy();
  item.Edit().ItemName = "changed in the first";
  copy.Edit().Notes = "changed in the copy";
  copy.AddPictureFile("copy.jpg");
  item.SetAdditionalFile(1, "item.pdf");
  EXPECT_EQ(copy->ItemName, FullItem()->ItemName);
  EXPECT_EQ(item->Notes, FullItem()->Notes);
  EXPECT_EQ(item.NumberPictures(), 2);
  EXPECT_EQ(copy.AdditionalFile(1), "c.pdf");
  EXPECT_EQ(copy.ItemIndexNumber, 3);
}

}  // namespace
}  // namespace zeb
