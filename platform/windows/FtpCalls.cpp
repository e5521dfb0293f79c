#include "platform/windows/FtpCalls.h"

#include <atomic>
#include <system_error>
#include <thread>

namespace zeb {
namespace {

constexpr std::chrono::milliseconds kMoment{300};
// Servers that hang must not fill the process with threads.
constexpr int kMostThreads = 200;
std::atomic<int> threads = 0;

bool OnThread(std::function<void()> work) {
  const bool free = ++threads <= kMostThreads;
  try {
    if (free)
      std::thread([work = std::move(work)] {
        work();
        --threads;
      }).detach();
  } catch (const std::system_error&) {
    --threads;
    return false;
  }
  if (!free) --threads;
  return free;
}

}  // namespace

void FtpCalls::Work(const std::shared_ptr<State>& state) {
  std::unique_lock lock(state->mutex);
  for (;;) {
    state->changed.wait(lock, [&] { return state->ends || state->call; });
    if (!state->call) return;
    lock.unlock();
    state->call();
    lock.lock();
    state->call = nullptr;
    state->changed.notify_all();
  }
}

bool FtpCalls::Begin() {
  const std::lock_guard lock(mutex_);
  if (state_) return true;
  auto state = std::make_shared<State>();
  if (!OnThread([state] { Work(state); })) return false;
  state_ = std::move(state);
  return true;
}

void FtpCalls::Apart(std::function<void()> work) {
  static_cast<void>(OnThread(std::move(work)));
}

bool FtpCalls::Run(std::function<void()> call, const Deadline& deadline,
                   const std::function<void()>& interrupt) {
  if (!Begin()) return false;
  State& state = *state_;
  std::unique_lock lock(state.mutex);
  state.call = std::move(call);
  state.changed.notify_all();
  while (state.call) {
    const Clock::time_point until = deadline();
    if (state.changed.wait_until(lock, until) == std::cv_status::timeout && Clock::now() >= deadline()) break;
  }
  if (!state.call) return true;
  lock.unlock();
  interrupt();
  lock.lock();
  const bool ended = state.changed.wait_for(lock, kMoment, [&] { return !state.call; });
  lock.unlock();
  if (!ended) Renew();
  return false;
}

void FtpCalls::Renew() {
  const std::lock_guard lock(mutex_);
  if (!state_) return;
  {
    const std::lock_guard ending(state_->mutex);
    state_->ends = true;
    state_->changed.notify_all();
  }
  state_.reset();
}

void FtpCalls::Hurry() {
  const std::lock_guard lock(mutex_);
  if (!state_) return;
  const std::lock_guard telling(state_->mutex);
  state_->changed.notify_all();
}

}  // namespace zeb
