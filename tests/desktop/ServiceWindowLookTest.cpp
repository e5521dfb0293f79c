#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QLineEdit>
#include <QTabWidget>
#include <set>

#include "app/desktop/service/AttentionLine.h"
#include "app/desktop/service/SeverityMark.h"
#include "app/desktop/service/StationRows.h"
#include "tests/desktop/ServiceWindowTest.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

class ServiceWindowLookTest : public ServiceWindowTest {
 protected:
  void SetUp() override {
    Station("Demo FM");
    AddFile();
    AddSerial();
    OpenWindow();
  }
  // Every page, so that each of its widgets is laid out.
  void ShowAllPages() {
    for (const auto page : {ServiceWindow::Page::kItems, ServiceWindow::Page::kListeners,
                            ServiceWindow::Page::kHistory, ServiceWindow::Page::kJournal}) {
      window->ShowPage(page);
      Drawn();
    }
  }
};

TEST_F(ServiceWindowLookTest, WhatCanBeReachedHasANameForThoseWhoHearIt) {
  ShowAllPages();
  for (QWidget* widget : window->findChildren<QWidget*>()) {
    if (widget->focusPolicy() == Qt::NoFocus || widget->objectName().startsWith("qt_")) continue;
    if (widget->parentWidget() != nullptr && widget->parentWidget()->objectName() == "pages") continue;
    QAccessibleInterface* heard = QAccessible::queryAccessibleInterface(widget);
    ASSERT_NE(heard, nullptr);
    EXPECT_FALSE(heard->text(QAccessible::Name).isEmpty()) << widget->objectName().toStdString();
  }
}

TEST_F(ServiceWindowLookTest, MnemonicsAreUniqueAndNoneOfTheMenus) {
  ShowAllPages();
  QStringList captions;
  for (const auto* button : window->findChildren<QAbstractButton*>()) captions << button->text();
  for (const auto* label : window->findChildren<QLabel*>())
    if (label->buddy() != nullptr) captions << label->text();
  const auto* pages = window->findChild<QTabWidget*>("pages");
  for (int i = 0; i < pages->count(); ++i) captions << pages->tabText(i);
  std::set<QChar> used = {'F', 'S', 'V', 'W', 'T', 'H'};
  for (const QString& caption : captions) {
    const qsizetype at = caption.indexOf('&');
    if (at < 0) continue;
    EXPECT_TRUE(used.insert(caption[at + 1].toUpper()).second) << caption.toStdString();
  }
  EXPECT_GE(used.size(), 6U + 8U);
}

TEST_F(ServiceWindowLookTest, NothingIsCutAtAnyScale) {
  const QFont font = QApplication::font();
  for (const double scale : {1.0, 1.5, 2.0}) {
    QFont larger = font;
    larger.setPointSizeF(font.pointSizeF() * scale);
    QApplication::setFont(larger);
    ServiceWindow scaled(desk, main.Window(1));
    scaled.resize(scaled.minimumSizeHint());
    scaled.show();
    for (int page = 0; page < 4; ++page) {
      scaled.ShowPage(static_cast<ServiceWindow::Page>(page));
      Settle();
      for (const auto* button : scaled.findChildren<QAbstractButton*>()) {
        if (!button->isVisible() || button->text().isEmpty()) continue;
        EXPECT_GE(button->width(), button->minimumSizeHint().width()) << button->text().toStdString();
        EXPECT_GE(button->height(), button->fontMetrics().height()) << button->text().toStdString();
      }
      for (const auto* label : scaled.findChildren<QLabel*>())
        if (label->isVisible()) {
          // Where fonts are measured in fractions, rounding takes a pixel.
          EXPECT_GE(label->height() + 1, label->fontMetrics().height()) << label->objectName().toStdString();
        }
    }
  }
  QApplication::setFont(font);
}

// ---- Announcements

TEST_F(ServiceWindowLookTest, AnOutputThatBeginsToFailIsTold) {
  auto* line = dynamic_cast<AttentionLine*>(window->findChild<QWidget*>("attention"));
  ASSERT_NE(line, nullptr);
  std::vector<QString> heard;
  line->onBegins = [&] { heard.push_back(line->text()); };
  Say("SET_CURRENT_ITEM ITitle=a");
  PassDrawn(3s);
  EXPECT_TRUE(heard.empty());
  ports.made.at(0)->outputFailure = "pulled out";
  Say("SET_CURRENT_ITEM ITitle=b");
  PassDrawn(4s);
  ASSERT_EQ(heard.size(), 1U);
  EXPECT_TRUE(heard[0].startsWith("▲ Serial 1 is failing")) << heard[0].toStdString();
  PassDrawn(30s);
  EXPECT_EQ(heard.size(), 1U) << "once";
  ports.made.at(0)->outputFailure.clear();
  Say("SET_CURRENT_ITEM ITitle=c");
  PassDrawn(90s);
  EXPECT_FALSE(window->findChild<QWidget*>("attention")->isVisible());
  EXPECT_EQ(heard.size(), 1U);
}

// ---- Rows

OutputState File1() {
  OutputState state;
  state.type = OutputType::kFile;
  state.number = 1;
  state.status = "OK";
  state.severity = Severity::kOk;
  return state;
}

GridRow RowOf(const OutputState& output, const clsZEBService& service) {
  StationState state;
  state.outputs = {output};
  return OutputRows(state, service).at(0);
}

TEST_F(ServiceWindowLookTest, WhatIsBeingSentHasABar) {
  const clsZEBService& service = main.Window(1)->service();
  OutputState state = File1();
  state.severity = Severity::kBusy;
  EXPECT_EQ(RowOf(state, service).cells[1].text, "Sending");
  state.progress = 62;
  EXPECT_EQ(RowOf(state, service).cells[1].text, "62 %");
  EXPECT_EQ(RowOf(state, service).cells[1].progress, 62);
}

TEST_F(ServiceWindowLookTest, AnOlderItemIsNotAsGoodAsThePresentOne) {
  const clsZEBService& service = main.Window(1)->service();
  OutputState state = File1();
  EXPECT_EQ(RowOf(state, service).cells[1].text, "OK");
  state.stale = true;
  state.staleSince = loop.Now();
  const GridRow row = RowOf(state, service);
  EXPECT_EQ(row.cells[1].text, "Older item");
  EXPECT_EQ(row.mark, kOldMark);
  EXPECT_TRUE(row.cells[kProblemColumn].toolTip.startsWith("Shows an older item since "));
  state.severity = Severity::kFailing;
  EXPECT_EQ(RowOf(state, service).mark, kFailingMark) << "that it fails is the worse of both";
}

TEST_F(ServiceWindowLookTest, EachMarkIsItsOwnShapeAlsoOnAChosenRow) {
  for (const QIcon::Mode mode : {QIcon::Normal, QIcon::Selected}) {
    std::vector<QImage> shapes;
    for (const QIcon& mark : OutputMarks(window->palette()))
      shapes.push_back(mark.pixmap(QSize(32, 32), mode).toImage().convertToFormat(QImage::Format_Alpha8));
    for (std::size_t a = 0; a < shapes.size(); ++a)
      for (std::size_t b = a + 1; b < shapes.size(); ++b)
        EXPECT_NE(shapes[a], shapes[b]) << a << " and " << b;
  }
}

}  // namespace
}  // namespace zeb
