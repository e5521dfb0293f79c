#include <QAction>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>
#include <memory>
#include <set>

#include "app/desktop/frame/MainWindow.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/WholeTree.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

class FrameTest : public DesktopTest {
 protected:
  ~FrameTest() override {
    desk.frame = nullptr;
    person.SetFrame(nullptr);
    window.reset();
    main.display = {};
  }

  // As the program's start does.
  void Start() {
    window = std::make_unique<MainWindow>(desk, MainWindow::Ways{
                                                    .quit = [this] { Quit(); },
                                                    .openManual = [this] { ++manualOpened; },
                                                });
    desk.frame = window.get();
    person.SetFrame(window.get());
    main.display.arrange = [this] { window->Arrange(); };
    main.display.changed = [this](int number) { window->Changed(number); };
    main.display.splash = [this](const std::string& text, const std::string& action) {
      splash.push_back(text + "|" + action);
    };
    Load();
    window->show();
    Pass(1s);
  }
  void Quit() {
    main.RequestQuit([this] {
      window->Save();
      ++ended;
    });
  }
  QAction* Action(const char* name) { return window->findChild<QAction*>(QLatin1String(name)); }
  void Trigger(const char* name) {
    QAction* action = Action(name);
    ASSERT_NE(action, nullptr) << name;
    ASSERT_TRUE(action->isEnabled()) << name;
    action->trigger();
    Settle();
  }
  QAbstractItemModel& Rows() { return *window->findChild<QListView*>("Services")->model(); }
  std::string Cell(int row, int role) { return Rows().index(row, 0).data(role).toString().toStdString(); }
  std::string Status() { return window->findChild<QLabel*>("Failing")->text().toStdString(); }
  std::string ActiveName() {
    const ServiceWindow* active = window->Area().Active();
    return active == nullptr ? "" : active->Service()->service().settings.ServiceName;
  }
  // Writes into a folder that is not there, so that it fails.
  void FailingOutput(int station) {
    Output(station, OutputType::kFile,
           {{"Output1.NumberFiles", "1"},
            {"Output1.SourceFileName1", "none/t.html"},
            {"Output1.DestinationFileName1", "none/o.html"}});
  }

  std::unique_ptr<MainWindow> window;
  std::vector<std::string> splash;
  int ended = 0, manualOpened = 0;
};

TEST_F(FrameTest, TheOverviewShowsWhatIsOnAir) {
  Station("Demo FM");
  Station("Rock 1");
  Start();
  ASSERT_EQ(Rows().rowCount(), 2);
  Send(2, "SET_CURRENT_ITEM ITitle=\"Waterloo\" AName1=\"ABBA\"");
  Pass(1s);
  EXPECT_EQ(Cell(1, Qt::DisplayRole), "Rock 1");
  EXPECT_NE(Cell(1, ServiceList::kNowRole).find("Waterloo"), std::string::npos);
  EXPECT_EQ(Cell(0, ServiceList::kNowRole), "");
}

TEST_F(FrameTest, ARowOutOfSightIsNotPutTogether) {
  for (int i = 0; i < 200; ++i) Station("Station " + std::to_string(i));
  Start();
  ASSERT_EQ(Rows().rowCount(), 200);
  EXPECT_EQ(window->Area().Windows().size(), 1u) << "the others are made when they are shown";
  for (int i = 1; i <= 200; ++i) Send(i, "SET_CURRENT_ITEM ITitle=\"Waterloo\"");
  Pass(5s);
  (void)window->grab();
  EXPECT_GT(window->Overview().List().PutTogether(), 5);
  EXPECT_LT(window->Overview().List().PutTogether(), 40) << "as many as fit into the window";
}

TEST_F(FrameTest, TheFieldLeavesServicesWhoseNamesHoldItsText) {
  for (const char* name : {"Demo FM", "Rock 1", "ROCK 2"}) Station(name);
  Start();
  Type("FindService", "rock");
  ASSERT_EQ(Rows().rowCount(), 2);
  Named("FindService")->setFocus();
  QTest::keyClick(Named("FindService"), Qt::Key_Return);
  Settle();
  EXPECT_EQ(ActiveName(), "Rock 1");
}

TEST_F(FrameTest, TheFirstPageTheFrameAndItsAboutBoxAreWhole) {
  Start();
  EXPECT_EQ(WholeTreeProblems(*window), std::vector<std::string>{});
  Trigger("AddService");
  Pass(1s);
  Press("Cancel", Named("ServiceSettings"));
  EXPECT_EQ(WholeTreeProblems(*window), std::vector<std::string>{});
  ExpectWholeTree([this] {
    Trigger("About");
    return Named("About");
  });
}

