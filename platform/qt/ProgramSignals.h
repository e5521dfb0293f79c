// ProgramSignals: what the system asks of a program, as events of the loop: SIGTERM, SIGINT and SIGHUP; on
// Windows Ctrl+C, the end of the console or the session, and the service manager's stop.
//
// One at a time in a process. Its destructor puts the former actions back.
#pragma once

#include <functional>
#include <memory>

#include "platform/EventLoop.h"

namespace zeb {

enum class ProgramSignal : unsigned char { kStop, kInterrupt, kReload };

// As if the system had asked it, from any thread. False when nobody listens (yet).
bool TellProgram(ProgramSignal signal);

class ProgramSignals {
 public:
  // `onSignal` is called on the loop's thread. Throws std::runtime_error when the system refuses.
  ProgramSignals(EventLoop& loop, std::function<void(ProgramSignal)> onSignal);
  ~ProgramSignals();
  ProgramSignals(const ProgramSignals&) = delete;
  ProgramSignals& operator=(const ProgramSignals&) = delete;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace zeb
