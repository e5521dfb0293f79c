// TimerQueue: the timers of one event loop, in the order in which they fall due.
//
// Owned by an event loop, which asks for the next due moment and takes what is due. Timers that fall due at
// the same moment share a bucket, so that a thousand one-second timers cost little more than one; a cancelled
// timer leaves at once. Timers may outlive the queue.
#pragma once

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>

#include "platform/EventLoop.h"

namespace zeb {

// Shorter intervals would let one timer keep everything else out.
constexpr Duration kShortestInterval = std::chrono::milliseconds(1);

// `now` + `delay`, or as far as the clock goes. A negative delay is none.
constexpr MonotonicTime Later(MonotonicTime now, Duration delay) {
  if (delay <= Duration::zero()) return now;
  return delay > MonotonicTime::max() - now ? MonotonicTime::max() : now + delay;
}

class TimerQueue {
 public:
  TimerQueue() = default;
  ~TimerQueue();
  TimerQueue(const TimerQueue&) = delete;
  TimerQueue& operator=(const TimerQueue&) = delete;

  // `interval` zero: once. Otherwise first at `due`, then every `interval` from there.
  [[nodiscard]] Timer Add(MonotonicTime due, Duration interval, std::function<void()> work);

  // When the earliest timer falls due; nothing when there is no timer.
  std::optional<MonotonicTime> NextDue() const;

  // Takes the earliest timer that is due at `now`; nothing when none is. A repeating one is set again first,
  // past the ticks that it missed, so that its work may stop it.
  std::shared_ptr<TimerEntry> TakeDue(MonotonicTime now);

  std::size_t Size() const { return size_; }

 private:
  friend class Timer;
  using Bucket = std::list<std::shared_ptr<TimerEntry>>;

  void Cancel(TimerEntry& entry);

  std::map<MonotonicTime, Bucket> buckets_;
  std::size_t size_ = 0;
};

// One timer. Known to the queue while it runs, and to the Timer that controls it.
struct TimerEntry {
  std::function<void()> work;
  MonotonicTime due{};
  Duration interval{};
  TimerQueue* queue = nullptr;  // nothing once it has run, was cancelled, or the queue is gone
  std::list<std::shared_ptr<TimerEntry>>::iterator place;
};

}  // namespace zeb