TEST_F(FrameTest, WithoutServicesAPageSaysWhatToDo) {
  Start();
  ASSERT_TRUE(Named("FirstRun")->isVisible());
  EXPECT_EQ(window->findChild<QWidget*>("FirstDemo"), nullptr) << "it did not come with the program";
  EXPECT_FALSE(Action("ServiceSettings")->isEnabled());
  Press("Read the Manual", window.get());
  EXPECT_EQ(manualOpened, 1);
  Press("Add Service...", window.get());
  Pass(1s);
  EXPECT_EQ(main.NumberServices(), 1);
  EXPECT_EQ(ActiveName(), "Unknown Service");
  EXPECT_FALSE(window->findChild<QWidget*>("FirstRun")->isVisible());
  EXPECT_TRUE(Action("ServiceSettings")->isEnabled());
}

TEST_F(FrameTest, TheDemoStationIsSetUpByOneButton) {
  environment.programFolder = "/usr/bin";
  files.Put("/usr/bin/../share/zeb/examples/demo.reg",
            "Windows Registry Editor Version 5.00\n\n"
            "[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB v3\\Profiles\\Profile1]\n"
            "\"NumberServices\"=dword:1\n"
            "[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB v3\\Profiles\\Profile1\\Service1]\n"
            "\"ServiceName\"=\"Demo FM\"\n");
  files.Put("/usr/bin/../share/zeb/examples/templates/a.html", "new");
  files.Put("/usr/bin/../share/zeb/examples/templates/b.html", "new");
  files.Put("/data/templates/a.html", "the station's own");
  Start();
  hive.failure = "disk full";
  Press("Set up the demo station", window.get());
  Pass(1s);
  EXPECT_EQ(BoxText(), "The demo station could not be set up.\ndisk full");
  Press("OK");
  hive.failure.clear();
  Press("Set up the demo station", window.get());
  Pass(1s);
  ASSERT_EQ(main.NumberServices(), 1);
  EXPECT_EQ(main.Window(1)->service().settings.ServiceName, "Demo FM");
  EXPECT_EQ(files.Contents("/data/templates/a.html"), "the station's own");
  EXPECT_EQ(files.Contents("/data/templates/b.html"), "new");
  EXPECT_FALSE(window->findChild<QWidget*>("FirstRun")->isVisible());
}

TEST_F(FrameTest, AServiceThatCannotBeStoredIsNotShown) {
  Start();
  hive.failure = "disk full";
  Trigger("AddService");
  hive.failure.clear();
  EXPECT_EQ(main.NumberServices(), 0);
  EXPECT_TRUE(window->Area().Windows().empty());
  EXPECT_TRUE(Named("FirstRun")->isVisible());
}

TEST_F(FrameTest, ClosingAsksOnceAndNoKeepsEverything) {
  Station("Demo FM");
  Start();
  window->close();
  window->close();
  Settle();
  ASSERT_EQ(AllBoxes().size(), 1u);
  EXPECT_EQ(BoxText(),
            "If Tolvan is using ZEB as it's 'On-Air Controller' then it will be automatically switch itself "
            "'Off-Air'\nAre you sure you want to quit from ZEB?");
  EXPECT_EQ(Box()->defaultButton()->text(), "&No");
  Press("No");
  Pass(10s);
  EXPECT_EQ(ended, 0);
  EXPECT_TRUE(window->isVisible());
  EXPECT_TRUE(main.Window(1)->IsOpen());
}

TEST_F(FrameTest, YesClosesAndRemembersWhereEverythingStands) {
  Station("Demo FM");
  Station("Rock 1");
  Start();
  window->Area().Show(main.Window(2));
  window->setGeometry(40, 30, 700, 500);
  Trigger("Tabs");
  window->close();
  Settle();
  Press("Yes");
  Pass(10s);
  EXPECT_EQ(ended, 1);
  const std::string key = environment.settingsRoot + "\\Desktop";
  EXPECT_EQ(hive.ReadText(key, "OpenServices", ""), "1,2");
  EXPECT_EQ(hive.ReadNumber(key, "Tabs", 0), 1);
  EXPECT_EQ(Placement::FromText(hive.ReadText(key, "Frame", "")).normal, QRect(40, 30, 700, 500));
}

