#include "platform/simulated/SimulatedLoop.h"

#include <algorithm>
#include <deque>
#include <exception>
#include <list>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "platform/Result.h"
#include "platform/TimerQueue.h"

namespace zeb {

struct SimulatedLoop::State {
  std::mutex mutex;  // guards posted
  std::deque<std::function<void()>> posted;
  TimerQueue timers;
  MonotonicTime now{};
  WallTime wallStart = std::chrono::local_days{std::chrono::year{2026} / 3 / 2} + std::chrono::hours(12);
  MonotonicTime wallStartAt{};
  Duration blockingTime{};
  std::list<Timer> blocking;  // one for each RunBlocking under way

  std::function<void()> TakePosted() {
    const std::lock_guard lock(mutex);
    if (posted.empty()) return nullptr;
    auto work = std::move(posted.front());
    posted.pop_front();
    return work;
  }
};

SimulatedLoop::SimulatedLoop() : state_(std::make_unique<State>()) {}

SimulatedLoop::~SimulatedLoop() {
  AbandonTasks();
  // Releasing what was posted may post again; all of it is dropped.
  while (state_->TakePosted()) {
  }
}

void SimulatedLoop::RunFor(Duration time) {
  RunUntil([] { return false; }, time);
}

bool SimulatedLoop::RunUntil(const std::function<bool()>& condition, Duration limit) {
  if (InTask()) throw std::logic_error("time was to pass inside a task");
  const MonotonicTime end = Later(state_->now, limit);
  RunReadyTasks();  // for what the test itself has changed
  if (condition()) return true;
  while (RunNext(end)) {
    RunReadyTasks();
    if (condition()) return true;
  }
  state_->now = end;
  return false;
}

// Runs what comes next, if it is due by `end`: what was posted, then the earliest timer.
bool SimulatedLoop::RunNext(MonotonicTime end) {
  if (const auto work = state_->TakePosted()) {
    work();
    return true;
  }
  const auto due = state_->timers.NextDue();
  if (!due || *due > end) return false;
  state_->now = std::max(state_->now, *due);
  state_->timers.TakeDue(state_->now)->work();
  return true;
}

bool SimulatedLoop::RunTask(std::function<void()> work, Duration limit) {
  struct Outcome {
    bool ended = false;
    std::exception_ptr failure;
  };
  const auto outcome = std::make_shared<Outcome>();
  Start("test", [outcome, work = std::move(work)] {
    try {
      work();
    } catch (...) {
      outcome->failure = std::current_exception();  // for the test, which has no other way to hear of it
    }
    outcome->ended = true;
  });
  const bool ended = RunUntil([&] { return outcome->ended; }, limit);
  if (ended && outcome->failure) std::rethrow_exception(outcome->failure);
  return ended;
}

void SimulatedLoop::SetWallClock(WallTime moment) {
  state_->wallStart = moment;
  state_->wallStartAt = state_->now;
}

void SimulatedLoop::SetBlockingTime(Duration time) {
  state_->blockingTime = time;
}

WallTime SimulatedLoop::Now() const {
  return state_->wallStart + std::chrono::floor<std::chrono::milliseconds>(state_->now - state_->wallStartAt);
}

MonotonicTime SimulatedLoop::Monotonic() const {
  return state_->now;
}

Timer SimulatedLoop::After(Duration delay, std::function<void()> work) {
  return state_->timers.Add(Later(state_->now, delay), Duration::zero(), std::move(work));
}

Timer SimulatedLoop::Every(Duration interval, std::function<void()> work) {
  interval = std::max(interval, kShortestInterval);
  return state_->timers.Add(Later(state_->now, interval), interval, std::move(work));
}

void SimulatedLoop::Post(std::function<void()> work) {
  PostFromAnyThread(std::move(work));
}

void SimulatedLoop::PostFromAnyThread(std::function<void()> work) {
  const std::lock_guard lock(state_->mutex);
  state_->posted.push_back(std::move(work));
}

// The work is done at the end of its time: nobody sees its results before. It runs as a task, so that a
// simulated port can hang in it.
void SimulatedLoop::Offload(std::function<void()> work, std::function<void()> done) {
  auto job = [this, work = std::move(work), done = std::move(done)] {
    Start("worker", [this, work, done] {
      work();
      Post(done);
    });
  };
  if (state_->blockingTime <= Duration::zero()) return Post(std::move(job));
  auto& timers = state_->blocking;
  const auto timer = timers.emplace(timers.end());
  *timer = After(state_->blockingTime, [&timers, timer, job = std::move(job)] {
    job();
    timers.erase(timer);
  });
}

}  // namespace zeb
