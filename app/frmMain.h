// frmMain: starts the application, keeps the list of service windows, adds and removes services, and decides
// whether the application may quit. Without the drawing; zebd runs it as it is.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/StartUpOptions.h"
#include "app/frmService.h"

namespace zeb {

class frmMain {
 public:
  frmMain(Environment& environment, OutputFactory makeOutput, StartUpOptions options);
  ~frmMain();

  // Chooses the settings root, migrates the previous version's services, loads every service.
  void Load();
  void LoadServices();
  // A new service after the last; its number.
  int AddService();
  // Asks first; false when the answer is No. Later services move down one number.
  bool RemoveService(int number);
  // Reads the number of services and all settings again. For SIGHUP.
  void Reload();

  // Asks whether to quit, and whether to wait while updates run. When the answer is yes, `closed` is called
  // once every service has finished its update and is closed.
  bool RequestQuit(std::function<void()> closed);

  int NumberServices() const { return static_cast<int>(windows_.size()); }
  const std::shared_ptr<frmService>& Window(int number) const {
    return windows_.at(static_cast<std::size_t>(number) - 1);
  }

 private:
  Environment& environment_;
  OutputFactory makeOutput_;
  StartUpOptions options_;
  std::vector<std::shared_ptr<frmService>> windows_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace zeb
