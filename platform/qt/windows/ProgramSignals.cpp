#include "platform/qt/ProgramSignals.h"

#include <windows.h>

#include <mutex>
#include <stdexcept>
#include <utility>

namespace zeb {
namespace {

// When the console, the session or the machine ends, Windows ends the process as soon as the handler returns,
// at the latest after five seconds; the publisher ends itself within these.
constexpr DWORD kGraceMilliseconds = 10'000;

// The handler runs on a thread of the system's.
std::mutex mutex;
EventLoop* loop = nullptr;
std::weak_ptr<std::function<void(ProgramSignal)>> receiver;

BOOL WINAPI OnConsole(DWORD event) {
  switch (event) {
    case CTRL_C_EVENT:
    case CTRL_BREAK_EVENT:
      TellProgram(ProgramSignal::kInterrupt);
      return TRUE;
    case CTRL_CLOSE_EVENT:
    case CTRL_LOGOFF_EVENT:
    case CTRL_SHUTDOWN_EVENT:
      TellProgram(ProgramSignal::kStop);
      Sleep(kGraceMilliseconds);
      return TRUE;
    default:
      return FALSE;
  }
}

}  // namespace

bool TellProgram(ProgramSignal signal) {
  const std::lock_guard lock(mutex);
  if (!loop) return false;
  loop->PostFromAnyThread([signal, to = receiver] {
    if (const auto callback = to.lock()) (*callback)(signal);
  });
  return true;
}

struct ProgramSignals::State {
  std::shared_ptr<std::function<void(ProgramSignal)>> onSignal;
};

ProgramSignals::ProgramSignals(EventLoop& given, std::function<void(ProgramSignal)> onSignal)
    : state_(std::make_unique<State>()) {
  state_->onSignal = std::make_shared<std::function<void(ProgramSignal)>>(std::move(onSignal));
  {
    const std::lock_guard lock(mutex);
    loop = &given;
    receiver = state_->onSignal;
  }
  if (SetConsoleCtrlHandler(OnConsole, TRUE) == 0)
    throw std::runtime_error("Windows refuses to tell of the end of the session");
}

ProgramSignals::~ProgramSignals() {
  SetConsoleCtrlHandler(OnConsole, FALSE);
  const std::lock_guard lock(mutex);
  loop = nullptr;
}

}  // namespace zeb
