#include "platform/qt/UnixSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <utility>

namespace zeb {
namespace {

constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};
int writeEnd = -1;

// Only what may be done in a signal handler. A full pipe means that enough signals are waiting already.
void Remember(int signal) {
  const int before = errno;
  const auto byte = static_cast<unsigned char>(signal);
  [[maybe_unused]] const ssize_t written = write(writeEnd, &byte, 1);
  errno = before;
}

}  // namespace

UnixSignals::UnixSignals(std::function<void(int)> handler) : handler_(std::move(handler)) {
  if (pipe2(pipe_, O_CLOEXEC | O_NONBLOCK) != 0) throw std::runtime_error("cannot make a pipe for signals");
  writeEnd = pipe_[1];
  notifier_ = std::make_unique<QSocketNotifier>(pipe_[0], QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this] { ReadPending(); });
  for (const int signal : kSignals) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = Remember;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
  }
}

UnixSignals::~UnixSignals() {
  for (const int signal : kSignals) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != Remember) continue;
    action = {};
    action.sa_handler = SIG_DFL;
    sigaction(signal, &action, nullptr);
  }
  notifier_.reset();
  writeEnd = -1;
  close(pipe_[0]);
  close(pipe_[1]);
}

void UnixSignals::ReadPending() {
  unsigned char byte = 0;
  while (read(pipe_[0], &byte, 1) == 1) handler_(byte);
}

}  // namespace zeb
