// EpollDispatcher: Qt's event dispatcher for programs without windows, on epoll.
//
// Qt's own hands the kernel the list of all descriptors at each wake, which with a thousand stations costs
// more than what woke it; here the kernel keeps the list. A wake from another thread costs one call to the
// system, and only while the loop sleeps. All of it runs on the loop's thread, except wakeUp and interrupt.
//
// Made before the QCoreApplication, which owns it from then on (QtLoop::ChoosePlainDispatcher does so).
#pragma once

#include <QAbstractEventDispatcher>
#include <QSocketNotifier>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <set>
#include <unordered_map>
#include <utility>

namespace zeb {

class EpollDispatcher : public QAbstractEventDispatcher {
 public:
  // Throws std::runtime_error when the system refuses the two descriptors that it needs.
  EpollDispatcher();
  ~EpollDispatcher() override;

  // Notifiers, timers and posted events; once, and waits for one of them when `flags` ask for it. Of the
  // flags that leave some kinds of events out it knows none.
  bool processEvents(QEventLoop::ProcessEventsFlags flags) override;

  void registerSocketNotifier(QSocketNotifier* notifier) override;
  void unregisterSocketNotifier(QSocketNotifier* notifier) override;

  // In milliseconds; all types are precise, none is early.
  void registerTimer(int id, qint64 interval, Qt::TimerType type, QObject* object) override;
  bool unregisterTimer(int id) override;
  bool unregisterTimers(QObject* object) override;
  QList<TimerInfo> registeredTimers(QObject* object) const override;
  int remainingTime(int id) override;

  void wakeUp() override;
  void interrupt() override;

 private:
  using Clock = std::chrono::steady_clock;
  // The notifiers of one descriptor, by QSocketNotifier::Type.
  struct Watch {
    std::array<QSocketNotifier*, 3> notifiers{};
    std::uint32_t generation = 0;  // tells it from a later one with the same number
    std::uint32_t Events() const;
  };
  struct Timer {
    qint64 interval = 0;
    Qt::TimerType type = Qt::CoarseTimer;
    QObject* object = nullptr;
    Clock::time_point due;
  };
  enum class Sleep { kAwake, kAsleep, kWoken };

  void Tell(int operation, int descriptor, const Watch& watch) const;
  int Milliseconds() const;  // until the next timer; -1: there is none
  bool Wait(bool mayBlock);
  bool ActivateNotifiers(int descriptor, std::uint32_t generation, std::uint32_t events);
  bool ActivateTimers();
  void Remove(std::unordered_map<int, Timer>::iterator timer);

  int epoll_ = -1;
  int wake_ = -1;
  std::atomic<Sleep> sleep_ = Sleep::kAwake;
  std::atomic<bool> interrupted_ = false;
  std::unordered_map<int, Watch> watches_;  // by descriptor
  std::uint32_t lastGeneration_ = 0;
  std::unordered_map<int, Timer> timers_;  // by id
  std::set<std::pair<Clock::time_point, int>> order_;
};

}  // namespace zeb
