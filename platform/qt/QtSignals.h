// UnixSignals: SIGTERM, SIGINT and SIGHUP as events of the loop.
//
// One at a time in a process. Its destructor puts the former actions back.
#pragma once

#include <functional>
#include <memory>

#include "platform/EventLoop.h"

namespace zeb {

class UnixSignals {
 public:
  // `onSignal` is called on the loop's thread with the signal's number. Throws std::runtime_error when the
  // system refuses a pipe.
  UnixSignals(EventLoop& loop, std::function<void(int)> onSignal);
  ~UnixSignals();
  UnixSignals(const UnixSignals&) = delete;
  UnixSignals& operator=(const UnixSignals&) = delete;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace zeb
