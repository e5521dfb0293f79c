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
#include "platform/Epoch.h"
#include "platform/Result.h"
#include "status/Alarms.h"

namespace zeb {

class frmMain {
 public:
  // What a program with windows shows; zebd sets none of it.
  struct Display {
    std::function<void(const std::string& text, const std::string& action)> splash;
    std::function<void()> arrange;  // at the start: sizes the frame, arranges the service windows
    std::function<void()> minimise;
    // What is to be seen of a service is another (its number), or the list of services is (0). Called often.
    std::function<void(int number)> changed;
  };

  // What became of it; `nobodyRuns`: there is no such program any more.
  struct Removed {
    Outcome outcome;
    bool nobodyRuns = false;
  };

  // `history` is where is kept what was on air and what was shown; null: it is not kept.
  frmMain(Environment& environment, OutputFactory makeOutput, StartUpOptions options,
          std::shared_ptr<HistoryStore> history = nullptr);
  ~frmMain();
  frmMain(const frmMain&) = delete;
  frmMain& operator=(const frmMain&) = delete;

  Display display;
  std::function<void(int number)> onChanged;  // as Display::changed; for the control room
  // Where only settings are edited: lets the program that publishes remove a service, which keeps the items
  // and connections of the others. Null: it is removed here.
  std::function<void(int number, std::function<void(const Removed&)> done)> removeElsewhere;

  // Imports the file named on the command line, chooses the settings root, migrates the previous version's
  // services, loads every service. Where only settings are edited: the last alone. Fails only when the
  // settings cannot be used; the program then ends.
  Outcome Load();
  void LoadServices();
  // A new service after the last; its number, or 0 when it cannot be stored (the operator has been told).
  int AddService();
  // Asks first. When the answer is Yes and the change can be stored, the service goes and later ones move
  // down one number. Only one such question is open at a time.
  void RemoveService(int number);
  // The same without the question: whoever asks has confirmed it. Fails when it cannot be stored.
  Outcome RemoveConfirmed(int number);
  // Reads the number of services and all settings again. For SIGHUP.
  void Reload();

  // Asks whether to quit, and whether to wait while updates run; asking again before the answer changes
  // nothing. When the answer is yes, everything is closed once no service is updating.
  void RequestQuit(std::function<void()> closed);
  // Closes every service, without a question: what is under way is given up after a moment, so that `closed`
  // is called within a few seconds (perhaps before this returns). What waits for the history is written.
  void Quit(std::function<void()> closed);
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
  void RemoveLeftOvers() const;
  void ArrangeWindows() const;
  void KeepHistory();
  void OpenWindow(int number);
  void Tell(int number) const;
  static void LetGo(frmService& window);
  Outcome RemoveWindow(const std::shared_ptr<frmService>& window);
  void RemoveElsewhere(const std::shared_ptr<frmService>& window);
  Outcome StoreWithout(int number);
  void TakeStoredOver(int from);
  void ShrinkTo(int count);
  void AskWhetherToWait(const std::function<void()>& closed);
  bool AllClosed() const;
  // In a task, which may outlive this object; `mark` tells.
  void ReloadAll(const Epoch::Mark& mark);
  Outcome ReloadWindows(const Epoch::Mark& mark);
  void ReloadLater(const std::string& reason);
  void LookForAlarms();

  Environment& environment_;
  OutputFactory makeOutput_;
  StartUpOptions options_;
  const std::shared_ptr<HistoryStore> historyStore_;
  std::shared_ptr<HistoryRecorder> history_;  // once the settings are known; null: none is kept
  std::vector<std::shared_ptr<frmService>> windows_;
  bool removeAsked_ = false, quitAsked_ = false;  // a question is open
  bool quitting_ = false;
  bool reloading_ = false, reloadWanted_ = false;
  Timer reloadRetry_;
  Alarms alarms_;
  Timer alarmLook_;
  std::function<void()> closed_;  // once, at the end of quitting
  Epoch epoch_;                   // ends with this object
};

}  // namespace zeb
