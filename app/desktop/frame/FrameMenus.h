// FrameMenus: the frame's menus, toolbar and shortcuts, and what each command does. A command that needs a
// service works on the one whose window is active; one that needs an output, on the one selected there.
//
// Owned by the frame. What it opens are the dialogs of dialogs/ and print/; it decides nothing itself.
#pragma once

#include <QAction>
#include <QKeySequence>
#include <QList>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <vector>

#include "app/desktop/Desk.h"
#include "app/desktop/dialogs/Dialogs.h"
#include "app/desktop/frame/ServiceArea.h"
#include "app/desktop/frame/Theme.h"

class QMainWindow;
class QMenu;

namespace zeb {

class FrameMenus {
 public:
  // What only the frame can do.
  struct Frame {
    std::function<void()> quit, addService, toggleOverview, toggleTabs, openManual, find;
    std::function<void(const QString&)> say;  // in the status bar
    std::function<void(ThemeChoice)> chooseTheme;
    std::function<ServicePtr()> service;  // the one that commands work on; null: none
  };
  FrameMenus(Desk& desk, QMainWindow& window, ServiceArea& area, Frame frame);

  // The active window is another: what cannot be done is grey.
  void ShowWhatCanBeDone();
  void ShowTexts();  // in the chosen language
  void ShowState(bool overview, bool tabs, ThemeChoice theme);
  // A service's window has been made: the keys of outputs work while its list of outputs has the keyboard.
  void GiveKeysTo(ServiceWindow& window);

 private:
  enum class Scope { kAlways, kService, kOutput };
  struct Command {
    const char* name;  // objectName; null: a separator
    std::string_view caption;
    QList<QKeySequence> keys;
    Scope scope = Scope::kAlways;
    std::function<void()> run;
  };
  QMenu* AddMenu(std::string_view caption, std::initializer_list<Command> commands);
  QAction* AddCommand(QMenu& menu, const Command& command);
  void AddFileMenu();
  void AddServiceMenu();
  void AddViewMenu();
  void AddThemes(QMenu& menu);
  void AddWindowMenu();
  void AddOtherMenus();
  void FillWindowMenu();
  void AddToolBar();
  void GivePictures();
  QAction* Find(const char* name) const;
  std::function<void()> OnService(void (*open)(Desk&, const ServicePtr&));
  std::function<void()> OnOutput(void (*open)(Desk&, const ServicePtr&, const OutputPtr&));
  std::function<void()> OnPage(ServiceWindow::Page page);

  Desk& desk_;
  QMainWindow& window_;
  ServiceArea& area_;
  const Frame frame_;
  std::vector<QAction*> ofService_, ofOutput_, themes_, first_;
};

}  // namespace zeb
