#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <memory>

#include "app/desktop/DesktopMain.h"
#include "tests/desktop/DesktopTest.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

class DesktopMainTest : public DesktopTest {
 protected:
  ~DesktopMainTest() override {
    main.display = {};
    room.reset();
    other.reset();
    program.reset();
    ApplyTheme(ThemeChoice::kLight);
  }

  void Make(bool silent = false, bool minimised = false) {
    program = std::make_unique<DesktopMain>(
        DesktopMain::Start{silent, minimised, "/data", "", ""},
        DesktopMain::Ways{.ended = [this] { ++ended; }, .stop = [this](const std::string&) { ++stopped; }});
    program->Loading(desk);
  }
  // The publisher as a second start finds it: with the requests of this program, or without as zebd.
  void OpenRoom(bool withWindows) {
    room = std::make_unique<ControlRoom>(
        environment, network, nullptr, main, journal,
        []() -> Result<std::unique_ptr<HistoryReader>> { return Failure{"none"}; },
        [](WallTime) { return 0s; });
    if (withWindows) program->AddRequests(*room);
    room->Open();
    Pass(1s);
  }
  void StartAgain(bool silent = false) {
    other = std::make_unique<OtherPublisher>(
        OtherPublisher::Ports{loop, network, &hive, [this](const std::string& url) { page = url; }}, boxes);
    other->Meet("/data", silent, [this](bool edit) { ++(edit ? otherEdits : otherEnded); });
    Pass(1s);
  }

  std::unique_ptr<DesktopMain> program;
  std::unique_ptr<ControlRoom> room;
  std::unique_ptr<OtherPublisher> other;
  std::string page;
  int ended = 0, stopped = 0, otherEnded = 0, otherEdits = 0;
};

TEST_F(DesktopMainTest, TheSplashSaysWhatIsBeingDoneUntilTheWindowIsThere) {
  Make();
  Load();
  ASSERT_NE(Open<Splash>(), nullptr);
  EXPECT_EQ(Open<Splash>()->findChild<QLabel*>("SplashAction")->text(), "Initialising settings..");
  EXPECT_FALSE(Open<Splash>()->findChild<QLabel*>("SplashText")->isVisible());
  EXPECT_EQ(Open<MainWindow>(), nullptr);
  program->Ready();
  Settle();
  EXPECT_EQ(Open<Splash>(), nullptr);
  ASSERT_NE(Open<MainWindow>(), nullptr);
  EXPECT_FALSE(Open<MainWindow>()->isMinimized());
}

TEST_F(DesktopMainTest, UnattendedItShowsNoSplashAndIsMinimised) {
  Make(true, true);
  Load();
  EXPECT_EQ(Open<Splash>(), nullptr);
  program->Ready();
  Settle();
  EXPECT_TRUE(Open<MainWindow>()->isMinimized());
}

TEST_F(DesktopMainTest, ExitAsksInFrontOfAWindowThatCanBeSeen) {
  Make(false, true);
  Load();
  program->Ready();
  Settle();
  Open<MainWindow>()->Tray().Menu().actions().back()->trigger();  // Exit
  Settle();
  EXPECT_FALSE(Open<MainWindow>()->isMinimized());
  ASSERT_NE(Box(), nullptr);
  Press("Yes");
  Pass(10s);
  EXPECT_EQ(ended, 1);
  EXPECT_EQ(stopped, 0);
}

TEST_F(DesktopMainTest, WhileAnUpdateRunsItAsksWhetherToWaitAndSaysThatItDoes) {
  Station("Demo FM");
  Output(1, OutputType::kFile,
         {{"Output1.NumberFiles", "1"},
          {"Output1.SourceFileName1", "/data/t"},
          {"Output1.DestinationFileName1", "/data/page"}});
  files.Put("/data/t", "<ZEB_NOW_ITEMNAME>");
  Make();
  Load();
  program->Ready();
  loop.SetBlockingTime(5s);  // of the share that the page is written to
  Send(1, "SET_CURRENT_ITEM ITitle=\"Waterloo\"");
  for (int i = 0; i < 100 && main.UpdatingServices().empty(); ++i) Pass(100ms);
  ASSERT_EQ(main.UpdatingServices(), "Demo FM");
  Open<MainWindow>()->close();
  Settle();
  Press("Yes");
  EXPECT_EQ(BoxText(),
            "ZEB cannot be closed until it has finished updating it's outputs\n\n"
            "Do you want it to close when it has finished?");
  Press("Yes");
  ASSERT_NE(Open<Splash>(), nullptr);
  EXPECT_EQ(Open<Splash>()->findChild<QLabel*>("SplashText")->text(), "Updates in progress..");
  EXPECT_EQ(Open<Splash>()->findChild<QLabel*>("SplashAction")->text(), "Waiting to exit");
  EXPECT_EQ(ended, 0);
  Pass(10s);
  EXPECT_EQ(ended, 1);
}

