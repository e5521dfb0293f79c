#include "platform/qt/WorkerPool.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <list>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/qt/ThreadWake.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kIdleLife = 30s;
constexpr auto kGrace = 500ms;

}  // namespace

struct WorkerPool::State {
  State(std::size_t usual, std::size_t most) : usualThreads(usual), mostThreads(most) {}

  using Job = std::function<void()>;

  // What a thread waits on that has nothing to do.
  using IdlePtr = std::shared_ptr<ThreadWake>;

  const std::size_t usualThreads, mostThreads;
  std::mutex mutex;
  std::condition_variable allDone;  // no thread is at a job
  std::deque<Job> jobs;
  std::vector<IdlePtr> idle;              // who became so last is called first: it is still warm
  std::list<Clock::time_point> underWay;  // since when each thread has been at its job
  std::size_t threads = 0;
  std::size_t coming = 0;  // threads that were called or begun, and are not here yet
  bool closed = false;

  // What a thread does. `self` keeps the state while it lives.
  static void Work(const std::shared_ptr<State>& self) {
    const auto me = std::make_shared<ThreadWake>();
    std::unique_lock lock(self->mutex);
    --self->coming;
    while (Job job = self->NextJob(lock, me)) {
      const IdlePtr next = CallAnother(self);
      const auto mine = self->underWay.insert(self->underWay.end(), Clock::now());
      lock.unlock();
      if (next) next->Call();
      job();
      job = nullptr;  // what it owns goes before anybody hears that it is done
      lock.lock();
      self->underWay.erase(mine);
      if (self->closed && self->underWay.empty()) self->allDone.notify_all();
    }
    --self->threads;
  }

  // Nothing: the thread is to end.
  Job NextJob(std::unique_lock<std::mutex>& lock, const IdlePtr& me) {
    while (jobs.empty() && !closed) {
      idle.push_back(me);
      lock.unlock();
      const bool called = me->Await(kIdleLife);
      lock.lock();
      if (closed || (!called && std::erase(idle, me) > 0)) return nullptr;
      if (!called) me->Await(kIdleLife);  // it was, in the very moment in which its time was over
      --coming;
    }
    if (closed) return nullptr;
    Job job = std::move(jobs.front());
    jobs.pop_front();
    return job;
  }

  // For the jobs that wait, a thread at a time: it calls the next one when it is here. So a thousand jobs
  // that come at once wake as many threads as find something to do, and one that hangs keeps nothing from the
  // others. Gives who is to be called once the mutex is free, or it would wake up to wait for that.
  static IdlePtr CallAnother(const std::shared_ptr<State>& self) {
    if (self->jobs.empty() || self->coming > 0) return nullptr;
    if (self->idle.empty()) {
      if (self->ThreadIsDue()) BeginThread(self);
      return nullptr;
    }
    IdlePtr next = std::move(self->idle.back());
    self->idle.pop_back();
    ++self->coming;
    return next;
  }

  bool ThreadIsDue() const {
    if (jobs.empty()) return false;
    if (threads < usualThreads) return true;
    const auto before = Clock::now() - kSeemsToHang;
    const auto hanging = static_cast<std::size_t>(
        std::count_if(underWay.begin(), underWay.end(), [before](auto since) { return since <= before; }));
    return threads < std::min(usualThreads + hanging, mostThreads);
  }

  // Without memory for a thread the jobs wait for those that there are; the next Relieve tries again.
  static void BeginThread(const std::shared_ptr<State>& self) {
    try {
      std::thread([self] { Work(self); }).detach();
      ++self->threads;
      ++self->coming;
    } catch (const std::system_error&) {
    }
  }
};

WorkerPool::WorkerPool(std::size_t usual, std::size_t most) : state_(std::make_shared<State>(usual, most)) {}

WorkerPool::~WorkerPool() {
  std::unique_lock lock(state_->mutex);
  state_->closed = true;
  const auto dropped = std::move(state_->jobs);
  state_->jobs.clear();
  for (const State::IdlePtr& idle : std::exchange(state_->idle, {})) idle->Call();
  state_->allDone.wait_for(lock, kGrace, [this] { return state_->underWay.empty(); });
}

bool WorkerPool::Submit(std::function<void()> job) {
  std::unique_lock lock(state_->mutex);
  state_->jobs.push_back(std::move(job));
  const State::IdlePtr idle = State::CallAnother(state_);
  lock.unlock();
  if (idle) idle->Call();
  return idle != nullptr;
}

bool WorkerPool::Crowded() const {
  const std::lock_guard lock(state_->mutex);
  return !state_->jobs.empty();
}

void WorkerPool::Relieve() {
  std::unique_lock lock(state_->mutex);
  const State::IdlePtr idle = State::CallAnother(state_);
  lock.unlock();
  if (idle) idle->Call();
}

}  // namespace zeb
