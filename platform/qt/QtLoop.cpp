#include "platform/qt/QtLoop.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/TimerQueue.h"
#include "platform/qt/LoopSystem.h"
#include "platform/qt/QtMailbox.h"
#include "platform/qt/WorkerPool.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;

// Timers of at least this length tick on its multiples, so that all of them wake the process together.
constexpr Duration kGrid = 1s;
// The longest that one Qt timer is set for; it counts milliseconds in an int.
constexpr Duration kLongestSleep = 24h;
constexpr std::size_t kLookUpThreads = 4;
constexpr std::size_t kMostLookUpThreads = 16;

}  // namespace

struct QtLoop::State {
  TimerQueue timers;
  QTimer timer;
  std::optional<MonotonicTime> armedFor;  // the moment that `timer` is set for
  std::shared_ptr<QtMailbox> mailbox;
  WorkerPool workers;
  WorkerPool lookUps{kLookUpThreads, kMostLookUpThreads};
  Timer relief;  // while jobs wait for a worker
  QMetaObject::Connection beforeSleep;
};

QtLoop::QtLoop() : state_(std::make_unique<State>()) {
  if (!QCoreApplication::instance()) throw std::logic_error("a QtLoop needs a QCoreApplication");
  state_->mailbox = std::make_shared<QtMailbox>([this] { RunPosted(); });
  state_->timer.setSingleShot(true);
  state_->timer.setTimerType(Qt::PreciseTimer);
  QObject::connect(&state_->timer, &QTimer::timeout, &state_->timer, [this] { RunTimers(); });
  // For events that are not ours: windows, sockets of others.
  state_->beforeSleep =
      QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                       &state_->timer, [this] { RunReadyTasks(); });
}

QtLoop::~QtLoop() {
  QObject::disconnect(state_->beforeSleep);
  AbandonTasks();
  state_->mailbox->Close();
}

void QtLoop::ChoosePlainDispatcher() {
  SetPlainDispatcher();
}

void QtLoop::ChooseWindowDispatcher() {
  qputenv("QT_NO_GLIB", "1");
}

int QtLoop::Run() {
  return QCoreApplication::exec();
}

void QtLoop::Quit(int code) {
  Post([code] { QCoreApplication::exit(code); });
}

WallTime QtLoop::Now() const {
  const auto utc = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
  return WallTime(utc.time_since_epoch() + UtcOffset());
}

std::chrono::seconds QtLoop::UtcOffset() const {
  return PresentUtcOffset();
}

MonotonicTime QtLoop::Monotonic() const {
  return std::chrono::duration_cast<MonotonicTime>(std::chrono::steady_clock::now().time_since_epoch());
}

Timer QtLoop::After(Duration delay, std::function<void()> work) {
  Timer timer = state_->timers.Add(Later(Monotonic(), delay), Duration::zero(), std::move(work));
  ArmTimer();
  return timer;
}

Timer QtLoop::Every(Duration interval, std::function<void()> work) {
  interval = std::max(interval, kShortestInterval);
  MonotonicTime first = Later(Monotonic(), interval);
  if (interval >= kGrid) first -= first % kGrid;
  Timer timer = state_->timers.Add(first, interval, std::move(work));
  ArmTimer();
  return timer;
}

void QtLoop::Post(std::function<void()> work) {
  state_->mailbox->Post(std::move(work));
}

void QtLoop::PostFromAnyThread(std::function<void()> work) {
  state_->mailbox->PostFromAnyThread(std::move(work));
}

void QtLoop::Offload(std::function<void()> work, std::function<void()> done) {
  OffloadTo(state_->workers, std::move(work), std::move(done));
}

void QtLoop::LookUp(std::function<void()> work, std::function<void()> done) {
  OffloadTo(state_->lookUps, std::move(work), std::move(done));
}

void QtLoop::OffloadTo(WorkerPool& pool, std::function<void()> work, std::function<void()> done) {
  const bool begun =
      pool.Submit([work = std::move(work), done = std::move(done), mailbox = state_->mailbox]() mutable {
        work();
        work = nullptr;
        mailbox->PostFromAnyThread(std::move(done));
      });
  if (!begun && !state_->relief.Running()) RelieveWorkers();
}

void QtLoop::RelieveWorkers() {
  if (!state_->workers.Crowded() && !state_->lookUps.Crowded()) return;
  state_->relief = After(WorkerPool::kSeemsToHang, [this] {
    state_->workers.Relieve();
    state_->lookUps.Relieve();
    RelieveWorkers();
  });
}

// What waits now; what is posted meanwhile comes in the next turn, after sockets and timers.
void QtLoop::RunPosted() {
  for (std::size_t left = state_->mailbox->BeginDelivery(); left > 0; --left) {
    const auto work = state_->mailbox->Take();
    if (!work) break;
    Call(work);
  }
  RunReadyTasks();
}

void QtLoop::RunTimers() {
  state_->armedFor.reset();
  const MonotonicTime now = Monotonic();
  while (const auto entry = state_->timers.TakeDue(now)) {
    ArmTimer();  // for the others, should this one open a nested event loop
    Call(entry->work);
  }
  ArmTimer();
  RunReadyTasks();
}

void QtLoop::ArmTimer() {
  const auto due = state_->timers.NextDue();
  if (due == state_->armedFor) return;
  state_->armedFor = due;
  if (!due) return state_->timer.stop();
  const Duration sleep = std::clamp(*due - Monotonic(), Duration::zero(), kLongestSleep);
  // Rounded up: a timer is never early.
  state_->timer.start(std::chrono::ceil<std::chrono::milliseconds>(sleep));
}

void QtLoop::HandleEvent(const std::function<void()>& work) noexcept {
  Call(work);
  RunReadyTasks();
}

void QtLoop::Call(const std::function<void()>& work) noexcept {
  try {
    work();
  } catch (const std::exception& failure) {
    ReportFailure("event", failure.what());
  } catch (...) {
    ReportFailure("event", "unknown exception");
  }
}

}  // namespace zeb
