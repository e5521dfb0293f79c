// PublisherLink: a command's way to the publisher that runs on a data folder: requests by its local socket.
#pragma once

#include <chrono>
#include <string>

#include "dashboard/HttpMessage.h"
#include "platform/EventLoop.h"
#include "platform/LocalSockets.h"

namespace zeb {

class PublisherLink {
 public:
  // For what is answered at once, and for what takes the publisher a while: it answers within 30 s.
  static constexpr Duration kAtOnce = std::chrono::seconds(10);
  static constexpr Duration kWork = std::chrono::seconds(35);

  // `folder` is the data folder. The references outlive this object.
  PublisherLink(EventLoop& loop, LocalSockets& sockets, std::string folder);

  struct Reply {
    bool unreachable = false;  // nothing was asked,
    bool notRunning = false;   // since nobody listens there
    int status = 0;            // of the answer; 0: there is none, and `problem` says why
    std::string body;
    std::string problem;  // one line; "" for an answer with a status below 400
    bool Done() const { return status != 0 && status < 400; }
  };
  // In a task. `body` is JSON or empty.
  Reply Ask(const std::string& method, const std::string& target, const std::string& body = "",
            Duration limit = kAtOnce);
  // In a task: it is to read the settings again, since something was stored.
  Reply Reload() { return Ask("POST", "/api/v1/reload", "", kWork); }
  // In a task. Which services go while it runs is the publisher's to do, since each keeps its items. It
  // refuses while it has not read what somebody has just changed; then it is asked again for five seconds.
  Reply RemoveService(int number);

 private:
  EventLoop& loop_;
  LocalSockets& sockets_;
  const std::string folder_;
};

}  // namespace zeb
