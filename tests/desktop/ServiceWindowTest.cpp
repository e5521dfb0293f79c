#include "tests/desktop/ServiceWindowTest.h"

#include <QAction>
#include <QClipboard>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTabWidget>
#include <set>

#include "app/ServiceEditor.h"
#include "outputs/serial/clsZEBSerialOutput.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

// Columns of the outputs.
constexpr int kName = 0, kState = 1, kStatus = 2, kSettings = 3, kSent = 4, kProblem = 6;

// ---- Panels and the lines above

TEST_F(ServiceWindowTest, PanelsFollowAnItemToTheMoment) {
  Station("Demo FM");
  AddFile();
  OpenWindow();
  EXPECT_EQ(window->windowTitle(), "Demo FM");
  EXPECT_EQ(Text("onAir"), "Nothing on air yet");
  EXPECT_EQ(Text("information"), "");
  Say(kSong);
  EXPECT_EQ(Text("information"), "Information Update received, waiting..");
  EXPECT_EQ(Text("onAir"), "On air: Waterloo — ABBA");
  PassDrawn(1400ms);
  EXPECT_EQ(Text("information"), "Information Update received, waiting..");
  PassDrawn(2s);
  EXPECT_EQ(Text("information"), "");
  EXPECT_EQ(files.Contents("/w/now.txt"), "Now: Waterloo");
  EXPECT_EQ(Cell("outputs", 0, kSent).substr(10), "now.txt");
}

TEST_F(ServiceWindowTest, TheHeadTellsWhatFollowsAndWhoPresents) {
  Station("Demo FM", {{"TravelFlagActivateString", "travel"}});
  OpenWindow();
  Say("SET_CURRENT_ITEM ITitle=travel Length=166 IType=7");
  Say("SET_NEXT_ITEM ITitle=Dancing");
  Say("SET_COMINGSOON_ITEM ITitle=Robyn");
  Say("SET_PRESENTER PRESENTER=\"ab\" FULLNAME=\"Anna Berg\"");
  Say("SET_SHOW SHOW=\"m\" TITLE=\"Morning Show\"");
  EXPECT_EQ(Text("nextItem"), "Next: Dancing");
  EXPECT_EQ(Text("comingSoon"), "Coming soon: Robyn");
  EXPECT_EQ(Text("presenter"), "Presenter Anna Berg · Show Morning Show");
  EXPECT_EQ(Text("travel"), "TA");
}

TEST_F(ServiceWindowTest, APortThatIsTakenIsShown) {
  network.BlockPort(6901);
  Station("Demo FM", {{"TolvanTCPControlPort", "1"}});
  OpenWindow();
  EXPECT_EQ(Text("source").substr(0, 4), "▲ ") << Text("source");
  EXPECT_EQ(Text("netcontrol"), "No controller connected");
}

TEST_F(ServiceWindowTest, TheRelaysPanelIsThereOnlyWhileItRelays) {
  Station("Demo FM");
  OpenWindow();
  EXPECT_FALSE(Named("service")->findChild<QWidget*>("bouncecontrol")->isVisible());
  ServiceEditor editor(main.Window(1));
  const ServiceSettings before = main.Window(1)->service().settings;
  ServiceSettings after = before;
  after.UseBounce = true;
  after.BounceServer = "10.0.0.9";
  ASSERT_TRUE(editor.ApplySettings(before, after));
  PassDrawn(1s);
  EXPECT_TRUE(Named("bouncecontrol")->isVisible());
  EXPECT_FALSE(Text("bouncecontrol").empty());
}

TEST_F(ServiceWindowTest, ForceUpdateIsAButton) {
  Station("Demo FM");
  OpenWindow();
  QTest::mouseClick(Named("forceUpdate"), Qt::LeftButton);
  Drawn();
  EXPECT_EQ(Text("information"), "Forcing Information Update, waiting..");
}

// ---- Outputs

