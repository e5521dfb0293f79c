#include "platform/windows/ComThread.h"

#include <windows.h>
// After windows.h.
#include <objbase.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/windows/WinHandle.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kSeemsToHang = 5s;
constexpr auto kGrace = 500ms;

}  // namespace

// What all threads share; outlives those that hang.
struct ComThreads::All {
  std::mutex mutex;
  std::condition_variable ended;
  std::list<std::optional<Clock::time_point>>
      underWay;  // for each thread: since when it has been at its call

  std::size_t Hanging() {
    const auto before = Clock::now() - kSeemsToHang;
    const std::lock_guard lock(mutex);
    return static_cast<std::size_t>(std::count_if(
        underWay.begin(), underWay.end(), [before](const auto& since) { return since && *since <= before; }));
  }
};

struct ComThread::State {
  explicit State(std::shared_ptr<ComThreads::All> shared)
      : all(std::move(shared)), wake(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}

  const std::shared_ptr<ComThreads::All> all;
  const WinHandle wake;
  std::mutex mutex;
  std::deque<std::function<void()>> jobs;
  bool closed = false;

  static void Work(const std::shared_ptr<State>& self) {
    const auto place = self->Enter();
    const bool hasApartment = SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    while (auto job = self->Next()) {
      self->Note(*place, Clock::now());
      job();
      job = nullptr;
      self->Note(*place, std::nullopt);
    }
    if (hasApartment) CoUninitialize();
    const std::lock_guard lock(self->all->mutex);
    self->all->underWay.erase(place);
    self->all->ended.notify_all();
  }

  std::list<std::optional<Clock::time_point>>::iterator Enter() const {
    const std::lock_guard lock(all->mutex);
    return all->underWay.insert(all->underWay.end(), std::nullopt);
  }
  void Note(std::optional<Clock::time_point>& place, std::optional<Clock::time_point> since) const {
    const std::lock_guard lock(all->mutex);
    place = since;
  }

  // Nothing: the thread is to end.
  std::function<void()> Next() {
    for (;;) {
      {
        const std::lock_guard lock(mutex);
        if (!jobs.empty()) {
          auto job = std::move(jobs.front());
          jobs.pop_front();
          return job;
        }
        if (closed) return nullptr;
      }
      const HANDLE event = wake.Get();
      MsgWaitForMultipleObjectsEx(1, &event, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
      for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0;) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
      }
    }
  }
};

ComThread::~ComThread() {
  const std::lock_guard lock(state_->mutex);
  state_->closed = true;
  SetEvent(state_->wake.Get());
}

void ComThread::Later(std::function<void()> work) {
  const std::lock_guard lock(state_->mutex);
  state_->jobs.push_back(std::move(work));
  SetEvent(state_->wake.Get());
}

ComThreads::ComThreads() : all_(std::make_shared<All>()) {}

ComThreads::~ComThreads() {
  std::unique_lock lock(all_->mutex);
  all_->ended.wait_for(lock, kGrace, [this] { return all_->underWay.empty(); });
}

Result<std::shared_ptr<ComThread>> ComThreads::Begin() {
  const std::size_t hanging = all_->Hanging();
  if (hanging >= kMostHanging)
    return Failure{std::to_string(hanging) +
                   " calls to encoders have not come back; no other is begun until one does"};
  auto state = std::make_shared<ComThread::State>(all_);
  try {
    if (!state->wake.IsOpen()) throw std::system_error();
    std::thread([state] { ComThread::State::Work(state); }).detach();
  } catch (const std::system_error&) {
    return Failure{"the system has no thread left for an encoder"};
  }
  return std::shared_ptr<ComThread>(new ComThread(std::move(state)));
}

}  // namespace zeb
