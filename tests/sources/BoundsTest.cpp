// What is far too long, by every way in: cut or left out, told in one line, and no work without end.
#include <algorithm>

#include "core/CsvCartStore.h"
#include "core/ItemBounds.h"
#include "sources/ZEB_FN.h"
#include "tests/sources/IntakeFixture.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

constexpr std::size_t kMegabyte = 1024u * 1024;

class Bounds : public IntakeFixture {
 protected:
  Bounds() { service.settings.ServiceName = "Demo FM"; }
  // The journal since the last call.
  std::vector<std::string> Notes() { return std::exchange(ports.person.notes, {}); }
  void NextMinute() { ports.loop.RunFor(std::chrono::minutes(2)); }
  const std::string megabyte = std::string(kMegabyte - 100, 'x');
};

TEST_F(Bounds, AFieldOfAMessageIsCutAtACharacterAndToldWithItsLength) {
  Say("SET_CURRENT_ITEM IType=7 StNotes=\"" + megabyte + "\"");
  EXPECT_EQ(service.CurrentItem()->Notes, std::string(kMaxFieldBytes, 'x'));
  EXPECT_EQ(Notes(), (std::vector<std::string>{"Demo FM: Notes has 1048476 bytes and is cut to 65536"}));
  NextMinute();
  // Bytes that become three each; "a" first, so that the bound lies inside a character.
  Say("SET_NEXT_ITEM ITitle=\"a" + std::string(300000, '\x80') + "\"");
  EXPECT_EQ(Next(1).size(), kMaxFieldBytes);
  EXPECT_TRUE(IsValidUtf8(Next(1)));
  EXPECT_EQ(Notes(), (std::vector<std::string>{"Demo FM: ItemName has 900001 bytes and is cut to 65536"}));
  NextMinute();
  // The joined artists are a field of their own.
  const std::string name(50000, 'n');
  Say("SET_PREVIOUS_ITEM AName1=" + name + " AName2=" + name);
  EXPECT_EQ((*service.PreviousItem(1))->Artists.size(), kMaxFieldBytes);
  EXPECT_EQ((*service.PreviousItem(1))->Artist2Name, name);
  EXPECT_EQ(Notes(), (std::vector<std::string>{"Demo FM: Artists has 100005 bytes and is cut to 65536"}));
  NextMinute();
  Say("SET_COMINGSOON_ITEM ITitle=x HDItem.Serialisation=\"RNotes={22}" + megabyte + "{22}\"");
  EXPECT_EQ(service.ComingSoonItem()->RDSNotes.size(), kMaxFieldBytes);
  EXPECT_EQ(Notes().size(), 1u);
}

TEST_F(Bounds, ARepeatedLongItemIsStillTheSameItem) {
  const std::string message = "SET_CURRENT_ITEM ITitle=" + megabyte;
  Say(message);
  EXPECT_EQ(window.informed, 1);
  for (int i = 0; i < 100; ++i) Say(message);
  EXPECT_EQ(window.informed, 1);
  EXPECT_EQ(Notes().size(), 1u);  // of a hundred
  NextMinute();
  Say(message);
  EXPECT_EQ(Notes(), (std::vector<std::string>{"Demo FM: ItemName has 1048476 bytes and is cut to 65536 "
                                               "(100 more since the last line)"}));
}

TEST_F(Bounds, PresenterAndShowAreCut) {
  Say("SET_PRESENTER PRESENTER=" + megabyte + " FULLNAME=" + megabyte);
  EXPECT_EQ(service.PresenterReference.size(), kMaxFieldBytes);
  EXPECT_EQ(service.PresenterFullName.size(), kMaxFieldBytes);
  EXPECT_EQ(Notes(),
            (std::vector<std::string>{"Demo FM: PresenterReference has 1048476 bytes and is cut to 65536"}));
  NextMinute();
  Say("SET_SHOW SHOW=1 TITLE=" + megabyte);
  EXPECT_EQ(service.ShowReference, "1");
  EXPECT_EQ(service.ShowTitle.size(), kMaxFieldBytes);
  EXPECT_EQ(Notes().size(), 1u);
}

TEST_F(Bounds, PicturesAreCountedAndNamesThatAreTooLongLeftOut) {
  std::string message = "ITitle=x PicFName=p0";
  for (int i = 2; i <= 99999; ++i) message += " " + std::to_string(i) + "PicFName=p" + std::to_string(i);
  clsZEBItemInfo item = Parsed(message);
  EXPECT_EQ(item.NumberPictures(), 255);
  EXPECT_EQ(item.PictureFileName(255), "p255");
  EXPECT_EQ(
      Notes(),
      (std::vector<std::string>{"Demo FM: an item has more than 255 pictures; the others are left out"}));
  NextMinute();
  item = Parsed("PicFName=a 2PicFName=" + std::string(5000, 'b') + " 3PicFName=c");
  EXPECT_EQ(item.NumberPictures(), 2);
  EXPECT_EQ(item.PictureFileName(2), "c");
  EXPECT_EQ(Notes(), (std::vector<std::string>{"Demo FM: the name of a picture has 5000 bytes and is left "
                                               "out; at most 4096 are read"}));
  NextMinute();
  // As many as fit are no reason for a line.
  message = "PicFName=p1";
  for (int i = 2; i <= 255; ++i) message += " " + std::to_string(i) + "PicFName=p" + std::to_string(i);
  EXPECT_EQ(Parsed(message).NumberPictures(), 255);
  EXPECT_TRUE(Notes().empty());
}

