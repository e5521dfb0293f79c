#include "app/desktop/frame/MainWindow.h"

#include <QAccessible>
#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <algorithm>
#include <utility>

#include "app/DemoStation.h"
#include "app/desktop/Boxes.h"
#include "app/desktop/dialogs/Files.h"
#include "app/desktop/frame/AppIcon.h"
#include "app/desktop/frame/FirstRunPage.h"
#include "app/desktop/text/Translate.h"
#include "app/frmMain.h"
#include "text/Composed.h"
#include "text/OneLine.h"

namespace zeb {
namespace {

constexpr int kStatusMilliseconds = 5000;
constexpr std::size_t kTrayLines = 10;
constexpr int kTrayServices = 20;
constexpr QSize kFirstSize(1180, 760);

QString ClockText(WallTime now) {
  const auto time = now - std::chrono::floor<std::chrono::days>(now);
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time).count();
  return QStringLiteral("%1:%2:%3")
      .arg(seconds / 3600, 2, 10, QLatin1Char('0'))
      .arg(seconds / 60 % 60, 2, 10, QLatin1Char('0'))
      .arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

}  // namespace

MainWindow::MainWindow(Desk& desk, Ways ways)
    : desk_(desk),
      ways_(std::move(ways)),
      settings_(desk.environment),
      overview_(*new ServicesOverview(desk.main)),
      area_(*new ServiceArea(desk, settings_)),
      splitter_(new QSplitter(this)),
      pages_(new QStackedWidget(splitter_)),
      menus_(desk, *this, area_, MenuFrame()),
      tray_(TrayFrame()),
      folder_(new QLabel(this)),
      mark_(new QLabel(this)),
      failing_(new QLabel(this)),
      clock_(new QLabel(this)) {
  setObjectName("Frame");
  setWindowIcon(AppIcon());
  const std::string demo = DemoStationFolder(desk_.environment);
  auto* first = new FirstRunPage(pages_, !demo.empty());
  first->onDemo = [this, demo] { SetUpDemoStation(demo); };
  first->onAdd = [this] { AddService(); };
  first->onImport = [this] { OpenImportSettings(desk_); };
  first->onManual = [this] { ways_.openManual(); };
  pages_->addWidget(&area_);
  pages_->addWidget(first);
  splitter_->addWidget(&overview_);
  splitter_->addWidget(pages_);
  splitter_->setStretchFactor(1, 1);
  splitter_->setChildrenCollapsible(false);
  setCentralWidget(splitter_);
  overview_.onOpen = [this](const ServicePtr& service) { area_.Show(service); };
  area_.onActivated = [this] { Activated(); };
  area_.onMade = [this](ServiceWindow& window) { menus_.GiveKeysTo(window); };
  AddStatusBar();
  resize(kFirstSize);
  look_ = desk_.environment.loop.Every(kLook, [this] { LookAtTroubles(); });
  ShowPage();
}

MainWindow::~MainWindow() {
  area_.onActivated = nullptr;
  area_.CloseAll();
}

FrameMenus::Frame MainWindow::MenuFrame() {
  return {.quit = [this] { ways_.quit(); },
          .addService = [this] { AddService(); },
          .toggleOverview =
              [this] {
                layout_.overview = !layout_.overview;
                ShowPage();
              },
          .toggleTabs =
              [this] {
                layout_.tabs = !layout_.tabs;
                ShowPage();
              },
          .openManual = [this] { ways_.openManual(); },
          .find =
              [this] {
                layout_.overview = true;
                ShowPage();
                overview_.FocusFind();
              },
          .say = [this](const QString& text) { statusBar()->showMessage(text, kStatusMilliseconds); },
          .chooseTheme = [this](ThemeChoice choice) { ChooseTheme(choice); },
          .service = [this] { return Service(); }};
}

TrayIcon::Frame MainWindow::TrayFrame() {
  return {.open = [this] { Raise(); },
          .exit = [this] { ways_.quit(); },
          .troubles = [this] { return troubles_.Worst(kTrayLines); },
          .services =
              [this] {
                std::vector<std::string> names;
                const int count = std::min(desk_.main.NumberServices(), kTrayServices);
                for (int number = 1; number <= count; ++number)
                  names.push_back(OneLine(desk_.main.Window(number)->service().settings.ServiceName, 60));
                return names;
              },
          .forceUpdate =
              [this](int number) {
                if (number <= desk_.main.NumberServices()) desk_.main.Window(number)->ForceUpdate();
              }};
}

void MainWindow::AddStatusBar() {
  folder_->setTextFormat(Qt::PlainText);
  failing_->setObjectName("Failing");
  clock_->setObjectName("Clock");
  statusBar()->addWidget(folder_, 1);
  statusBar()->addPermanentWidget(mark_);
  statusBar()->addPermanentWidget(failing_);
  statusBar()->addPermanentWidget(clock_);
  ShowTexts();
}

// What is drawn once and stays; what is opened later asks for its language then.
void MainWindow::ShowTexts() {
  const QString folder = QString::fromStdString(desk_.environment.dataFolder);
  const bool publishes = desk_.environment.publishes;
  setWindowTitle(publishes ? QStringLiteral("ZEB") : T("ZEB - settings of the publisher on %1").arg(folder));
  folder_->setText((publishes ? T("Ready") : T("Only settings: another program publishes")) + " · " +
                   T("data folder %1").arg(folder));
  menus_.ShowTexts();
  overview_.ShowTexts();
  ShowTroubles();
}

void MainWindow::Arrange() {
  layout_ = settings_.Read();
  ApplyTheme(layout_.theme);
  Place(*this, layout_.frame, PresentScreens());
  TakeListOver();
  if (layout_.overviewWidth > 0) splitter_->setSizes({layout_.overviewWidth, width()});
  ShowPage();
  const int count = desk_.main.NumberServices();
  // The first start with services: the first one's window, filling the frame.
  const std::vector<int> open = layout_.openKnown ? layout_.open : std::vector<int>(count > 0 ? 1 : 0, 1);
  for (const int number : open)
    if (number <= count) area_.Show(desk_.main.Window(number));
  LookAtTroubles();
}

ServicePtr MainWindow::Service() const {
  if (const ServiceWindow* window = area_.Active()) return window->Service();
  return overview_.Selected();
}

void MainWindow::AddService() {
  const int number = desk_.main.AddService();
  if (number == 0) return;  // the reason has been shown
  TakeListOver();
  const ServicePtr service = desk_.main.Window(number);
  area_.Show(service);
  OpenServiceSettings(desk_, service);
}

// Its settings are read as after an import.
void MainWindow::SetUpDemoStation(const std::string& folder) {
  desk_.environment.loop.Start("set up the demo station", [&desk = desk_, folder] {
    const Outcome stored = StoreDemoStation(desk.environment, folder);
    desk.environment.loop.Post([&desk, stored] {
      if (stored) return desk.main.Reload();
      desk.boxes.Show(desk.frame, MessageIcon::kExclamation,
                      Composed("The demo station could not be set up.\n%1", {stored.Reason()}));
    });
  });
}

// ---- What can be seen

// Perhaps from inside a task.
void MainWindow::Changed(int number) {
  if (number == 0)
    listChanged_ = true;
  else
    changed_.insert(number);
  if (!draw_.Running()) draw_ = desk_.environment.loop.After(kGather, [this] { DrawChanges(); });
}

bool MainWindow::Seen() const {
  return isVisible() && !isMinimized();
}

void MainWindow::DrawChanges() {
  if (std::exchange(listChanged_, false)) TakeListOver();
  for (const int number : std::exchange(changed_, {})) {
    if (number > desk_.main.NumberServices()) continue;
    troubles_.Changed(desk_.main.Window(number));
    overview_.List().ServiceChanged(number);
  }
  if (Seen()) area_.Draw();
}

void MainWindow::TakeListOver() {
  listChanged_ = false;
  area_.CloseGone(desk_.main);
  overview_.List().ListChanged();
  for (int number = 1; number <= desk_.main.NumberServices(); ++number)
    troubles_.Changed(desk_.main.Window(number));
  ShowPage();
  ShowTroubles();
}

void MainWindow::ShowPage() {
  const bool none = desk_.main.NumberServices() == 0;
  pages_->setCurrentIndex(none ? 1 : 0);
  overview_.setVisible(!none && layout_.overview);
  const auto mode = layout_.tabs ? QMdiArea::TabbedView : QMdiArea::SubWindowView;
  if (area_.viewMode() != mode) area_.setViewMode(mode);
  menus_.ShowState(layout_.overview, layout_.tabs, layout_.theme);
  menus_.ShowWhatCanBeDone();
}

void MainWindow::Activated() {
  if (const ServiceWindow* window = area_.Active()) overview_.Select(window->Service());
  menus_.ShowWhatCanBeDone();
}

void MainWindow::LookAtTroubles() {
  const TroubleWatch::News news = troubles_.Look(desk_.main, desk_.environment.loop.Monotonic());
  ShowTroubles();
  clock_->setText(ClockText(desk_.environment.loop.Now()));
  if (news.begun.empty() && news.ended.empty()) return;
  tray_.Tell(news);
  QAccessibleEvent told(failing_, QAccessible::Alert);
  QAccessible::updateAccessibility(&told);
}

// Services that hear nothing, which the overview shows as failing.
int MainWindow::CountDeaf() const {
  int count = 0;
  for (int number = 1; number <= desk_.main.NumberServices(); ++number)
    count += desk_.main.Window(number)->Board().Hears() ? 0 : 1;
  return count;
}

void MainWindow::ShowTroubles() {
  const int services = desk_.main.NumberServices();
  const std::size_t failing = troubles_.Count();
  const bool known = services > 0 && desk_.environment.publishes;
  const int deaf = known ? CountDeaf() : 0;
  const QString count = services == 1 ? T("1 service") : T("%1 services").arg(services);
  const QString state = failing > 0                      ? T("%1 failing").arg(failing)
                        : deaf > 0                       ? T("%1 without a source").arg(deaf)
                        : known && troubles_.AllIsWell() ? T("all is well")
                                                         : QString();
  const Severity worst = failing > 0 || deaf > 0 ? Severity::kFailing
                         : known                 ? Severity::kOk
                                                 : Severity::kOff;
  mark_->setPixmap(MarkIcon(worst, QApplication::palette()).pixmap(16, 16));
  failing_->setText(state.isEmpty() ? count : state + " · " + count);
  tray_.SetState(failing, services);
}

void MainWindow::ChooseTheme(ThemeChoice choice) {
  layout_.theme = choice;
  ApplyTheme(choice);
  settings_.WriteTheme(choice);
}

// ---- The window itself

void MainWindow::Say(const std::string& text) {
  statusBar()->showMessage(T(text), kStatusMilliseconds);
}

void MainWindow::Raise() {
  if (isMinimized()) setWindowState(windowState() & ~Qt::WindowMinimized);
  show();
  raise();
  activateWindow();
}

void MainWindow::Save() {
  layout_.frame = PlacementOf(*this);
  if (overview_.isVisible()) layout_.overviewWidth = overview_.width();
  layout_.open = area_.Open();
  settings_.Write(layout_, area_.Places());
}

// Whoever closes the window is asked; when the answer is yes the program ends, and the window with it.
void MainWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  ways_.quit();
}

void MainWindow::WatchWhatIsSeen() {
  if (!Seen()) return refresh_.Stop();
  if (refresh_.Running()) return;
  area_.Draw();
  refresh_ = desk_.environment.loop.Every(kRefresh, [this] { area_.Draw(); });
}

void MainWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::WindowStateChange) WatchWhatIsSeen();
  if (event->type() != QEvent::PaletteChange) return;
  menus_.ShowState(layout_.overview, layout_.tabs, layout_.theme);
  ShowTroubles();
}

void MainWindow::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  WatchWhatIsSeen();
}

void MainWindow::hideEvent(QHideEvent* event) {
  QMainWindow::hideEvent(event);
  WatchWhatIsSeen();
}

}  // namespace zeb
