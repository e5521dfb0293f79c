// frmMain: starts the application, keeps the list of service windows, adds and removes services, and decides
// whether the application may quit. Without the drawing; zebd runs it as it is, the desktop program puts a
// frame around it.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/StartUpOptions.h"
#include "app/frmService.h"
#include "platform/Result.h"

namespace zeb {

class frmMain {
 public:
  // What a program with windows shows; zebd sets none of it.
  struct Display {
    std::function<void(const std::string& text, const std::string& action)> splash;
    std::function<void()> arrange;  // sizes the frame and arranges the service windows
    std::function<void()> minimise;
  };

  frmMain(Environment& environment, OutputFactory makeOutput, StartUpOptions options);
  ~frmMain();
  frmMain(const frmMain&) = delete;
  frmMain& operator=(const frmMain&) = delete;

  Display display;

  // Imports the file named on the command line, chooses the settings root, migrates the previous version's
  // services, loads every service. Fails only when the settings cannot be used; the program then ends.
  Outcome Load();
  void LoadServices();
  // A new service after the last; its number, or 0 when it cannot be stored (the operator has been told).
  int AddService();
  // Asks first; false when the answer is No, or when the change cannot be stored. Later services move down
  // one number.
  bool RemoveService(int number);
  // Reads the number of services and all settings again. For SIGHUP.
  void Reload();

  // Asks whether to quit, and whether to wait while updates run. When the answer is yes, `closed` is called
  // once every service has finished its update and is closed (perhaps before this returns).
  bool RequestQuit(std::function<void()> closed);
  // A service window has closed. When it was the last one to wait for, quitting goes on.
  void ServiceFinished();

  int NumberServices() const { return static_cast<int>(windows_.size()); }
  const std::shared_ptr<frmService>& Window(int number) const {
    return windows_.at(static_cast<std::size_t>(number) - 1);
  }
  // The names of the services whose update is not finished. "" when there is none.
  std::string UpdatingServices() const;

 private:
  Outcome ImportSettings();
  void OpenWindow(int number);
  bool StoreWithout(int number);
  void ShrinkTo(int count);
  bool AllClosed() const;
  void ReloadLater(const std::string& reason);

  Environment& environment_;
  OutputFactory makeOutput_;
  StartUpOptions options_;
  std::vector<std::shared_ptr<frmService>> windows_;
  bool quitting_ = false;
  Timer reloadRetry_;
  std::function<void()> closed_;  // once, at the end of quitting
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace zeb
