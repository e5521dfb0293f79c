// OtherPublisher: what a second start does. Of a program with windows on the same data folder it brings the
// windows to the front; beside one without (zebd) it says so, and offers that one's web page and its
// settings.
//
// Owned by the start-up; at least until `answered`.
#pragma once

#include <functional>
#include <string>

#include "app/desktop/Boxes.h"
#include "platform/EventLoop.h"
#include "platform/LocalSockets.h"
#include "platform/SettingsHive.h"

namespace zeb {

// The request that brings the windows to the front: POST, by the local socket. A publisher without windows
// does not have it.
inline constexpr char kRaiseWindows[] = "/api/v1/windows/raise";

class OtherPublisher {
 public:
  struct Ports {
    EventLoop& loop;
    LocalSockets& sockets;
    SettingsHive* hive;  // null: cannot be read
    std::function<void(const std::string& url)> openPage;
  };
  OtherPublisher(Ports ports, Boxes& boxes);

  // `answered` is called when all is said; at once after the windows have come, or when nobody is watching.
  using Answered = std::function<void(bool edit)>;  // whether the settings are to be edited
  void Meet(const std::string& folder, bool silent, const Answered& answered);

 private:
  std::string PageUrl() const;  // "" when it has none
  void Offer(const std::string& folder, const Answered& answered);

  const Ports ports_;
  Boxes& boxes_;
};

}  // namespace zeb
