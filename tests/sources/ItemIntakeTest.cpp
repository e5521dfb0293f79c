#include "sources/ItemIntake.h"
#include "tests/sources/IntakeFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

constexpr const char* kWaiting = "Information Update received, waiting..";

class Intake : public IntakeFixture {
 protected:
  static clsZEBItemInfo Item(std::string title, std::int16_t slot = 0) {
    clsZEBItemInfo item;
    item.Edit().ItemName = std::move(title);
    item.Edit().Artists = "Band";
    item.ItemIndexNumber = slot;
    return item;
  }
  void SetCurrent(const std::string& title) {
    const clsZEBItemInfo item = Item(title);
    intake.SetCurrentItem(&item, true);
  }
};

TEST_F(Intake, DropsTheSameItem) {
  StartLog();
  SetCurrent("Song");
  EXPECT_TRUE(Logged("Item - 'Song' by 'Band'"));
  EXPECT_EQ(window.informed, 1);
  SetCurrent("Song");
  EXPECT_TRUE(Logged("Same as existing so aborting - 'Song' by 'Band'"));
  EXPECT_EQ(window.informed, 1);
  EXPECT_EQ(window.refreshes, 1);

  clsZEBItemInfo later = Item("Song");
  later.Edit().ItemStartTime = 100;
  intake.SetCurrentItem(&later, true);
  EXPECT_EQ(window.informed, 1);
  service.settings.UpdateOnTimingChange = true;
  intake.SetCurrentItem(&later, true);
  EXPECT_EQ(window.informed, 2);
}

// The arriving record is the one that is asked: pictures that it lacks make no difference, new ones do.
TEST_F(Intake, ComparesFromTheArrivingItemsSide) {
  clsZEBItemInfo pictured = Item("Song");
  pictured.AddPictureFile("a.jpg");
  intake.SetCurrentItem(&pictured, true);
  SetCurrent("Song");
  EXPECT_EQ(window.informed, 1);
  pictured.AddPictureFile("b.jpg");
  intake.SetCurrentItem(&pictured, true);
  EXPECT_EQ(window.informed, 2);
}

TEST_F(Intake, SlotsComeFromTheItemsNumber) {
  StartLog();
  for (const std::int16_t slot : std::vector<std::int16_t>{0, -3, 1, 50, 51}) {
    const clsZEBItemInfo item = Item("N" + std::to_string(slot), slot);
    intake.SetNextItem(&item, true);
    intake.SetPreviousItem(&item, true);
  }
  EXPECT_EQ(Next(1), "N1");
  EXPECT_EQ(Next(50), "N50");
  EXPECT_EQ((*service.PreviousItem(50))->ItemName, "N50");
  EXPECT_TRUE(Logged("Index Number Too High - 51"));
  const int informed = window.informed;
  const clsZEBItemInfo unnumbered = Item("N1");
  intake.SetNextItem(&unnumbered, true);
  EXPECT_EQ(window.informed, informed) << "the same item, only without its number";
}

TEST_F(Intake, NothingPassedChangesNothing) {
  StartLog();
  SetCurrent("Song");
  intake.SetCurrentItem(nullptr, true);
  EXPECT_FALSE(Logged("Exit as Nothing Passed!"));
  EXPECT_TRUE(Logged("Nothing Passed!"));
  intake.SetNextItem(nullptr, true);
  EXPECT_TRUE(Logged("Exit as Nothing Passed!"));
  intake.SetPreviousItem(nullptr, true);
  intake.SetComingSoonItem(nullptr, true);
  EXPECT_EQ(Current(), "Song");
  EXPECT_EQ(window.informed, 1);
}

TEST_F(Intake, UpdatesAtOnceOnlyWhenItMay) {
  SetCurrent("A");
  EXPECT_EQ(window.updates, 0);
  EXPECT_EQ(window.information, kWaiting);
  service.settings.InstantUpdate = true;
  SetCurrent("B");
  EXPECT_EQ(window.updates, 1);
  EXPECT_EQ(window.information, "Information Update received, Updating..");
  window.running = true;
  SetCurrent("C");
  EXPECT_EQ(window.updates, 1);
  EXPECT_EQ(window.information, kWaiting);
  const clsZEBItemInfo quiet = Item("D");
  intake.SetComingSoonItem(&quiet, false);
  EXPECT_EQ(window.informed, 3);
}

TEST_F(Intake, TravelFlag) {
  service.settings.TravelFlagActivateString = "TRAVEL";
  service.settings.TravelFlagDeactivateTimeout = 60;
  SetCurrent("Song");
  EXPECT_TRUE(window.flags.empty()) << "nothing to clear";
  SetCurrent("travel news");
  EXPECT_EQ(window.flags, std::vector<bool>{true});
  EXPECT_EQ(window.travel, "TA");
  ports.loop.RunFor(59s);
  intake.CheckTravelFlag();
  EXPECT_TRUE(intake.TravelFlagActive());
  SetCurrent("Travel again");  // its time begins anew
  ports.loop.RunFor(59s);
  intake.CheckTravelFlag();
  EXPECT_EQ(window.flags, (std::vector<bool>{true, true}));
  ports.loop.RunFor(1s);
  intake.CheckTravelFlag();
  intake.CheckTravelFlag();
  EXPECT_EQ(window.flags, (std::vector<bool>{true, true, false}));
  EXPECT_EQ(window.travel, "");

  SetCurrent("Travel");
  SetCurrent("Song");
  EXPECT_EQ(window.flags, (std::vector<bool>{true, true, false, true, false}));
  const clsZEBItemInfo next = Item("Travel", 1);
  intake.SetNextItem(&next, true);
  service.settings.TravelFlagActivateString = "";
  SetCurrent("Travel");
  EXPECT_EQ(window.flags.size(), 5U) << "only current items count, and only with a text to begin with";
}

}  // namespace
}  // namespace zeb
