#include <gtest/gtest.h>

#include "history/HistoryRecord.h"
#include "tests/core/ItemTexts.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

// Every field set, each to something of its own.
clsZEBItemInfo FullItem() {
  clsZEBItemInfo item;
  ItemFields& f = item.Edit();
  int number = 0;
  for (std::string* text : TextsOf(f)) *text = "Wert " + std::to_string(++number) + " \"=ü\"\r\n\t{3D}";
  f.CartNumber = 4711;
  f.ItemType = -2147483647;
  f.ItemStartDate = 46000;
  f.ItemStartTime = 86399.5F;
  f.CartItemLength = 0.25F;
  f.CopyrightTotalDuration = 201.125F;
  f.CopyrightMusicDuration = 199;
  item.AddPictureFile("/p/a.jpg");
  item.AddPictureFile("C:\\Bilder\\Ü.png");
  item.AddAdditionalFile("/p/one.css");
  return item;
}

TEST(HistoryRecordTest, GivesEveryFieldBack) {
  const clsZEBItemInfo item = FullItem();
  const auto read = ReadItemRecord(WriteItemRecord(item));
  ASSERT_TRUE(read);
  EXPECT_TRUE(item.IsSame(*read, true));
  // What IsSame is lenient about.
  EXPECT_EQ((*read)->ItemStartDate, 46000);
  EXPECT_EQ((*read)->ItemStartTime, 86399.5F);
  EXPECT_EQ(read->NumberPictures(), 2);
  EXPECT_EQ(read->PictureFileName(2), "C:\\Bilder\\Ü.png");
  EXPECT_EQ(read->NumberAdditionalFiles(), 1);
  EXPECT_EQ(read->AdditionalFile(1), "/p/one.css");
  EXPECT_EQ(WriteItemRecord(*read), WriteItemRecord(item));
}

TEST(HistoryRecordTest, MakesNothingOfAnItemThatHoldsNothing) {
  clsZEBItemInfo item;
  item.ItemIndexNumber = 7;
  EXPECT_EQ(WriteItemRecord(item), "");
  EXPECT_TRUE(ReadItemRecord(""));
  // The slot is no part of the record: one that moves on is kept once.
  clsZEBItemInfo full = FullItem(), moved = FullItem();
  moved.ItemIndexNumber = 3;
  EXPECT_EQ(WriteItemRecord(full), WriteItemRecord(moved));
}

TEST(HistoryRecordTest, RefusesBytesThatAreNoRecord) {
  const std::string whole = WriteItemRecord(FullItem());
  EXPECT_FALSE(ReadItemRecord("nothing of ours"));
  EXPECT_FALSE(ReadItemRecord(std::string("\x01\x01\xFF\xFF\xFF\xFF\xFF\xFF", 8)));
  for (std::size_t cut = 0; cut < whole.size(); ++cut) ReadItemRecord(whole.substr(0, cut));  // no crash
  EXPECT_FALSE(ReadItemRecord(whole.substr(0, whole.size() - 1)));
  // A field of a later version.
  const auto later = ReadItemRecord(std::string("\x01\xC8\x02xy\x01\x01T", 8));
  ASSERT_TRUE(later);
  EXPECT_EQ((*later)->ItemName, "T");
}

TEST(HistoryRecordTest, BoundsWhatOneItemMayTake) {
  clsZEBItemInfo item;
  for (int i = 0; i < 1000; ++i) item.AddPictureFile("/" + std::string(200, 'p') + std::to_string(i));
  std::string notes;
  for (int i = 0; i < 10000; ++i) notes += "ü";
  item.Edit().Notes = notes;
  const std::string record = WriteItemRecord(item);
  EXPECT_LE(record.size(), kMaxHistoryRecord);
  const auto read = ReadItemRecord(record);
  ASSERT_TRUE(read);
  EXPECT_EQ((*read)->Notes.size(), kMaxHistoryText);
  EXPECT_TRUE(IsValidUtf8((*read)->Notes));
  EXPECT_GT(read->NumberPictures(), 200);
  for (int i = 1; i <= read->NumberPictures(); ++i)  // whole names only
    EXPECT_EQ(read->PictureFileName(i), item.PictureFileName(i));
}

TEST(HistoryRecordTest, GivesTheWordsOfASnapshotBack) {
  ServiceSnapshot snapshot;
  snapshot.ServiceName = "Radio Ümlaut";
  snapshot.NoPictureFileName = "none.jpg";
  snapshot.LoggingPath = "/logs";
  snapshot.PresenterReference = "17";
  snapshot.PresenterFullName = "Zoë";
  snapshot.ShowReference = "4";
  snapshot.ShowTitle = "Frühstück";
  snapshot.nextItems.resize(50);
  snapshot.previousItems.resize(2);
  ServiceSnapshot read;
  EXPECT_TRUE(ReadWordsRecord(WriteWordsRecord(snapshot), read));
  EXPECT_EQ(read.ServiceName + "|" + read.NoPictureFileName + "|" + read.LoggingPath + "|" +
                read.PresenterReference + "|" + read.PresenterFullName + "|" + read.ShowReference + "|" +
                read.ShowTitle,
            "Radio Ümlaut|none.jpg|/logs|17|Zoë|4|Frühstück");
  EXPECT_EQ(read.nextItems.size(), 50u);
  EXPECT_EQ(read.previousItems.size(), 2u);
  EXPECT_FALSE(ReadWordsRecord("x", read));
}

TEST(HistoryRecordTest, CutsTextsBetweenCharacters) {
  EXPECT_EQ(HistoryText("aüb", 2), "a");
  EXPECT_EQ(HistoryText("aüb", 3), "aü");
  EXPECT_EQ(HistoryText("aüb", 4), "aüb");
  EXPECT_EQ(HistoryText("\xE4\xF6", 10), "äö");  // as sent in another character set
  EXPECT_LE(HistoryText(std::string(100, '\xE4'), 101).size(), 101u);
  EXPECT_EQ(HistoryText(std::string(10, '\x80'), 0), "");
}

}  // namespace
}  // namespace zeb
