#include <algorithm>

#include "sources/ControlLink.h"
#include "tests/sources/IntakeFixture.h"

namespace zeb {
namespace {

class Link : public IntakeFixture {};

constexpr const char* kWaiting = "Information Update received, waiting..";

TEST_F(Link, SetsAndClearsItems) {
  Say("set_current_item ITitle=x");
  Say("SET_NEXT_ITEM ITitle=n");
  Say("SET_PREVIOUS_ITEM ITitle=p");
  Say("SET_COMINGSOON_ITEM ITitle=\"c s\"");
  EXPECT_EQ(Current(), "x");
  EXPECT_EQ(Next(1), "n");
  EXPECT_EQ((*service.PreviousItem(1))->ItemName, "p");
  EXPECT_EQ(service.ComingSoonItem()->ItemName, "c s");
  EXPECT_EQ(window.informed, 4);
  Say("CLEAR_CURRENT_ITEM");
  Say("CLEAR_NEXT_ITEM");
  Say("CLEAR_PREVIOUS_ITEM");
  Say("clear_comingsoon_item");
  EXPECT_EQ(Current() + Next(1) + (*service.PreviousItem(1))->ItemName + service.ComingSoonItem()->ItemName,
            "");
  EXPECT_EQ(window.informed, 8);
  Say("SET_CURRENT_ITEM ITitle=x");
  Say("SET_CURRENT_ITEM");
  EXPECT_EQ(Current(), "");
}

TEST_F(Link, ClearsAllSlots) {
  for (int i = 1; i <= kMaxNextItems; ++i) {
    clsZEBItemInfo item = Parsed("ITitle=x");
    item.ItemIndexNumber = static_cast<std::int16_t>(i);
    service.SetNextItem(i, item);
    service.SetPreviousItem(i, item);
  }
  Say("CLEAR_NEXT_ITEMS");
  for (int i = 1; i <= kMaxNextItems; ++i) {
    EXPECT_EQ(Next(i), "");
    EXPECT_EQ(service.NextItem(i)->ItemIndexNumber, i);
    EXPECT_EQ((*service.PreviousItem(i))->ItemName, "x");
  }
  Say("CLEAR_PREVIOUS_ITEMS");
  EXPECT_EQ((*service.PreviousItem(50))->ItemName, "");
  EXPECT_EQ(window.informed, 2);
  EXPECT_EQ(window.refreshes, 2);
}

TEST_F(Link, PresenterAndShow) {
  struct Case {
    std::string line, presenter, name, show, title;
  };
  const Case cases[] = {
      {"SET_PRESENTER  Presenter=\"p1\" Fullname=\"Pat {22}P{22} One\"", "p1", "Pat \"P\" One", "", ""},
      {"SET_LOGIN REFERENCE=r LOGIN=l", "r", "", "", ""},
      {"set_login login=l FULLNAME=\"F N\"", "l", "F N", "", ""},
      {"SET_SHOW SHOW= HOUR=17 TITLE=", "l", "F N", "17", ""},
      {"SET_HOUR REFERENCE=r DESCRIPTION=\"The show\"", "l", "F N", "r", "The show"},
      {"SET_SHOW  Show=\"s\" Title=\"t\" HOUR=18", "l", "F N", "s", "t"},
  };
  int informed = 0;
  for (const Case& c : cases) {
    Say(c.line);
    EXPECT_EQ(service.PresenterReference, c.presenter) << c.line;
    EXPECT_EQ(service.PresenterFullName, c.name) << c.line;
    EXPECT_EQ(service.ShowReference, c.show) << c.line;
    EXPECT_EQ(service.ShowTitle, c.title) << c.line;
    EXPECT_EQ(window.informed, ++informed);
    EXPECT_EQ(window.information, kWaiting);
  }
  service.settings.ProcessPresenterUpdates = service.settings.ProcessShowUpdates = false;
  Say("SET_PRESENTER PRESENTER=quiet");
  Say("SET_SHOW SHOW=quiet");
  EXPECT_EQ(service.PresenterReference, "quiet");
  EXPECT_EQ(service.ShowReference, "quiet");
  EXPECT_EQ(window.informed, informed);
}

TEST_F(Link, OtherCommands) {
  int nearEnds = 0;
  Say("CURRENTITEM_NEAREND");  // nobody to tell
  link.currentItemNearEnd = [&] { ++nearEnds; };
  Say("CurrentItem_NearEnd");
  EXPECT_EQ(nearEnds, 1);
  Say("UPDATE");
  EXPECT_EQ(window.information, "Forcing Information Update, waiting..");
  EXPECT_EQ(window.informed, 1);
  for (const char* line :
       {"", " ", "SET", "SET LOG", "SET LOG ", "SET OTHER CURRENTITEMS,ITitle=a", "SET LOG OTHER,ITitle=a",
        "SET_", "CLEAR_", "SET_ITEM x", "UPDATES", "HELLO ITitle=x"})
    Say(line);
  EXPECT_EQ(window.informed, 1);
  EXPECT_EQ(window.updates, 0);
}

TEST_F(Link, BulkLoadReplacesTheList) {
  StartLog();
  Say("SET LOG CURRENTITEMS,ITitle=a,ITitle=b,ITitle=c,ITitle=d");
  EXPECT_TRUE(Logged("Received 4 items"));
  EXPECT_EQ(window.updates, 1);
  EXPECT_EQ(window.informed, 1);
  EXPECT_EQ(window.information, "Information Update received, Updating..");
  EXPECT_EQ(Next(3), "d");
  Say("set log currentitems,ITitle=b,ITitle=c");
  EXPECT_EQ(Current(), "b");
  EXPECT_EQ(Next(1), "c");
  for (int i = 2; i <= kMaxNextItems; ++i) {
    EXPECT_EQ(Next(i), "");
    EXPECT_EQ(service.NextItem(i)->ItemIndexNumber, i);
  }
  Say("SET LOG CURRENTITEMS");
  EXPECT_EQ(Current(), "b");
  EXPECT_EQ(Next(1), "");
  EXPECT_EQ(window.updates, 3);
}

TEST_F(Link, BulkLoadOfEscapedItemsAndTooMany) {
  Say("SET LOG CURRENTITEMS,Reference={22}1{22} ITitle={22}One{2C} two{22},ITitle={22}Three four{22}");
  EXPECT_EQ(Current(), "One, two");
  EXPECT_EQ(Next(1), "Three four");
  StartLog();
  std::string line = "SET LOG CURRENTITEMS";
  for (int i = 0; i < 100000; ++i) line += ",ITitle=i" + std::to_string(i);
  Say(line);
  EXPECT_TRUE(Logged("Received 100000 items"));
  EXPECT_TRUE(Logged("Index Number Too High - 51"));
  EXPECT_EQ(Next(50), "i50");
}

TEST_F(Link, RelaysFirstWhateverTheMessage) {
  StartLog();
  std::vector<std::string> relayed;
  link.relay = [&](int, std::string_view line) {
    relayed.push_back(std::string(line) + "|" + Current());
    return relayed.size() != 1;
  };
  Say("set_current_item ITitle=a");
  EXPECT_FALSE(Logged("Bouncing to Client ZEB"));
  Say("no such command");
  EXPECT_TRUE(Logged("Bouncing to Client ZEB"));
  EXPECT_EQ(relayed, (std::vector<std::string>{"set_current_item ITitle=a|", "no such command|a"}));
  link.relay = [](int, std::string_view) -> bool { throw std::runtime_error("broken"); };
  Say("SET_CURRENT_ITEM ITitle=b");
  EXPECT_EQ(Current(), "b");
  EXPECT_TRUE(Logged("Started MessageFromController (1) :SET_CURRENT_ITEM ITitle=b"));
  EXPECT_TRUE(Logged("Finished MessageFromController"));
}

TEST_F(Link, AFailureEndsThatMessageOnly) {
  link.currentItemNearEnd = [] { throw std::runtime_error("no cue"); };
  Say("CURRENTITEM_NEAREND");
  Say("SET_CURRENT_ITEM ITitle=b");
  EXPECT_EQ(Current(), "b");
  EXPECT_TRUE(ports.person.shown.empty());
}

TEST_F(Link, HelpIsThirteenLines) {
  const std::string help = ControlLink::HelpText();
  EXPECT_EQ(std::count(help.begin(), help.end(), '\n'), 13);
  EXPECT_TRUE(
      help.starts_with("-\r\n-Commands:\r\n-   HELP                 :   Displays this help message\r\n"));
  EXPECT_NE(help.find("\r\n-   STATUS?              :   Displays the current status of QSV and \r\n"
                      "-                            details of other connections\r\n"),
            std::string::npos);
  EXPECT_TRUE(help.ends_with("-   NET_CONTROL_LOGOFF   :   Request to release yourself as Controller \r\n"));
}

}  // namespace
}  // namespace zeb
