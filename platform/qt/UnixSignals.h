// UnixSignals: hands SIGTERM, SIGINT and SIGHUP to the event loop.
//
// One object at a time. The handler runs on the loop's thread, between other events. A signal that was
// ignored when the program started (nohup, a shell's background job) stays ignored.
#pragma once

#include <functional>
#include <memory>

class QSocketNotifier;

namespace zeb {

class UnixSignals {
 public:
  explicit UnixSignals(std::function<void(int signal)> handler);
  ~UnixSignals();
  UnixSignals(const UnixSignals&) = delete;
  UnixSignals& operator=(const UnixSignals&) = delete;

 private:
  void ReadPending();

  std::function<void(int)> handler_;
  int pipe_[2] = {-1, -1};
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace zeb
