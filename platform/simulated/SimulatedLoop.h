// SimulatedLoop: an EventLoop on simulated time. Nothing happens until a test calls RunFor or RunUntil; then
// timers, posts and tasks run in exact order and the clocks jump from one to the next, so a simulated day
// takes milliseconds and a test can state exact times.
#pragma once

#include <memory>

#include "platform/EventLoop.h"

namespace zeb {

class SimulatedLoop : public EventLoop {
 public:
  // The wall clock starts at 2026-03-02 12:00:00 (a Monday).
  SimulatedLoop();
  ~SimulatedLoop() override;

  void RunFor(Duration time);
  // Runs until the condition holds, or fails (false) after `limit` of simulated time.
  bool RunUntil(const std::function<bool()>& condition, Duration limit);
  void RunPosted() { RunFor(Duration::zero()); }  // what is due now, without time passing
  // Runs `work` as a task and time as far as it needs, at most `limit`; false when it has not ended by then.
  bool RunTask(std::function<void()> work, Duration limit = std::chrono::minutes(10));
  void SetWallClock(WallTime moment);  // a clock that jumps
  // How long each RunBlocking takes on this clock (zero at first). Its work runs as a task of its own: a
  // simulated port that is to hang waits in it.
  void SetBlockingTime(Duration time);

  WallTime Now() const override;
  MonotonicTime Monotonic() const override;
  std::chrono::seconds UtcOffset() const override { return std::chrono::hours(1); }
  Timer After(Duration delay, std::function<void()> work) override;
  Timer Every(Duration interval, std::function<void()> work) override;
  void Post(std::function<void()> work) override;
  void PostFromAnyThread(std::function<void()> work) override;

 protected:
  void Offload(std::function<void()> work, std::function<void()> done) override;

 private:
  bool RunNext(MonotonicTime end);

  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace zeb
