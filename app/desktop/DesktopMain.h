// DesktopMain: the desktop program without what it runs on: its windows, in the order in which a start and an
// end need them. The main program tells it what the publisher does, and gives it the ways to end.
//
// Needs the application object of Qt; lives until the process ends.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/ControlRoom.h"
#include "app/RunningElsewhere.h"
#include "app/StartUpOptions.h"
#include "app/desktop/Boxes.h"
#include "app/desktop/Desk.h"
#include "app/desktop/DesktopOperator.h"
#include "app/desktop/frame/MainWindow.h"
#include "app/desktop/frame/OtherPublisher.h"
#include "app/desktop/frame/Splash.h"

namespace zeb {

class DesktopMain {
 public:
  struct Start {
    bool silent = false, minimised = false;
    std::string folder;       // the data folder
    std::string manual;       // the folder of the manual's pages; "" when there is none
    std::string screenshots;  // the folder to put pictures of all windows into, and then to end; "" for none
  };
  struct Ways {
    std::function<void()> ended;                       // everything is closed: ends the process
    std::function<void(const std::string& why)> stop;  // ends without a question
  };

  DesktopMain(Start start, Ways ways);
  ~DesktopMain();

  const std::string& Folder() const { return start_.folder; }
  Boxes& MessageBoxes() { return boxes_; }

  // Who is told and asked in the place of the journal.
  std::unique_ptr<Operator> Person(Operator& journal, EventLoop& loop);
  void Loading(Desk desk);  // the services are about to be loaded
  void AddRequests(ControlRoom& room);
  void Ready();
  void Stopping();  // asked to end by the system: remembers where everything stands

  // Another publisher has the data folder. Then `answered`: whether its settings are to be edited.
  void AlreadyRunning(OtherPublisher::Ports ports, const std::function<void(bool edit)>& answered);
  // What became of a change to its settings.
  void ToldElsewhere(RunningElsewhere::Told told, const std::string& reason);

 private:
  void Quit();
  void OpenManual();
  void Tell(const std::string& text, const std::string& action);

  const Start start_;
  const Ways ways_;
  Boxes boxes_;
  DesktopOperator* person_ = nullptr;  // owned by whoever asked for it
  std::optional<Desk> desk_;
  std::unique_ptr<Splash> splash_;
  std::unique_ptr<MainWindow> window_;
  std::unique_ptr<OtherPublisher> other_;
};

}  // namespace zeb