TEST_F(ServiceWindowTest, EachStateHasItsWordAndItsMark) {
  Station("Demo FM");
  AddFile();
  AddSerial();
  Output(1, OutputType::kHTTP, {{"ServerName1", "slow"}});
  network.SetHost("slow", SimulatedNetwork::HostBehaviour::kHangs);
  ports.made.clear();
  OpenWindow();
  ASSERT_EQ(ports.made.size(), 1U);
  ports.made[0]->outputFailure = "the adapter was pulled out";
  Say(kSong);
  PassDrawn(2s);
  ASSERT_EQ(Grid("outputs")->model()->rowCount(), 3);
  EXPECT_EQ(Cell("outputs", 0, kName), "File 1");
  EXPECT_EQ(Cell("outputs", 0, kState), "OK");
  EXPECT_EQ(Cell("outputs", 0, kStatus), "OK");
  EXPECT_EQ(Cell("outputs", 1, kName), "Serial 1");
  EXPECT_EQ(Cell("outputs", 1, kState), "Failing");
  EXPECT_EQ(Cell("outputs", 1, kSettings), "Port: 3");
  EXPECT_NE(Cell("outputs", 1, kProblem).find("the adapter was pulled out"), std::string::npos);
  EXPECT_NE(Cell("outputs", 1, kProblem, Qt::ToolTipRole).find("Failing since "), std::string::npos);
  EXPECT_EQ(Cell("outputs", 1, kName, Qt::AccessibleTextRole).substr(0, 17), "Serial 1, Failing");
  EXPECT_EQ(Cell("outputs", 2, kState), "Sending");
  EXPECT_EQ(Text("attention").substr(0, 25), "▲ Serial 1 is failing: ");
  EXPECT_TRUE(Named("attention")->isVisible());
  std::set<qint64> marks;
  for (int row = 0; row < 3; ++row) {
    const auto* model = Grid("outputs")->model();
    marks.insert(model->data(model->index(row, 0), Qt::DecorationRole).value<QIcon>().cacheKey());
  }
  EXPECT_EQ(marks.size(), 3U);
}

TEST_F(ServiceWindowTest, TheChoiceStaysWhileOutputsComeGoAndChange) {
  Station("Demo FM");
  AddFile();
  AddSerial();
  OpenWindow();
  Choose(1);
  EXPECT_EQ(window->SelectedOutput(), main.Window(1)->service().Output(OutputType::kSerial, 1));
  ServiceEditor editor(main.Window(1));
  for (const char* title : {"a", "b", "c"}) {
    Say(std::string("SET_CURRENT_ITEM ITitle=") + title);
    PassDrawn(2s);
    EXPECT_EQ(Grid("outputs")->currentIndex().row(), 1);
  }
  // Other settings make it another output at the same place.
  const OutputPtr before = window->SelectedOutput();
  const OutputPtr draft = editor.DraftOf(before);
  dynamic_cast<clsZEBSerialOutput&>(*draft).settings.CommPort = 4;
  ASSERT_TRUE(editor.ReplaceOutput(before, *draft));
  PassDrawn(1s);
  EXPECT_NE(window->SelectedOutput(), before);
  EXPECT_EQ(window->SelectedOutput(), main.Window(1)->service().Output(OutputType::kSerial, 1));
  EXPECT_EQ(Cell("outputs", 1, kSettings), "Port: 4");
  // The one above goes; this one stays chosen. Then it goes itself.
  ASSERT_TRUE(editor.RemoveOutput(main.Window(1)->service().Output(OutputType::kFile, 1)));
  PassDrawn(1s);
  EXPECT_EQ(Grid("outputs")->model()->rowCount(), 1);
  ASSERT_NE(window->SelectedOutput(), nullptr);
  ASSERT_TRUE(editor.RemoveOutput(window->SelectedOutput()));
  PassDrawn(1s);
  EXPECT_EQ(window->SelectedOutput(), nullptr);
  window->CopyStatusText();
  window->CancelSending();
}

