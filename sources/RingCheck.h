// RingCheck: finds out whether what a relay sends comes back to it, by way of other relays.
//
// What is relayed stays as it came, so the check is a line of its own, `ZEB_RELAY_CHECK id hops`: receivers
// that do not know it ignore it, and relays pass it on like any line. One that comes back under our own id
// proves a ring. It is sent when the relay's link stands and its service's controller is a relay too, and
// again when a line of that controller is one that was relayed lately; in a ring each minute, to hear when it
// ends. An ordinary remote never sees one.
//
// Owned by the bounce relay.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/EventLoop.h"

namespace zeb {

class RingCheck {
 public:
  struct Events {
    std::function<void(std::string_view line)> Send;
    std::function<void()> RingFound, RingEnded;
  };
  RingCheck(EventLoop& loop, Events events);

  void Begin();  // sends a check; what was known does not count any more
  void Stop();

  // Of a line from a controller that is a relay: what to relay in its place; nothing when it has gone round.
  std::optional<std::string> LineToPassOn(std::string_view line);
  void Relayed(std::string_view line);  // a line that was

 private:
  void Check();
  void CheckAgain();
  std::optional<std::string> PassCheckOn(std::string_view line);
  void CameBack();

  EventLoop& loop_;
  Events events_;
  std::string id_;  // made with the first check: most services never send one, and it takes a while
  bool inRing_ = false, cameBack_ = false;
  std::optional<MonotonicTime> checked_;
  std::deque<std::size_t> lately_;  // hashes of the lines relayed last
  Timer again_;
};

}  // namespace zeb
