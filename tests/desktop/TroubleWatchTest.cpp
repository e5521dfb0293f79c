#include "app/desktop/frame/TrayIcon.h"
#include "app/desktop/frame/TroubleWatch.h"
#include "tests/desktop/DesktopTest.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

class TroubleWatchTest : public DesktopTest {
 protected:
  // A station whose file output cannot read its template until Mend.
  void FailingStation(const std::string& name) {
    Station(name, {{"InstantUpdate", "1"}});
    Output(main.NumberServices() + ++made, OutputType::kFile,
           {{"Output1.NumberFiles", "1"},
            {"Output1.SourceFileName1", "/data/t"},
            {"Output1.DestinationFileName1", "/data/page"}});
  }
  void Mend() { files.Put("/data/t", "<ZEB_NOW_ITEMNAME>"); }
  TroubleWatch::News Look() {
    for (int i = 1; i <= main.NumberServices(); ++i) watch.Changed(main.Window(i));
    return watch.Look(main, loop.Monotonic());
  }

  TroubleWatch watch;
  int made = 0;
};

TEST_F(TroubleWatchTest, AFailureCountsOnceItHasLasted) {
  FailingStation("Demo FM");
  Load();
  EXPECT_TRUE(watch.AllIsWell());
  Send(1, "SET_CURRENT_ITEM ITitle=\"Waterloo\"");
  Pass(100ms);
  EXPECT_TRUE(Look().begun.empty());
  EXPECT_FALSE(watch.AllIsWell()) << "it may become one";
  EXPECT_EQ(watch.Count(), 0u);
  Pass(2900ms);
  EXPECT_TRUE(Look().begun.empty()) << "2.9 s after the first look";
  Pass(100ms);
  const auto begun = Look().begun;
  ASSERT_EQ(begun.size(), 1u);
  EXPECT_EQ(begun[0].service, "Demo FM");
  EXPECT_EQ(begun[0].output, "File1");
  EXPECT_TRUE(Look().begun.empty()) << "told once";
  EXPECT_EQ(watch.Count(), 1u);
  Mend();
  Pass(2min);
  EXPECT_EQ(Look().ended.size(), 1u);
  EXPECT_TRUE(Look().ended.empty());
  EXPECT_TRUE(watch.AllIsWell());
}

TEST_F(TroubleWatchTest, WhatPassesSoonerIsNeverTold) {
  FailingStation("Demo FM");
  Load();
  Send(1, "SET_CURRENT_ITEM ITitle=\"Waterloo\"");
  Look();
  Mend();
  main.Window(1)->ForceUpdate();
  Pass(2s);
  const auto news = Look();
  EXPECT_TRUE(news.begun.empty() && news.ended.empty());
  EXPECT_TRUE(watch.AllIsWell());
}

TEST_F(TroubleWatchTest, ARemovedServiceHasNoTrouble) {
  FailingStation("One");
  FailingStation("Two");
  Load();
  for (int i : {1, 2}) Send(i, "SET_CURRENT_ITEM ITitle=\"Waterloo\"");
  Look();
  Pass(3s);
  EXPECT_EQ(Look().begun.size(), 2u);
  ASSERT_EQ(watch.Worst(10).size(), 2u);
  EXPECT_EQ(watch.Worst(10)[0].service, "One");
  EXPECT_EQ(watch.Worst(1).size(), 1u);
  ASSERT_TRUE(main.RemoveConfirmed(1));
  Look();
  ASSERT_EQ(watch.Worst(10).size(), 1u);
  EXPECT_EQ(watch.Worst(10)[0].service, "Two");
}

TEST(TrayIconTest, ManyFailuresAreOneBalloon) {
  TrayIcon tray({.open = [] {},
                 .exit = [] {},
                 .troubles =
                     [] {
                       return std::vector<Trouble>{{"R&B", "File1", "disk full"}};
                     },
                 .services = [] { return std::vector<std::string>{"R&B"}; },
                 .forceUpdate = [](int) {}});
  tray.Tell({.begun = {{"Demo FM", "DAB1", "no answer"}}, .ended = {}});
  EXPECT_EQ(tray.LastBalloon(), "An output fails\nDemo FM, DAB1: no answer");
  tray.Tell({.begun = {}, .ended = {{"Demo FM", "DAB1", "no answer"}}});
  EXPECT_EQ(tray.LastBalloon(), "An output works again\nDemo FM, DAB1");
  tray.Tell({.begun = std::vector<Trouble>(7, {"Demo FM", "DAB1", "x"}), .ended = {}});
  EXPECT_TRUE(tray.LastBalloon().startsWith("7 outputs fail\n"));
  EXPECT_EQ(tray.LastBalloon().count('\n'), 6) << "five of them, and that there are more";
  tray.SetState(3, 4);
  EXPECT_EQ(tray.ToolTip(), "ZEB: 3 failing");
  tray.SetState(0, 4);
  EXPECT_EQ(tray.ToolTip(), "ZEB: all is well");
  EXPECT_EQ(tray.Menu().actions().at(2)->text(), "R&&B, File1: disk full") << "no mnemonic of a name";
}

}  // namespace
}  // namespace zeb
