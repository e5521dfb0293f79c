// EventLoop: the one thread on which the engine runs, its clocks and timers, and the tasks that may wait.
//
// Owned by the main program (platform/qt) or by a test (platform/simulated); everyone else holds a reference
// that outlives them. All members except PostFromAnyThread are called on the loop's thread.
//
// Waiting: only a task (work given to Start) may call Wait, WaitUntil and RunBlocking; it is suspended, and
// events and other tasks go on. There are no nested event loops: outside a task these calls throw
// std::logic_error, except RunBlocking, which then does the work at once. An exception that leaves a task's
// work is handed to the handler set by OnTaskFailure, and goes no further.
//
// A loop that ends abandons the tasks that still wait: their waits throw TaskAbandoned, so that their stacks
// unwind and what they hold is released. A task must not wait in a destructor for that reason.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "platform/Time.h"

#undef Yield  // windows.h makes a macro of it

namespace zeb {

class TaskScheduler;
struct TimerEntry;

// Thrown by a wait when the loop ends. No std::exception, so that code which reports failures lets it pass;
// code that catches everything goes on, and the next wait throws again.
struct TaskAbandoned {};

// A running timer. Destroying or Stop()ping it cancels it, also from inside its own callback.
class Timer {
 public:
  Timer() = default;
  explicit Timer(std::shared_ptr<TimerEntry> entry);
  Timer(Timer&&) noexcept = default;
  Timer& operator=(Timer&& other) noexcept;
  ~Timer();
  void Stop();
  bool Running() const;

 private:
  std::shared_ptr<TimerEntry> entry_;
};

class EventLoop {
 public:
  EventLoop();
  virtual ~EventLoop();
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  virtual WallTime Now() const = 0;
  virtual MonotonicTime Monotonic() const = 0;
  // How far Now is ahead of UTC.
  virtual std::chrono::seconds UtcOffset() const = 0;

  // Calls `work` once after `delay` (never earlier), or every `interval` from now on. A repeating timer that
  // is late skips the ticks it missed. Intervals of a second or more may be aligned with each other, so that
  // a thousand services wake the machine once.
  [[nodiscard]] virtual Timer After(Duration delay, std::function<void()> work) = 0;
  [[nodiscard]] virtual Timer Every(Duration interval, std::function<void()> work) = 0;

  // Calls `work` on the loop's thread as soon as the present event is done, in the order of the calls.
  virtual void Post(std::function<void()> work) = 0;
  virtual void PostFromAnyThread(std::function<void()> work) = 0;

  // Starts a task. It begins to run before Start returns when called from outside a task, else as soon as
  // the present task waits or ends. `name` is for logs.
  void Start(std::string name, std::function<void()> work);

  // Waits until `condition` holds; true, or false when `limit` passed first. The condition is asked once at
  // once, then after each event that the loop handles; it must be cheap and must not wait itself.
  bool WaitUntil(std::function<bool()> condition, Duration limit);
  void Wait(Duration time);

  // Lets the tasks that were started, and those that they start, run until each waits or ends; then goes on.
  // Outside a task there is nothing to do: Start has let them run already.
  void Yield();

  // Does `work` on a worker thread while the task waits. Gives what the work returned (true for one that
  // returns nothing), or nothing (false) when `limit` passed first: the worker is then left to itself, and
  // `cameBack` is called on the loop's thread once it has returned. So `work` must own what it uses, and
  // touches nothing that the loop's thread may touch meanwhile. What it throws is thrown here again, but
  // after the limit.
  template <class Work>
  auto RunBlocking(Work work, Duration limit, std::function<void()> cameBack = nullptr);

  bool InTask() const;
  std::size_t TaskCount() const;  // tasks that have not ended
  void OnTaskFailure(std::function<void(const std::string& task, const std::string& what)> handler);

 protected:
  // Hands `work` to a worker thread and calls `done` on the loop's thread afterwards.
  virtual void Offload(std::function<void()> work, std::function<void()> done) = 0;

  // Hands a failure to the handler set by OnTaskFailure (standard error when there is none).
  void ReportFailure(const std::string& name, const std::string& what) noexcept;

  // To be called first of all by the destructor of an implementation, while its clocks and timers still work.
  void AbandonTasks();

  // To be called by the implementation after each batch of events: lets tasks whose condition has come true
  // go on.
  void RunReadyTasks();

 private:
  bool RunOnWorker(std::function<void()> work, Duration limit, std::function<void()> cameBack);

  std::unique_ptr<TaskScheduler> tasks_;
};

// It is moved on in both branches.
template <class Work>
auto EventLoop::RunBlocking(Work work, Duration limit,
                            std::function<void()> cameBack) {  // NOLINT(performance-unnecessary-value-param)
  using Returned = std::invoke_result_t<Work&>;
  if constexpr (std::is_void_v<Returned>) {
    return RunOnWorker(std::move(work), limit, std::move(cameBack));
  } else {
    const auto returned = std::make_shared<std::optional<Returned>>();
    const auto owned = std::make_shared<Work>(std::move(work));
    const bool inTime =
        RunOnWorker([returned, owned] { returned->emplace((*owned)()); }, limit, std::move(cameBack));
    return inTime ? std::move(*returned) : std::optional<Returned>();
  }
}

}  // namespace zeb
