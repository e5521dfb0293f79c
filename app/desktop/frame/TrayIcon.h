// TrayIcon: the program in the desktop's tray: its picture with the mark of the worst state, a menu (open,
// what fails, force an update, exit), and one balloon when something begins to fail and one when it works
// again. Where there is no tray nothing is missing but this.
//
// Owned by the frame, which tells it of news; asks the frame for what its menu shows when that opens.
#pragma once

#include <QMenu>
#include <QSystemTrayIcon>
#include <functional>
#include <string>
#include <vector>

#include "app/desktop/frame/TroubleWatch.h"

namespace zeb {

class TrayIcon {
 public:
  struct Frame {
    std::function<void()> open, exit;
    std::function<std::vector<Trouble>()> troubles;      // a few
    std::function<std::vector<std::string>()> services;  // names, a few
    std::function<void(int number)> forceUpdate;
  };
  explicit TrayIcon(Frame frame);

  void Show() { icon_.show(); }
  void Hide() { icon_.hide(); }
  // How many outputs fail, of how many services.
  void SetState(std::size_t failing, int services);
  void Tell(const TroubleWatch::News& news);

  QMenu& Menu() { return menu_; }
  QString ToolTip() const { return icon_.toolTip(); }
  // The balloon that was shown last: title and text, for the journal of a test.
  const QString& LastBalloon() const { return balloon_; }

 private:
  void FillMenu();
  void Balloon(const QString& title, const std::vector<Trouble>& troubles, QSystemTrayIcon::MessageIcon icon);

  const Frame frame_;
  QMenu menu_;
  QSystemTrayIcon icon_;
  Severity worst_ = Severity::kOk;
  QString balloon_;
};

}  // namespace zeb
