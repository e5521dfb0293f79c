#include "platform/qt/ProgramSignals.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <utility>

namespace zeb {

namespace {

constexpr std::array kSignals = {SIGTERM, SIGINT, SIGHUP};

// Where the handler writes; -1 while nobody listens.
volatile sig_atomic_t writeEnd = -1;

// A handler may do next to nothing, so it only hands the number to the loop through a pipe.
extern "C" void PassOn(int number) {
  const int before = errno;
  const auto byte = static_cast<unsigned char>(number == SIGHUP   ? ProgramSignal::kReload
                                               : number == SIGINT ? ProgramSignal::kInterrupt
                                                                  : ProgramSignal::kStop);
  if (writeEnd >= 0) [[maybe_unused]]
    const ssize_t written = write(writeEnd, &byte, 1);
  errno = before;
}

}  // namespace

bool TellProgram(ProgramSignal signal) {
  const auto byte = static_cast<unsigned char>(signal);
  return writeEnd >= 0 && write(writeEnd, &byte, 1) == 1;
}

struct ProgramSignals::State {
  std::array<int, 2> pipe{-1, -1};
  std::array<struct sigaction, kSignals.size()> former{};
  std::unique_ptr<QSocketNotifier> notifier;
  std::shared_ptr<std::function<void(ProgramSignal)>> onSignal;
};

ProgramSignals::ProgramSignals(EventLoop& loop, std::function<void(ProgramSignal)> onSignal)
    : state_(std::make_unique<State>()) {
  if (pipe2(state_->pipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
    throw std::runtime_error("cannot make a pipe for signals");
  }
  state_->onSignal = std::make_shared<std::function<void(ProgramSignal)>>(std::move(onSignal));
  const int readEnd = state_->pipe[0];
  state_->notifier = std::make_unique<QSocketNotifier>(readEnd, QSocketNotifier::Read);
  QObject::connect(state_->notifier.get(), &QSocketNotifier::activated, state_->notifier.get(),
                   [readEnd, &loop, listener = std::weak_ptr(state_->onSignal)] {
                     unsigned char number = 0;
                     while (read(readEnd, &number, 1) == 1) {
                       loop.Post([signal = static_cast<ProgramSignal>(number), listener] {
                         if (const auto callback = listener.lock()) (*callback)(signal);
                       });
                     }
                   });
  writeEnd = state_->pipe[1];
  struct sigaction action {};
  action.sa_handler = PassOn;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &action, &state_->former[i]);
}

ProgramSignals::~ProgramSignals() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &state_->former[i], nullptr);
  writeEnd = -1;
  state_->notifier.reset();
  close(state_->pipe[0]);
  close(state_->pipe[1]);
}

}  // namespace zeb