TEST_F(DesktopMainTest, ASecondStartBringsTheWindowBack) {
  Make(false, true);
  Load();
  program->Ready();
  OpenRoom(true);
  ASSERT_TRUE(Open<MainWindow>()->isMinimized());
  StartAgain();
  EXPECT_EQ(otherEnded, 1);
  EXPECT_FALSE(Open<MainWindow>()->isMinimized());
  EXPECT_EQ(Box(), nullptr);
}

TEST_F(DesktopMainTest, BesideAPublisherWithoutWindowsItsPageIsOffered) {
  Load();
  hive.WriteText(environment.settingsRoot, "DashboardAddress", "0.0.0.0");
  for (const char* press : {"Open the web page", "Cancel"}) {
    page.clear();
    otherEnded = 0;
    OpenRoom(false);
    StartAgain();
    EXPECT_EQ(otherEnded, 0) << "the box is open";
    EXPECT_EQ(BoxText(),
              "Another publisher already runs on the data folder '/data', and only one can publish at a time."
              "\n\nIts web page shows what is on air: http://127.0.0.1:6980/");
    Press(press);
    EXPECT_EQ(otherEnded, 1);
    EXPECT_EQ(page, press == std::string("Cancel") ? "" : "http://127.0.0.1:6980/");
    room.reset();
  }
}

TEST_F(DesktopMainTest, BesideAPublisherWithoutWindowsItsSettingsAreOfferedWithOrWithoutAPage) {
  Load();
  for (const int port : {6980, 0}) {
    hive.WriteNumber(environment.settingsRoot, "DashboardPort", port);
    otherEdits = 0;
    StartAgain();  // nobody listens on the local socket either
    Press("Edit its settings");
    EXPECT_EQ(otherEdits, 1) << port;
    EXPECT_EQ(otherEnded, 0) << port;
    EXPECT_EQ(page, "") << port;
  }
  StartAgain();
  EXPECT_EQ(BoxText(),
            "Another publisher already runs on the data folder '/data', and only one can publish at a time.");
  Press("Cancel");
  EXPECT_EQ(otherEnded, 1);
}

TEST_F(DesktopMainTest, WhoseSettingsCannotBeReadThereIsOnlyOK) {
  other = std::make_unique<OtherPublisher>(OtherPublisher::Ports{loop, network, nullptr, {}}, boxes);
  other->Meet("/data", false, [this](bool edit) { ++(edit ? otherEdits : otherEnded); });
  Pass(1s);
  Press("OK");
  EXPECT_EQ(otherEnded, 1);
  EXPECT_EQ(otherEdits, 0);
}

TEST_F(DesktopMainTest, WhereOnlySettingsAreEditedTheWindowSaysSoAndEndsWithoutAQuestion) {
  Station("Demo FM", {{"TolvanTCPControlPort", "1"}});
  Output(1, OutputType::kHTTP, {{"Output1.Server", "192.0.2.1"}});
  environment.publishes = false;
  Make();
  Load();
  program->Ready();
  Settle();
  MainWindow* const window = Open<MainWindow>();
  ASSERT_NE(window, nullptr);
  EXPECT_TRUE(window->windowTitle().startsWith("ZEB - settings of the publisher on /data"));
  EXPECT_FALSE(window->findChild<QAction*>("SetManually")->isEnabled());
  EXPECT_FALSE(window->findChild<QAction*>("ForceUpdate")->isEnabled());
  EXPECT_TRUE(window->findChild<QAction*>("ServiceSettings")->isEnabled());
  EXPECT_EQ(window->findChild<QLabel*>("Failing")->text(), "1 service");
  // What became of a change: a moment in the status bar, or a box that names what is wrong.
  program->ToldElsewhere(RunningElsewhere::Told::kTaken, "");
  EXPECT_EQ(Box(), nullptr);
  program->ToldElsewhere(RunningElsewhere::Told::kFailed, "the publisher does not answer");
  EXPECT_EQ(
      BoxText(),
      "The change is stored, but the publisher that runs has not taken it: the publisher does not answer");
  Press("OK");
  program->ToldElsewhere(RunningElsewhere::Told::kNobodyRuns, "");
  EXPECT_NE(BoxText().find("no publisher runs on the data folder any more"), std::string::npos);
  Press("OK");
  window->close();
  Pass(5s);
  EXPECT_EQ(Box(), nullptr);
  EXPECT_EQ(ended, 1);
}

TEST_F(DesktopMainTest, NobodyWatchingIsShownNothing) {
  Load();
  StartAgain(true);
  EXPECT_EQ(otherEnded, 1);
  EXPECT_EQ(Box(), nullptr);
}

}  // namespace
}  // namespace zeb