TEST_F(FrameTest, TheWindowsThatWereOpenComeBack) {
  for (const char* name : {"One", "Two", "Three"}) Station(name);
  hive.WriteText(environment.settingsRoot + "\\Desktop", "OpenServices", "3,9,x,2");
  Start();
  EXPECT_EQ(window->Area().Windows().size(), 2u) << "a number that there is not any more is passed over";
  EXPECT_EQ(ActiveName(), "Two") << "the last one was the active one";
}

TEST_F(FrameTest, AStoreThatCannotBeWrittenIsALineAndNoMore) {
  Station("Demo FM");
  Start();
  console.notes.clear();
  hive.failure = "disk full";
  window->Save();
  hive.failure.clear();
  ASSERT_EQ(console.notes.size(), 1u);
  EXPECT_EQ(console.notes[0].rfind("The windows' places cannot be stored: ", 0), 0u) << console.notes[0];
}

TEST_F(FrameTest, AWindowOfARemovedServiceGoes) {
  Station("One");
  Station("Two");
  Start();
  window->Area().Show(main.Window(1));
  ASSERT_TRUE(main.RemoveConfirmed(1));
  Pass(1s);
  EXPECT_TRUE(window->Area().Windows().empty());
  ASSERT_EQ(Rows().rowCount(), 1);
  EXPECT_EQ(Cell(0, Qt::DisplayRole), "Two");
}

TEST_F(FrameTest, AClosedWindowLeavesItsServiceOnAir) {
  Station("One");
  Start();
  Trigger("CloseWindow");
  Pass(1s);
  EXPECT_TRUE(window->Area().Windows().empty());
  EXPECT_TRUE(main.Window(1)->IsOpen());
  Trigger("Service");  // Ctrl+1
  EXPECT_EQ(ActiveName(), "One");
}

TEST_F(FrameTest, MinimisedItDrawsNothingAndStillTellsWhatFails) {
  Station("One");
  FailingOutput(1);
  Start();
  window->showMinimized();
  Settle();
  Send(1, "SET_CURRENT_ITEM ITitle=\"Waterloo\"");
  Pass(10s);
  EXPECT_EQ(Status(), "1 failing · 1 service");
  EXPECT_EQ(window->Tray().ToolTip().toStdString(), "ZEB: 1 failing");
}

TEST_F(FrameTest, EveryMnemonicOfAMenuIsThereOnce) {
  Station("One");
  Start();
  const auto check = [](const QList<QAction*>& actions, const std::string& where) {
    std::set<QString> seen;
    for (const QAction* action : actions) {
      if (action->isSeparator() || !action->isVisible()) continue;
      const QString text = QString(action->text()).replace("&&", "");
      const auto at = text.indexOf('&');
      ASSERT_GE(at, 0) << where << ": " << action->text().toStdString();
      EXPECT_TRUE(seen.insert(text.mid(at + 1, 1).toLower()).second)
          << where << ": " << action->text().toStdString();
    }
  };
  check(window->menuBar()->actions(), "menu bar");
  for (const QAction* menu : window->menuBar()->actions())
    check(menu->menu()->actions(), menu->text().toStdString());
  check(window->Tray().Menu().actions(), "tray");
}

TEST_F(FrameTest, AnotherLanguageIsSeenAtOnce) {
  Station("One");
  Start();
  auto german = std::make_shared<Language>();
  german->Add("&Settings...", "&Einstellungen...");
  german->Add("Find a service", "Sender suchen");
  InstallLanguage(german);
  EXPECT_EQ(Action("ServiceSettings")->text(), "&Einstellungen...");
  EXPECT_EQ(window->findChild<QLineEdit*>("FindService")->placeholderText(), "Sender suchen");
  InstallLanguage(nullptr);
  EXPECT_EQ(Action("ServiceSettings")->text(), "&Settings...");
}

TEST_F(FrameTest, NoKeyIsGivenTwice) {
  Start();
  std::set<QString> seen;
  for (const QAction* action : window->findChildren<QAction*>())
    for (const QKeySequence& key : action->shortcuts())
      EXPECT_TRUE(seen.insert(key.toString()).second) << key.toString().toStdString();
}

TEST_F(FrameTest, TheThemeIsTakenAtOnceAndStored) {
  Start();
  Trigger("Theme");  // the first of them: System
  for (QAction* action : window->findChildren<QAction*>("Theme"))
    if (action->text() == "&Dark") action->trigger();
  EXPECT_TRUE(IsDark(QApplication::palette()));
  EXPECT_EQ(hive.ReadText(environment.settingsRoot + "\\Desktop", "Theme", ""), "Dark");
  ApplyTheme(ThemeChoice::kLight);
}

}  // namespace
}  // namespace zeb
