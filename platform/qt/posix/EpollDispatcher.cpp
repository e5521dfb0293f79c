#include "platform/qt/posix/EpollDispatcher.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QEvent>
#include <QTimerEvent>
#include <algorithm>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <vector>

namespace zeb {

namespace {

constexpr int kMostEvents = 128;  // in one turn; the rest comes in the next
// What marks the wake descriptor among the events; no watch has this generation.
constexpr std::uint64_t kWakeMark = 0;

constexpr std::array<std::uint32_t, 3> kAskedFor = {EPOLLIN, EPOLLOUT, EPOLLPRI};
// A connection that broke wakes whoever reads and whoever writes: the next call tells them why.
constexpr std::array<std::uint32_t, 3> kActivatedBy = {EPOLLIN | EPOLLHUP | EPOLLERR,
                                                       EPOLLOUT | EPOLLHUP | EPOLLERR, EPOLLPRI};

std::uint64_t Mark(int descriptor, std::uint32_t generation) {
  return std::uint64_t{generation} << 32 | static_cast<std::uint32_t>(descriptor);
}

}  // namespace

EpollDispatcher::EpollDispatcher() {
  epoll_ = epoll_create1(EPOLL_CLOEXEC);
  wake_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  // Each write to it is an event of its own, so nobody need read it.
  epoll_event event{EPOLLIN | EPOLLET, {.u64 = kWakeMark}};
  if (epoll_ >= 0 && wake_ >= 0 && epoll_ctl(epoll_, EPOLL_CTL_ADD, wake_, &event) == 0) return;
  if (epoll_ >= 0) close(epoll_);
  if (wake_ >= 0) close(wake_);
  throw std::runtime_error("cannot make an event loop: the system gives no descriptors for it");
}

EpollDispatcher::~EpollDispatcher() {
  close(epoll_);
  close(wake_);
}

// ---- Turns

bool EpollDispatcher::processEvents(QEventLoop::ProcessEventsFlags flags) {
  interrupted_ = false;
  // Whatever is posted from here on is a reason not to sleep.
  sleep_ = Sleep::kAwake;
  emit awake();
  QCoreApplication::sendPostedEvents();
  bool mayBlock = flags.testFlag(QEventLoop::WaitForMoreEvents) && !interrupted_ && sleep_ == Sleep::kAwake;
  if (mayBlock) emit aboutToBlock();
  const bool any = Wait(mayBlock && !interrupted_);
  return ActivateTimers() || any;
}

bool EpollDispatcher::Wait(bool mayBlock) {
  Sleep awake = Sleep::kAwake;
  const bool sleeps = mayBlock && sleep_.compare_exchange_strong(awake, Sleep::kAsleep);
  std::array<epoll_event, kMostEvents> events;
  const int count = epoll_wait(epoll_, events.data(), kMostEvents, sleeps ? Milliseconds() : 0);
  if (sleeps) sleep_ = Sleep::kAwake;  // the next turn looks for what was posted
  bool any = sleeps && count <= 0;     // woken by a signal or a timer
  for (int i = 0; i < count; ++i) {
    const epoll_event& event = events[static_cast<std::size_t>(i)];
    const std::uint64_t mark = event.data.u64;
    if (mark == kWakeMark)
      any = true;
    else
      any = ActivateNotifiers(static_cast<int>(mark & 0xFFFFFFFF), static_cast<std::uint32_t>(mark >> 32),
                              event.events) ||
            any;
  }
  return any;
}

void EpollDispatcher::wakeUp() {
  if (sleep_.exchange(Sleep::kWoken) != Sleep::kAsleep) return;
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(wake_, &one, sizeof one);
}

void EpollDispatcher::interrupt() {
  interrupted_ = true;
  wakeUp();
}

// ---- Descriptors

std::uint32_t EpollDispatcher::Watch::Events() const {
  std::uint32_t events = 0;
  for (std::size_t type = 0; type < notifiers.size(); ++type)
    if (notifiers[type]) events |= kAskedFor[type];
  return events;
}

// What the system refuses (a descriptor that is no socket, no memory) is a notifier that never speaks.
void EpollDispatcher::Tell(int operation, int descriptor, const Watch& watch) const {
  epoll_event event{watch.Events(), {.u64 = Mark(descriptor, watch.generation)}};
  if (epoll_ctl(epoll_, operation, descriptor, &event) != 0 && operation != EPOLL_CTL_DEL)
    qWarning("descriptor %d cannot be watched: %s", descriptor, qPrintable(qt_error_string()));
}

void EpollDispatcher::registerSocketNotifier(QSocketNotifier* notifier) {
  const auto descriptor = static_cast<int>(notifier->socket());
  Watch& watch = watches_[descriptor];
  const bool isNew = watch.generation == 0;
  if (isNew) {
    if (++lastGeneration_ == 0) ++lastGeneration_;
    watch.generation = lastGeneration_;
  }
  watch.notifiers[static_cast<std::size_t>(notifier->type())] = notifier;
  Tell(isNew ? EPOLL_CTL_ADD : EPOLL_CTL_MOD, descriptor, watch);
}

void EpollDispatcher::unregisterSocketNotifier(QSocketNotifier* notifier) {
  const auto found = watches_.find(static_cast<int>(notifier->socket()));
  if (found == watches_.end()) return;
  auto& place = found->second.notifiers[static_cast<std::size_t>(notifier->type())];
  if (place != notifier) return;
  place = nullptr;
  const bool last = found->second.Events() == 0;
  Tell(last ? EPOLL_CTL_DEL : EPOLL_CTL_MOD, found->first, found->second);
  if (last) watches_.erase(found);
}

// Looked up anew for each, since what one does may take the others away.
bool EpollDispatcher::ActivateNotifiers(int descriptor, std::uint32_t generation, std::uint32_t events) {
  bool any = false;
  for (std::size_t type = 0; type < kActivatedBy.size(); ++type) {
    if ((events & kActivatedBy[type]) == 0) continue;
    const auto found = watches_.find(descriptor);
    if (found == watches_.end() || found->second.generation != generation) break;
    QSocketNotifier* const notifier = found->second.notifiers[type];
    if (!notifier) continue;
    QEvent event(QEvent::SockAct);
    QCoreApplication::sendEvent(notifier, &event);
    any = true;
  }
  return any;
}

// ---- Timers

void EpollDispatcher::registerTimer(int id, qint64 interval, Qt::TimerType type, QObject* object) {
  const auto due = Clock::now() + std::chrono::milliseconds(interval);
  unregisterTimer(id);
  timers_[id] = {interval, type, object, due};
  order_.insert({due, id});
}

void EpollDispatcher::Remove(std::unordered_map<int, Timer>::iterator timer) {
  order_.erase({timer->second.due, timer->first});
  timers_.erase(timer);
}

bool EpollDispatcher::unregisterTimer(int id) {
  const auto found = timers_.find(id);
  if (found == timers_.end()) return false;
  Remove(found);
  return true;
}

bool EpollDispatcher::unregisterTimers(QObject* object) {
  bool any = false;
  for (auto timer = timers_.begin(); timer != timers_.end();) {
    const auto here = timer++;
    if (here->second.object != object) continue;
    Remove(here);
    any = true;
  }
  return any;
}

QList<QAbstractEventDispatcher::TimerInfo> EpollDispatcher::registeredTimers(QObject* object) const {
  QList<TimerInfo> timers;
  for (const auto& [id, timer] : timers_)
    if (timer.object == object) timers.append(TimerInfo(id, static_cast<int>(timer.interval), timer.type));
  return timers;
}

int EpollDispatcher::remainingTime(int id) {
  const auto found = timers_.find(id);
  if (found == timers_.end()) return -1;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(found->second.due - Clock::now()).count();
  return static_cast<int>(std::clamp<std::int64_t>(left, 0, std::numeric_limits<int>::max()));
}

int EpollDispatcher::Milliseconds() const {
  if (order_.empty()) return -1;
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(order_.begin()->first - Clock::now()).count();
  return static_cast<int>(std::clamp<std::int64_t>(left, 0, std::numeric_limits<int>::max()));
}

// Each that is due once, however short its interval. A repeating one that is late skips what it missed.
bool EpollDispatcher::ActivateTimers() {
  if (order_.empty()) return false;
  const auto now = Clock::now();
  std::vector<std::pair<Clock::time_point, int>> due;
  for (const auto& entry : order_) {
    if (entry.first > now) break;
    due.push_back(entry);
  }
  bool any = false;
  for (const auto& [moment, id] : due) {
    const auto found = timers_.find(id);
    if (found == timers_.end() || found->second.due != moment) continue;  // stopped, or set anew, meanwhile
    Timer& timer = found->second;
    order_.erase({moment, id});
    const std::chrono::milliseconds interval(timer.interval);
    timer.due = std::max(moment + interval, timer.interval > 0 ? now + std::chrono::milliseconds(1) : now);
    order_.insert({timer.due, id});
    QTimerEvent event(id);
    QCoreApplication::sendEvent(timer.object, &event);
    any = true;
  }
  return any;
}

}  // namespace zeb
