// ComThread: a thread with an apartment of its own, for one object of another program and what comes from it.
// An object that hangs holds up no other; one that wants messages pumped gets them.
//
// Private to platform/windows. Used on any thread. A thread that hangs cannot be stopped: it is left to
// itself, and ends when its call has come back.
#pragma once

#include <functional>
#include <future>
#include <memory>

#include "platform/Result.h"

namespace zeb {

class ComThread {
 public:
  ~ComThread();  // does not wait: the thread ends when all that it was given is done
  ComThread(const ComThread&) = delete;
  ComThread& operator=(const ComThread&) = delete;

  // Does `work` on the thread and waits for it, however long that takes.
  template <class Work>
  auto Do(Work work) -> decltype(work()) {
    const auto task = std::make_shared<std::packaged_task<decltype(work())()>>(std::move(work));
    auto done = task->get_future();
    Later([task] { (*task)(); });
    return done.get();
  }
  // Does `work` on the thread some time, and lets it go there.
  void Later(std::function<void()> work);

 private:
  friend class ComThreads;
  struct State;
  explicit ComThread(std::shared_ptr<State> state) : state_(std::move(state)) {}
  std::shared_ptr<State> state_;  // shared with the thread
};

// Begins them, and knows how many hang.
class ComThreads {
 public:
  static constexpr std::size_t kMostHanging = 32;

  ComThreads();
  ~ComThreads();  // gives them half a second to let go of their objects

  // Fails while kMostHanging threads have been at one call for five seconds.
  Result<std::shared_ptr<ComThread>> Begin();

 private:
  struct All;
  friend struct ComThread::State;
  std::shared_ptr<All> all_;
};

}  // namespace zeb
