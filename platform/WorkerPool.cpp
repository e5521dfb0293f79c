#include "platform/WorkerPool.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <list>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace zeb {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kIdleLife = 30s;
constexpr auto kGrace = 500ms;

}  // namespace

struct WorkerPool::State {
  std::mutex mutex;
  std::condition_variable wanted;   // a job, or the end
  std::condition_variable allDone;  // no thread is at a job
  std::deque<std::function<void()>> jobs;
  std::list<Clock::time_point> underWay;  // since when each thread has been at its job
  std::size_t threads = 0, idle = 0;
  bool closed = false;

  // What a thread does. `self` keeps the state while it lives.
  static void Work(const std::shared_ptr<State>& self) {
    std::unique_lock lock(self->mutex);
    while (self->NextJob(lock)) {
      std::function<void()> job = std::move(self->jobs.front());
      self->jobs.pop_front();
      const auto mine = self->underWay.insert(self->underWay.end(), Clock::now());
      lock.unlock();
      job();
      job = nullptr;  // what it owns goes before anybody hears that it is done
      lock.lock();
      self->underWay.erase(mine);
      if (self->underWay.empty()) self->allDone.notify_all();
    }
    --self->threads;
  }

  // False: the thread is to end.
  bool NextJob(std::unique_lock<std::mutex>& lock) {
    ++idle;
    wanted.wait_for(lock, kIdleLife, [this] { return closed || !jobs.empty(); });
    --idle;
    return !closed && !jobs.empty();
  }

  bool ThreadIsDue() const {
    if (jobs.size() <= idle) return false;
    const auto before = Clock::now() - kSeemsToHang;
    const auto hanging = static_cast<std::size_t>(
        std::count_if(underWay.begin(), underWay.end(), [before](auto since) { return since <= before; }));
    return threads < std::min(kUsualThreads + hanging, kMostThreads);
  }
};

WorkerPool::WorkerPool() : state_(std::make_shared<State>()) {}

WorkerPool::~WorkerPool() {
  std::unique_lock lock(state_->mutex);
  state_->closed = true;
  const auto dropped = std::move(state_->jobs);
  state_->jobs.clear();
  state_->wanted.notify_all();
  state_->allDone.wait_for(lock, kGrace, [this] { return state_->underWay.empty(); });
}

void WorkerPool::Submit(std::function<void()> job) {
  {
    const std::lock_guard lock(state_->mutex);
    state_->jobs.push_back(std::move(job));
  }
  state_->wanted.notify_one();
  Relieve();
}

bool WorkerPool::Crowded() const {
  const std::lock_guard lock(state_->mutex);
  return state_->jobs.size() > state_->idle;
}

// Without memory or descriptors for a thread the jobs wait for those that there are; the next Relieve tries
// again.
void WorkerPool::Relieve() {
  const std::lock_guard lock(state_->mutex);
  if (!state_->ThreadIsDue()) return;
  try {
    std::thread([state = state_] { State::Work(state); }).detach();
    ++state_->threads;
  } catch (const std::system_error&) {
  }
}

}  // namespace zeb