// Each of these lines is as long as a line may be; they are read in one pass, so dozens take no time.
TEST_F(Bounds, LinesMadeToTakeLongAreReadInOnePass) {
  const auto repeated = [](std::string_view text) {
    std::string line;
    while (line.size() + text.size() < kMegabyte) line += text;
    return line;
  };
  const std::string attacks[] = {repeated("1PicFName=\""),
                                 repeated("1PicFName= "),
                                 repeated("ITitle=\" AName1=\" "),
                                 repeated(" "),
                                 repeated("="),
                                 repeated("{7B}"),
                                 repeated("IDt=9"),
                                 repeated("a b=c "),
                                 "ITitle=" + repeated("{22}{7B}{"),
                                 "ITitle=" + repeated("\xF0\x9F\x98"),
                                 "IDt=" + repeated("1e9"),
                                 "HDItem.Serialisation=" + repeated("{20}PicFName="),
                                 "PicFName=" + repeated("./"),
                                 "EstStTm=" + repeated("0")};
  for (int round = 0; round < 2; ++round)
    for (const std::string& attack : attacks)
      for (const char* command :
           {"SET_CURRENT_ITEM ", "SET_NEXT_ITEM ", "SET_PRESENTER ", "SET LOG CURRENTITEMS,"})
        Say(command + attack);
  for (const std::string& text : {Current(), service.PresenterFullName}) {
    EXPECT_LE(text.size(), kMaxFieldBytes);
    EXPECT_TRUE(IsValidUtf8(text));
  }
  EXPECT_LE(Notes().size(), 2u);  // and of the repeated journal lines at most one a minute
}

TEST_F(Bounds, TheListsOfTwoItemsThatDifferLastAreComparedOnce) {
  clsZEBItemInfo one, two;
  for (int i = 0; i < 300; ++i) {
    one.AddPictureFile(std::string(4000, 'p') + std::to_string(i));
    two.AddPictureFile(std::string(4000, 'p') + std::to_string(i == 254 ? 9999 : i));
  }
  for (int i = 0; i < 1000; ++i) EXPECT_FALSE(one.IsSame(two, false));
}

TEST_F(Bounds, InformationFilesAreCutWhenTheyReachTheService) {
  const std::string huge(3 * kMegabyte, 'y');
  const auto feed = [&](const Result<SourceItems>& read) {
    ASSERT_TRUE(read);
    for (std::size_t i = 0; i < read.Value().items.size(); ++i)
      if (const auto& item = read.Value().items[i])
        i == 0 ? intake.SetCurrentItem(&*item, false) : intake.SetNextItem(&*item, false);
  };
  feed(ReadDallet50("TITLE=" + huge + "\nARTI=" + huge + "\n", 1));
  EXPECT_EQ(Current(), huge.substr(0, kMaxFieldBytes));
  EXPECT_EQ(service.CurrentItem()->Artists.size(), kMaxFieldBytes);
  EXPECT_EQ(Notes(), (std::vector<std::string>{"Demo FM: ItemName has 3145728 bytes and is cut to 65536, as "
                                               "are 2 other fields"}));
  const Result<GenericFields> fields = ReadGenericFields("[ZEBSource]\nItemTitle.Start=1\n", nullptr);
  ASSERT_TRUE(fields);
  feed(ReadGenericText("short\n" + huge, fields.Value()));
  EXPECT_EQ(Next(2).size(), kMaxFieldBytes);
}

TEST_F(Bounds, CartsAreCutWhenTheyAreRead) {
  ASSERT_TRUE(ports.files.CreateFolders("/data").Ok());
  const std::string huge(3 * kMegabyte, 'z');
  ASSERT_TRUE(ports.files.Write("/data/Carts.csv", "12," + huge + ",b,c,\"RNotes=" + huge + "\"\n").Ok());
  CsvCartStore carts(ports.files, ports.person, "/data/Carts.csv");
  clsZEBItemInfo item;
  ASSERT_TRUE(ParseItemMessage("HDRef=12", intake, carts, item));
  EXPECT_EQ(item->ItemName.size(), kMaxFieldBytes);
  EXPECT_EQ(carts.Find(12)->serialisation.size(), kMegabyte);
  EXPECT_EQ(Notes(),
            (std::vector<std::string>{"'/data/Carts.csv': a text of cart 12 has 3145728 bytes and is cut"}));
}

}  // namespace
}  // namespace zeb