TEST_F(ServiceWindowTest, StatusTextIsCopied) {
  Station("Demo FM");
  AddFile();
  OpenWindow();
  Choose(0);
  window->CopyStatusText();
  EXPECT_EQ(QApplication::clipboard()->text().toStdString(), "File 1: OK");
}

TEST_F(ServiceWindowTest, NothingIsDrawnWhenNothingHasChanged) {
  Station("Demo FM");
  AddFile();
  OpenWindow();
  Say(kSong);
  PassDrawn(5s);
  QSignalSpy outputs(Grid("outputs")->model(), &QAbstractItemModel::dataChanged);
  QSignalSpy items(Grid("items")->model(), &QAbstractItemModel::dataChanged);
  PassDrawn(60s);
  EXPECT_EQ(outputs.count(), 0);
  EXPECT_EQ(items.count(), 0);
  Say("SET_NEXT_ITEM ITitle=Next");
  EXPECT_EQ(items.count(), 0) << "one row more, and the others as they were";
  EXPECT_EQ(Cell("items", 1, 1), "Next");
  Say("SET_CURRENT_ITEM ITitle=Other");
  ASSERT_GE(items.count(), 1);
  EXPECT_EQ(items.at(0).at(0).toModelIndex().row(), 0);
}

TEST_F(ServiceWindowTest, AThousandUpdatesLeaveNothingBehind) {
  Station("Demo FM", {{"InstantUpdate", "1"}});
  AddFile();
  OpenWindow();
  const auto count = [this] { return window->findChildren<QObject*>().size(); };
  Say("SET_CURRENT_ITEM ITitle=first");
  PassDrawn(1s);
  const auto before = count();
  for (int i = 0; i < 1000; ++i) {
    Say("SET_CURRENT_ITEM ITitle=t" + std::to_string(i));
    Pass(50ms);
    window->Draw();
  }
  EXPECT_EQ(count(), before);
  EXPECT_EQ(Grid("outputs")->model()->rowCount(), 1);
  EXPECT_LE(Grid("items")->model()->rowCount(), 102);
}

// ---- Titles as nobody wants them

TEST_F(ServiceWindowTest, HostileTitlesDoNotMoveTheWindow) {
  Station("Demo FM");
  AddFile();
  AddSerial();
  OpenWindow();
  const QSize size = window->size(), least = window->minimumSizeHint();
  for (const std::string& title : {std::string(70000, 'W'), std::string("a{0D}{0A}b{00}{1B}[31mc"),
                                   std::string("\u202Eevil\u202C \u2066x"), std::string("مرحبا بالعالم"),
                                   std::string("👩‍👩‍👧‍👦 𝄞 e\u0301\u0301\u0301\u0301"),
                                   std::string("<b>bold</b> & <img src=x>")}) {
    Say("SET_CURRENT_ITEM ITitle=\"" + title + "\" AName1=\"" + title + "\"");
    PassDrawn(3s);
    EXPECT_EQ(window->size(), size);
    // Letters of another font may be lower.
    EXPECT_EQ(window->minimumSizeHint().boundedTo(least), window->minimumSizeHint());
    EXPECT_LT(Text("onAir").size(), 3000U);
    for (const char32_t c : QString::fromStdString(Text("onAir")).toStdU32String())
      EXPECT_FALSE(c < 32 || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069)) << title;
    EXPECT_EQ(window->findChild<QLabel*>("onAir")->textFormat(), Qt::PlainText);
    window->grab();
  }
  EXPECT_EQ(Cell("items", 0, 1, Qt::ToolTipRole), "<p>&lt;b&gt;bold&lt;/b&gt; &amp; &lt;img src=x&gt;</p>");
}

// ---- Keys, pages and what is kept

