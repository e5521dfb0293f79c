// FrameSettings: what the frame remembers: under the settings root's key "Desktop" what concerns the frame,
// and in the key "Window" of a service where its window stands (it moves along when the service gets another
// number). A store that cannot be read gives the defaults; one that cannot be written is a line in the
// journal, and the windows stay as they are.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/desktop/frame/Theme.h"
#include "app/desktop/frame/WindowPlacement.h"
#include "platform/Environment.h"

namespace zeb {

struct FrameLayout {
  Placement frame;  // empty: never stored
  ThemeChoice theme = ThemeChoice::kSystem;
  bool tabs = false;
  bool overview = true;
  int overviewWidth = 0;   // 0: as it comes
  std::vector<int> open;   // numbers of the services whose windows are open, the active one last
  bool openKnown = false;  // whether that was ever stored
};

class FrameSettings {
 public:
  explicit FrameSettings(Environment& environment) : environment_(environment) {}

  FrameLayout Read() const;

  // A service's window, and how what is in it was arranged (ServiceWindow::SaveState).
  struct ServicePlace {
    int service = 0;
    Placement placement;
    std::string view;
  };
  ServicePlace ReadWindow(int service) const;
  void Write(const FrameLayout& layout, const std::vector<ServicePlace>& windows) const;
  void WriteTheme(ThemeChoice theme) const;

 private:
  std::string Key() const { return environment_.settingsRoot + "\\Desktop"; }
  void Store(const std::function<void()>& changes) const;

  Environment& environment_;
};

}  // namespace zeb
