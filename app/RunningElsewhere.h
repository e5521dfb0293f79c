// RunningElsewhere: the publisher that runs on the data folder, for a program that only edits its settings:
// it is told of what was stored, by its local socket.
//
// Owned by the program; used on the loop's thread. The references outlive it.
#pragma once

#include <functional>
#include <string>

#include "app/frmMain.h"
#include "platform/Epoch.h"
#include "platform/EventLoop.h"
#include "platform/LocalSockets.h"

namespace zeb {

class RunningElsewhere {
 public:
  // What was stored within this time is told together.
  static constexpr Duration kGather = std::chrono::milliseconds(100);

  enum class Told {
    kTaken,       // it reads the settings again
    kNobodyRuns,  // they come into use when a publisher starts
    kFailed
  };
  // `told` is called after each telling; `reason` for kFailed.
  RunningElsewhere(EventLoop& loop, LocalSockets& sockets, std::string folder,
                   std::function<void(Told, const std::string& reason)> told);

  void Stored();
  // As frmMain::removeElsewhere.
  void RemoveService(int number, std::function<void(const frmMain::Removed&)> done);

 private:
  void Tell();

  EventLoop& loop_;
  LocalSockets& sockets_;
  const std::string folder_;
  const std::function<void(Told, const std::string& reason)> told_;
  Timer gather_;
  bool telling_ = false, again_ = false;
  Epoch epoch_;  // ends with this object
};

}  // namespace zeb
