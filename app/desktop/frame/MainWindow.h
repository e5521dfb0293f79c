// MainWindow: the frame: the overview of all services at the side, their windows in the middle, menus,
// toolbar, status bar and tray icon. Closing it asks whether to quit; it goes when everything is closed.
//
// What the engine tells may come from inside a task and only marks what has changed; drawing is done a
// moment later from the loop's timers, and only of what can be seen: a window that is minimised costs
// nothing but the look at what fails.
#pragma once

#include <QMainWindow>
#include <functional>
#include <memory>
#include <set>
#include <string>

#include "app/desktop/Desk.h"
#include "app/desktop/frame/FrameMenus.h"
#include "app/desktop/frame/FrameSettings.h"
#include "app/desktop/frame/ServiceArea.h"
#include "app/desktop/frame/ServicesOverview.h"
#include "app/desktop/frame/TrayIcon.h"
#include "app/desktop/frame/TroubleWatch.h"
#include "app/desktop/text/Translate.h"
#include "platform/EventLoop.h"

class QLabel;
class QSplitter;
class QStackedWidget;

namespace zeb {

class MainWindow : public QMainWindow {
 public:
  // Changes are drawn together, so long after the first of them; what time itself changes (progress, clocks)
  // so often; what fails is looked at each second.
  static constexpr Duration kGather = std::chrono::milliseconds(40);
  static constexpr Duration kRefresh = std::chrono::milliseconds(250);
  static constexpr Duration kLook = std::chrono::seconds(1);

  struct Ways {
    std::function<void()> quit;  // asks, and ends the program
    std::function<void()> openManual;
  };
  // `desk` outlives it. Nothing is shown yet.
  MainWindow(Desk& desk, Ways ways);
  ~MainWindow() override;

  // Once the services are there: takes its place and opens the windows that were open. Does not show itself.
  void Arrange();
  void Changed(int number);           // frmMain::Display::changed
  void Say(const std::string& text);  // for a moment in the status bar
  void Raise();                       // out of the taskbar, before the other windows
  void Save();                        // where everything stands

  void AddService();
  ServiceArea& Area() { return area_; }
  ServicesOverview& Overview() { return overview_; }
  TrayIcon& Tray() { return tray_; }
  // What commands work on: the active window's service, else the one selected in the overview.
  ServicePtr Service() const;

 private:
  void closeEvent(QCloseEvent* event) override;
  void changeEvent(QEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

  FrameMenus::Frame MenuFrame();
  TrayIcon::Frame TrayFrame();
  void AddStatusBar();
  bool Seen() const;
  void WatchWhatIsSeen();
  void DrawChanges();
  void SetUpDemoStation(const std::string& folder);
  void TakeListOver();
  void LookAtTroubles();
  int CountDeaf() const;
  void ShowTroubles();
  void ShowPage();
  void Activated();
  void ChooseTheme(ThemeChoice choice);
  void ShowTexts();

  Desk& desk_;
  const Ways ways_;
  FrameSettings settings_;
  FrameLayout layout_;
  ServicesOverview& overview_;
  ServiceArea& area_;
  QSplitter* const splitter_;
  QStackedWidget* const pages_;
  TroubleWatch troubles_;  // before the tray's menu, which shows them
  FrameMenus menus_;
  TrayIcon tray_;
  QLabel* const folder_;
  QLabel* const mark_;
  QLabel* const failing_;
  QLabel* const clock_;
  bool listChanged_ = true;
  std::set<int> changed_;
  Timer draw_, refresh_, look_;
  LanguageWatch language_{[this] { ShowTexts(); }};
};

}  // namespace zeb
