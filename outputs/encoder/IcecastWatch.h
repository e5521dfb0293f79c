// IcecastWatch: notices that an Icecast has begun a stream anew, and so has forgotten the title that it was
// sent: the server was restarted, or the stream's source came back.
//
// Nothing tells us by itself, since a title's connection is closed after each request. So the server's public
// status page is asked for the moment at which the mount's stream began. A page that cannot be had says
// nothing. Owned by the output; its connection is its own, so that a title never waits for it.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "outputs/http/RequestExchange.h"
#include "platform/Environment.h"
#include "platform/Epoch.h"
#include "platform/EventLoop.h"

namespace zeb {

class IcecastWatch {
 public:
  explicit IcecastWatch(Environment& environment) : environment_(environment) {}

  // Asks now, and then each `interval`, until Stop or the next call. `forgotten` is called for each new
  // beginning of the stream that is seen after the first.
  void Begin(RequestTarget target, std::string mount, Duration interval, std::function<void()> forgotten);
  bool Watching() const { return asking_ != nullptr; }
  void Stop();

 private:
  struct Asking;
  static void Ask(const std::shared_ptr<Asking>& asking);

  Environment& environment_;
  Epoch epoch_;  // from one Begin to the next, or to Stop
  std::shared_ptr<Asking> asking_;
};

// What asks the server for its status page, as far as it is about the mount.
std::string StatusPageRequest(const RequestTarget& target, const std::string& mount);
// When the mount's stream began, as the server writes it; "" when the page does not say.
std::string StreamBeginning(std::string_view statusPage, std::string_view mount);

}  // namespace zeb
