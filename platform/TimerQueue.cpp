#include "platform/TimerQueue.h"

#include <algorithm>
#include <utility>

namespace zeb {

TimerQueue::~TimerQueue() {
  // Releasing work may stop other timers, so all of them first forget the queue.
  for (auto& [due, bucket] : buckets_) {
    for (auto& entry : bucket) entry->queue = nullptr;
  }
}

Timer TimerQueue::Add(MonotonicTime due, Duration interval, std::function<void()> work) {
  auto entry = std::make_shared<TimerEntry>();
  entry->work = std::move(work);
  entry->due = due;
  entry->interval = interval;
  Bucket& bucket = buckets_[due];
  entry->place = bucket.insert(bucket.end(), entry);
  entry->queue = this;
  ++size_;
  return Timer(std::move(entry));
}

std::optional<MonotonicTime> TimerQueue::NextDue() const {
  if (buckets_.empty()) return std::nullopt;
  return buckets_.begin()->first;
}

std::shared_ptr<TimerEntry> TimerQueue::TakeDue(MonotonicTime now) {
  auto first = buckets_.begin();
  if (first == buckets_.end() || first->first > now) return nullptr;
  std::shared_ptr<TimerEntry> entry = first->second.front();
  if (entry->interval > Duration::zero()) {
    entry->due += entry->interval * (1 + (now - entry->due) / entry->interval);
    Bucket& next = buckets_[entry->due];
    next.splice(next.end(), first->second, entry->place);
  } else {
    entry->queue = nullptr;
    first->second.erase(entry->place);
    --size_;
  }
  if (first->second.empty()) buckets_.erase(first);
  return entry;
}

void TimerQueue::Cancel(TimerEntry& entry) {
  auto bucket = buckets_.find(entry.due);
  entry.queue = nullptr;
  // Released last: what the work holds may own further timers.
  const std::shared_ptr<TimerEntry> kept = std::move(*entry.place);
  bucket->second.erase(entry.place);
  if (bucket->second.empty()) buckets_.erase(bucket);
  --size_;
}

Timer::Timer(std::shared_ptr<TimerEntry> entry) : entry_(std::move(entry)) {}

Timer& Timer::operator=(Timer&& other) noexcept {
  if (this != &other) {
    // The new timer is in place before the old one's work is released, which may look at this timer.
    Timer old(std::exchange(entry_, std::move(other.entry_)));
  }
  return *this;
}

Timer::~Timer() {
  Stop();
}

void Timer::Stop() {
  const std::shared_ptr<TimerEntry> entry = std::move(entry_);
  entry_ = nullptr;
  if (entry && entry->queue) entry->queue->Cancel(*entry);
}

bool Timer::Running() const {
  return entry_ && entry_->queue;
}

}  // namespace zeb
