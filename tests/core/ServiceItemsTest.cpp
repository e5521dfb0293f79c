#include "tests/core/ServiceFixture.h"

namespace zeb {
namespace {

using ServiceItemsTest = ServiceTest;

clsZEBItemInfo Item(const std::string& name, std::int32_t type = 7) {
  clsZEBItemInfo item;
  item.Edit().ItemName = name;
  item.Edit().ItemType = type;
  return item;
}

TEST_F(ServiceItemsTest, CurrentItemsMoveIntoTheHistoryNewestFirst) {
  service_.SetItemCount(3);
  for (const char* name : {"a", "b", "c", "d", "e"}) service_.SetCurrentItem(Item(name));
  EXPECT_EQ(service_.CurrentItem()->ItemName, "e");
  EXPECT_EQ((*service_.PreviousItem(1))->ItemName, "d");
  EXPECT_EQ((*service_.PreviousItem(2))->ItemName, "c");
  EXPECT_EQ((*service_.PreviousItem(3))->ItemName, "b");
  service_.SetItemCount(4);
  EXPECT_EQ((*service_.PreviousItem(4))->ItemName, "");
}

TEST_F(ServiceItemsTest, AnItemWithoutTypeDoesNotEnterTheHistory) {
  service_.SetCurrentItem(Item("link", 0));
  service_.SetCurrentItem(Item("song"));
  EXPECT_EQ((*service_.PreviousItem(1))->ItemName, "");
}

TEST_F(ServiceItemsTest, AnItemOfAMovingSlotArrivesWhole) {
  service_.SetCurrentItem(Item("a"));
  service_.SetCurrentItem(Item("b"));
  service_.SetCurrentItem(*service_.PreviousItem(1));
  EXPECT_EQ(service_.CurrentItem()->ItemName, "a");
  EXPECT_EQ((*service_.PreviousItem(1))->ItemName, "b");
}

TEST_F(ServiceItemsTest, SlotsAreNumberedAndBounded) {
  EXPECT_EQ(service_.ItemCount(), 1);
  service_.SetItemCount(0);
  EXPECT_EQ(service_.ItemCount(), 1);
  service_.SetItemCount(51);
  EXPECT_EQ(service_.ItemCount(), kMaxNextItems);
  for (const int index : {1, 2, 50}) {
    EXPECT_EQ(service_.NextItem(index)->ItemIndexNumber, index);
    EXPECT_EQ(service_.PreviousItem(index)->ItemIndexNumber, index);
  }
  service_.SetItemCount(3);
  for (const int index : {-1, 0, 4}) {
    service_.SetNextItem(index, Item("outside"));
    service_.SetPreviousItem(index, Item("outside"));
    EXPECT_EQ(service_.NextItem(index), nullptr) << index;
    EXPECT_EQ(service_.PreviousItem(index), nullptr) << index;
  }
  service_.SetItemCount(4);
  EXPECT_EQ((*service_.NextItem(4))->ItemName, "");
}

TEST_F(ServiceItemsTest, OutputsAreNumberedWithinTheirType) {
  constexpr OutputType kFile = OutputType::kFile;
  const auto make = [this](const char* name) { return std::make_shared<RecordingOutput>(*this, name); };
  const auto a = make("a"), b = make("b"), c = make("c"), d = make("d");
  EXPECT_EQ(service_.AddOutput(kFile, a), 1);
  EXPECT_EQ(service_.AddOutput(kFile, b), 2);
  EXPECT_EQ(service_.AddOutput(OutputType::kWeb, c), 1);
  EXPECT_EQ(service_.AddOutput(kFile, nullptr), 0);
  EXPECT_EQ(service_.TotalNumberOutputs(), 3);

  service_.SetOutput(kFile, 1, c);
  service_.SetOutput(kFile, 3, d);
  service_.SetOutput(kFile, 0, a);
  service_.SetOutput(kFile, -1, a);
  EXPECT_EQ(service_.OutputCount(3), 3);
  EXPECT_EQ(service_.Output(kFile, 1), c);
  EXPECT_EQ(service_.Output(kFile, 2), b);
  EXPECT_EQ(service_.Output(kFile, 3), d);
  for (const int outside : {-1, 0, 4}) {
    EXPECT_EQ(service_.Output(kFile, outside), nullptr);
    service_.RemoveOutput(kFile, outside);
  }
  service_.RemoveOutput(kFile, 2);
  EXPECT_EQ(service_.Output(kFile, 2), d);
  EXPECT_EQ(service_.OutputCount(3), 2);
  for (const std::int32_t outside : {-1, 0, 16}) {
    service_.SetOutputUpdateInterval(outside, 5);
    EXPECT_EQ(service_.OutputCount(outside), 0);
    EXPECT_EQ(service_.OutputUpdateInterval(outside), 0);
  }
  EXPECT_EQ(Take(), Lines());  // none was started or stopped
}

TEST_F(ServiceItemsTest, SpecialElements) {
  service_.PresenterFullName = "Ann Example";
  service_.PresenterReference = "P1";
  service_.ShowReference = "S1";
  service_.ShowTitle = "Breakfast";
  service_.settings.ServiceName = "Radio One";
  const Lines nameAndValue({"PRESENTERFULLNAME=Ann Example",
                            "PresenterReference=P1",
                            "SHOWREFERENCE=S1",
                            "showtitle=Breakfast",
                            "ServiceName=Radio One",
                            "NoPictureFileName=nopicture.jpg",
                            "CurrentDateTime=02/03/2026 12:00:00",
                            "CurrentDateTimeXML=2026-03-02T12:00:00",
                            "now_dd/mm/yyyy=02/03/2026",
                            "NOW:yyyy=2026",
                            "NOW_DDDD,DD MMM YYYY HH:NN=Monday,02 Mar 2026 12:00",
                            "Now_\"Woche\" ww=Woche 10",
                            "NOW\xC3\xA9yy=26",
                            "NOWHERE=ERE",
                            "NOW=",
                            "NOW_=",
                            "NO=Unknown tag NO",
                            "LastUpdateNumber=Unknown tag LastUpdateNumber",
                            "SHOWTITLES=Unknown tag SHOWTITLES",
                            "=Unknown tag "});
  for (const std::string& line : nameAndValue) {
    const std::size_t end = line.find('=');
    EXPECT_EQ(service_.GetSpecialElementByName(line.substr(0, end)), line.substr(end + 1)) << line;
  }
}

TEST_F(ServiceItemsTest, TheSkeletonOutput) {
  clsZEBTemplate output(ports_.environment);
  struct {
    std::int32_t status;
    std::string text;
    std::uint32_t colour;
  } const cases[] = {{0, "Off", 0x00FFFF},     {1, "Connecting", 0}, {2, "Connected", 0},
                     {3, "Logging On", 0},     {4, "OK", 0},         {5, "Error", 0xFF},
                     {6, "Unknown", 0x0000FF}, {-1, "Unknown", 0xFF}};
  EXPECT_EQ(output.Status(), kStatusOff);
  for (const auto& [status, text, colour] : cases) {
    output.SetStatus(status);
    std::uint32_t got = 1;
    EXPECT_EQ(output.GetStatusString(got), text);
    EXPECT_EQ(got, colour) << text;
  }
  output.GetOutputInformation(2, 7);  // never stored
  EXPECT_EQ(output.Status(), kStatusOK);
  output.StoreOutputInformation(2, 7);
  EXPECT_EQ(ports_.hive.ReadText(ports_.environment.settingsRoot + "\\Service2\\Template",
                                 "SimpleTextFormat7", "missing"),
            std::string(kDefaultSimpleTextFormat));
}

}  // namespace
}  // namespace zeb
