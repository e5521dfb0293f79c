#include <gtest/gtest.h>

#include "platform/common/LibxmlMarkup.h"
#include "sources/ZEB_FN.h"

namespace zeb {
namespace {

TEST(FileReaders, Dallet50) {
  const struct {
    const char *text, *title, *artists;
    float start;
  } cases[] = {
      {"RADIO=x\r\nTYPE=3\r\nECH=01:02:03\r\nTITLE=A=B\r\nARTIST=Jo", "A=B", "Jo", 3723},
      {"title=a\nArti=Somebody\n\nnothing\n=x\n", "a", "Somebody", 0},
      {"RADIO=\nTYPE=\n", "", "", 0},
      {"ECH=late\nTITLE=Caf\xE9", "Caf\u00E9", "", 0},
  };
  for (const auto& [text, title, artists, start] : cases) {
    const SourceItems read = ReadDallet50(text, 46000).Value();
    ASSERT_EQ(read.items.size(), 1u);
    const clsZEBItemInfo& item = *read.items[0];
    EXPECT_EQ(item->ItemName, title);
    EXPECT_EQ(item->Artists, artists);
    EXPECT_EQ(item->ItemStartTime, start);
    EXPECT_EQ(item->ItemType, 7);
    EXPECT_EQ(item->ItemStartDate, std::string(text).find("ECH") == std::string::npos ? 0 : 46000);
  }
}

TEST(FileReaders, Dallet51) {
  LibxmlMarkup markup;
  const SourceItems read =
      ReadDallet51(
          "<BroadcastMonitor><Next><titleName>n1</titleName></Next>"
          "<Current><startTime>2026-03-02T01:00:01.5</startTime><titleId>i</titleId><itemReference>r"
          "</itemReference><itemCode>c</itemCode><titleName>t &amp; u</titleName><artistName>a</artistName>"
          "<albumName>l</albumName><titleName>second</titleName></Current>"
          "<Current><titleName>x</titleName></Current><Other/>"
          "<Next><startTime>2026-13-02T01:00:00</startTime><x><titleName>deep</titleName></x></Next>"
          "</BroadcastMonitor>",
          markup)
          .Value();
  ASSERT_EQ(read.items.size(), 3u);
  const ItemFields& current = read.items[0]->Fields();
  EXPECT_EQ(current.ItemName, "t & u");
  EXPECT_EQ(current.Artists, "a");
  EXPECT_EQ(current.TitleID + current.ItemReference + current.ItemCode + current.AlbumName, "ircl");
  EXPECT_EQ(current.ItemStartDate, 46083);
  EXPECT_EQ(current.ItemStartTime, 3601);
  EXPECT_EQ(current.ItemType, 7);
  EXPECT_EQ((*read.items[1])->ItemName, "n1");
  EXPECT_EQ(read.items[1]->ItemIndexNumber, 1);
  EXPECT_EQ((*read.items[2])->ItemName, "");
  EXPECT_EQ((*read.items[2])->ItemStartDate, 0);
  EXPECT_FALSE(ReadDallet51("<Other/>", markup).Ok());
  EXPECT_FALSE(ReadDallet51("<BroadcastMonitor><Current>", markup).Ok());
  EXPECT_FALSE(ReadDallet51("<BroadcastMonitor/>", markup).Value().items[0]);
}

TEST(FileReaders, GenericText) {
  const GenericFields fields = ReadGenericFields(
                                   "[ZEBSource]\nItemStatus.Start=1\nItemStatus.Length=2\nItemType.Start=3\n"
                                   "ItemType.Length=7\nItemLength.Start=10\nItemLength.Length=8\n"
                                   "ItemHDReference.Prefix=#\nItemTitle.Prefix=[\nItemTitle.Suffix=]\n",
                                   nullptr)
                                   .Value();
  EXPECT_FALSE(fields.artist);
  const SourceItems read =
      ReadGenericText("  Song       3:45#12 [One]\r\n c sPOT  00:00:30#x[Now]\rA jingle 1:x     \n", fields)
          .Value();
  ASSERT_EQ(read.items.size(), 4u);  // the piece behind the last line end counts, and is empty
  EXPECT_EQ((*read.items[0])->ItemName, "Now");
  EXPECT_EQ((*read.items[0])->ItemType, 4);
  EXPECT_EQ((*read.items[0])->CartItemLength, 30);
  EXPECT_EQ((*read.items[1])->ItemName, "One");
  EXPECT_EQ((*read.items[1])->ItemType, 7);
  EXPECT_EQ((*read.items[1])->CartItemLength, 225);
  EXPECT_EQ((*read.items[1])->CartNumber, 12);
  EXPECT_EQ((*read.items[2])->ItemType, 2);
  EXPECT_EQ((*read.items[2])->CartItemLength, 0);
  EXPECT_EQ(read.items[2]->ItemIndexNumber, 2);
  EXPECT_EQ(ReadGenericText("", fields).Value().items.size(), 2u);
  const SourceItems many = ReadGenericText(std::string(59, '\n'), fields).Value();
  EXPECT_EQ(many.items.size(), 51u);
  EXPECT_EQ(many.dropped, 10u);
  EXPECT_FALSE(ReadGenericFields("[ZEBSource]\nItemTitle.Start=0\n", nullptr).Ok());
}

}  // namespace
}  // namespace zeb