TEST_F(ServiceWindowTest, PagesAreReachedByTheirKeys) {
  Station("Demo FM");
  OpenWindow();
  auto* pages = window->findChild<QTabWidget*>("pages");
  for (int page = 0; page < 4; ++page) {
    window->ShowPage(static_cast<ServiceWindow::Page>(page));
    EXPECT_EQ(pages->currentIndex(), page);
  }
  for (QAction* action : Grid("outputs")->actions()) EXPECT_FALSE(action->text().isEmpty());
  EXPECT_EQ(Grid("outputs")->actions().size(), 6);
}

TEST_F(ServiceWindowTest, WidthsAndPageAreKeptAsText) {
  Station("Demo FM");
  OpenWindow();
  Grid("outputs")->setColumnWidth(1, 123);
  window->ShowPage(ServiceWindow::Page::kJournal);
  const QString saved = window->SaveState();
  ServiceWindow other(desk, main.Window(1));
  other.RestoreState(saved);
  EXPECT_EQ(other.findChild<GridView*>("outputs")->columnWidth(1), 123);
  EXPECT_EQ(other.findChild<QTabWidget*>("pages")->currentIndex(), 3);
  const QString state = other.SaveState();
  for (const char* bad : {"", "page=9;outputs=-5,99999999,x;splitter=1;items", "=;;=="})
    other.RestoreState(bad);
  EXPECT_EQ(other.SaveState(), state);
}

TEST_F(ServiceWindowTest, TheJournalFollowsAndIsFiltered) {
  Station("Demo FM");
  OpenWindow();
  window->ShowPage(ServiceWindow::Page::kJournal);
  const int before = Grid("journal")->model()->rowCount();
  journal.Note("Demo FM: something");
  journal.Note("Demo FM 2: of another");
  Drawn();
  EXPECT_EQ(Grid("journal")->model()->rowCount(), before + 1);
  EXPECT_EQ(Cell("journal", before, 1), "Demo FM: something");
  QTest::mouseClick(Named("journalOfAll"), Qt::LeftButton, {},
                    QPoint(5, Named("journalOfAll")->height() / 2));
  Settle();
  EXPECT_GT(Grid("journal")->model()->rowCount(), before + 1);
  for (int i = 0; i < 5000; ++i) journal.Note("Demo FM: " + std::to_string(i));
  Drawn();
  EXPECT_LE(Grid("journal")->model()->rowCount(), static_cast<int>(JournalTail::kMostForReading));
  EXPECT_EQ(Cell("journal", Grid("journal")->model()->rowCount() - 1, 1), "Demo FM: 4999");
}

TEST_F(ServiceWindowTest, WhoScrollsBackInTheJournalIsLeftThere) {
  Station("Demo FM");
  OpenWindow();
  window->ShowPage(ServiceWindow::Page::kJournal);
  for (int i = 0; i < 200; ++i) journal.Note("Demo FM: " + std::to_string(i));
  Drawn();
  QScrollBar* bar = Grid("journal")->verticalScrollBar();
  EXPECT_EQ(bar->value(), bar->maximum());
  Grid("journal")->setFocus();
  Grid("journal")->setCurrentIndex(Grid("journal")->model()->index(100, 0));
  for (int i = 0; i < 60; ++i) QTest::keyClick(Grid("journal"), Qt::Key_Up);
  const int read = bar->value();
  ASSERT_LT(read, bar->maximum());
  journal.Note("Demo FM: new");
  Drawn();
  EXPECT_EQ(bar->value(), read);
  bar->setValue(bar->maximum());
  journal.Note("Demo FM: newer");
  Drawn();
  EXPECT_EQ(bar->value(), bar->maximum());
}

TEST_F(ServiceWindowTest, AServiceThatHasGoneIsNotDrawn) {
  Station("Demo FM");
  AddFile();
  OpenWindow();
  Choose(0);
  ASSERT_TRUE(main.RemoveConfirmed(1));
  PassDrawn(5s);
  window->Draw();
  window->CopyStatusText();
  EXPECT_EQ(window->windowTitle(), "Demo FM");
}

}  // namespace
}  // namespace zeb
