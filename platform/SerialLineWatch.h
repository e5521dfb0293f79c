// SerialLineWatch: looks at a serial device twice a second and reports the communication events in between.
//
// Owned by a port while it is open; destroying it ends it, also while a look hangs: an adapter may take
// seconds to answer, so looks are made on a worker thread, one at a time.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/EventLoop.h"
#include "platform/SerialLineState.h"

namespace zeb {

class SerialLineWatch {
 public:
  // Nothing: the device tells nothing, as a pseudo-terminal; if at the first look, it is not asked again.
  // Called on a worker thread, so it owns what it uses.
  using Look = std::function<std::optional<SerialLineState>()>;

  SerialLineWatch(EventLoop& loop, Look look, std::function<void(CommEvent)> tell);
  ~SerialLineWatch();
  SerialLineWatch(const SerialLineWatch&) = delete;
  SerialLineWatch& operator=(const SerialLineWatch&) = delete;

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace zeb
