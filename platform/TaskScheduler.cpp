#include "platform/TaskScheduler.h"

#include <cxxabi.h>
#ifdef _WIN32
#include <windows.h>
#endif

#include <cstdint>
#include <iostream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/Sanitizer.h"

namespace zeb {

namespace {

// A task that swallows this many refusals to wait is in a loop of its own, and would keep the program from
// ending.
constexpr int kMostRefusedWaits = 1000;

std::string DescribeCurrentException() {
  try {
    throw;
  } catch (const std::exception& failure) {
    return failure.what();
  } catch (...) {
    return "unknown exception";
  }
}

#ifdef _WIN32
// The thread's list of exception handlers, whose last entry lies on the loop's stack. While a task runs, the
// list is empty: an entry off the present stack is taken for a broken list, and the first exception would end
// the program.
class EmptyExceptionList {
 public:
  EmptyExceptionList() { List() = reinterpret_cast<decltype(NT_TIB::ExceptionList)>(~std::uintptr_t{0}); }
  ~EmptyExceptionList() { List() = kept_; }
  EmptyExceptionList(const EmptyExceptionList&) = delete;
  EmptyExceptionList& operator=(const EmptyExceptionList&) = delete;

 private:
  static decltype(NT_TIB::ExceptionList)& List() {
    return reinterpret_cast<NT_TIB*>(NtCurrentTeb())->ExceptionList;
  }
  decltype(NT_TIB::ExceptionList) kept_ = List();
};
#else
struct EmptyExceptionList {
  EmptyExceptionList() {}  // not trivial, so that nobody calls it unused
};
#endif

}  // namespace

// Work for a worker thread. Queued until a worker begins it, and withdrawn when nobody wants it before that.
// Shared by the task and the worker, so that either may outlive the other.
class TaskScheduler::BlockingJob {
 public:
  explicit BlockingJob(std::function<void()> work) : work_(std::move(work)) {}

  // On the worker's thread.
  void Run() {
    State queued = State::kQueued;
    if (!state_.compare_exchange_strong(queued, State::kUnderWay)) return;
    try {
      work_();
    } catch (...) {
      failure_ = std::current_exception();
    }
    work_ = nullptr;
    state_ = State::kDone;
  }

  // True when no worker has begun it, nor ever will.
  bool Withdraw() {
    State queued = State::kQueued;
    return state_.compare_exchange_strong(queued, State::kWithdrawn);
  }

  std::exception_ptr TakeFailure() { return std::exchange(failure_, nullptr); }

  // On the loop's thread:
  Task* waiting = nullptr;  // the task that waits for it; null once it no longer does
  bool finished = false;
  std::function<void()> cameBack;  // for a job that is left to itself; called once

  void TellBack() {
    if (const auto tell = std::exchange(cameBack, nullptr)) tell();
  }

 private:
  enum class State { kQueued, kUnderWay, kDone, kWithdrawn };
  std::atomic<State> state_ = State::kQueued;
  std::function<void()> work_;
  std::exception_ptr failure_;
};

TaskScheduler::Task::Task(std::string givenName, std::function<void()> givenWork)
    : name(std::move(givenName)), work(std::move(givenWork)) {}

TaskScheduler::Task::~Task() = default;

TaskScheduler::TaskScheduler(EventLoop& loop, Offload offload) : loop_(loop), offload_(std::move(offload)) {}

TaskScheduler::~TaskScheduler() {
  Abandon();
}

void TaskScheduler::Start(std::string name, std::function<void()> work) {
  if (closing_) return;
  starting_.emplace_back(std::move(name), std::move(work));
  starting_.back().self = std::prev(starting_.end());
  if (!running_) RunStarted();
}

// Begins the tasks that others started, then lets those go on that yielded to them. On the loop's own stack
// only.
void TaskScheduler::RunStarted() {
  for (;;) {
    if (!starting_.empty()) {
      Task& task = starting_.front();
      parked_.splice(parked_.end(), starting_, task.self);
      Resume(task);
    } else if (!yielding_.empty()) {
      Task& task = *yielding_.back();
      yielding_.pop_back();
      Resume(task);
    } else {
      return;
    }
  }
}

// Lets a waiting task go on, then begins those that it started.
void TaskScheduler::Wake(Task& task) {
  Resume(task);
  RunStarted();
}

// Lets a task run until it waits or ends.
void TaskScheduler::Resume(Task& task) {
  if (task.condition) parked_.splice(parked_.end(), waiting_, task.self);
  Enter(task);
  if (task.ended) parked_.erase(task.self);
}

void TaskScheduler::Enter(Task& task) {
  if (!task.begun && !MakeFiber(task)) return;
  const EmptyExceptionList exceptionList;
  auto& exceptions = *reinterpret_cast<ExceptionState*>(abi::__cxa_get_globals());
  const ExceptionState ours = std::exchange(exceptions, task.exceptions);
  running_ = &task;
  BeforeSwitch(&loopSanitizerState_, task.stackBottom, task.stackSize);
  task.inside = std::move(task.inside).resume();
  AfterSwitch(loopSanitizerState_, nullptr, nullptr);
  running_ = nullptr;
  task.exceptions = std::exchange(exceptions, ours);
}

// False when there is no memory for a stack; the task has then ended.
bool TaskScheduler::MakeFiber(Task& task) {
  task.begun = true;
  try {
    task.inside = boost::context::fiber(
        std::allocator_arg, StackSource{this, &task}, [this, &task](boost::context::fiber&& outside) {
          AfterSwitch(nullptr, &loopStackBottom_, &loopStackSize_);
          task.outside = std::move(outside);
          Body(task);
          BeforeSwitch(&task.sanitizerState, loopStackBottom_, loopStackSize_);
          return std::move(task.outside);
        });
    return true;
  } catch (const std::exception& failure) {
    task.ended = true;
    ReportFailure(task.name, failure.what());
    return false;
  }
}

// What a task does on its own stack.
void TaskScheduler::Body(Task& task) {
  try {
    task.work();
  } catch (const TaskAbandoned&) {
    // The loop ends.
  } catch (...) {
    ReportFailure(task.name, DescribeCurrentException());
  }
  task.work = nullptr;  // what it captured goes here, while the task may still start others
  task.ended = true;
}

// Back to the loop's stack, until Enter.
void TaskScheduler::Suspend() {
  Task& task = *running_;
  BeforeSwitch(&task.sanitizerState, loopStackBottom_, loopStackSize_);
  task.outside = std::move(task.outside).resume();
  AfterSwitch(task.sanitizerState, &loopStackBottom_, &loopStackSize_);
}

bool TaskScheduler::WaitUntil(std::function<bool()> condition, Duration limit) {
  if (!running_) throw std::logic_error("a wait outside a task");
  if (Refused()) return false;
  if (condition && condition()) return true;
  Task& task = *running_;
  const Timer timer = loop_.After(limit, [this, &task] { Wake(task); });
  if (condition) {
    task.condition = std::move(condition);
    task.conditionHolds = false;
    waiting_.splice(waiting_.end(), parked_, task.self);
  }
  Suspend();
  condition = std::exchange(task.condition, nullptr);
  if (Refused()) return false;
  if (task.conditionFailure) std::rethrow_exception(std::exchange(task.conditionFailure, nullptr));
  if (!condition) return false;
  return task.conditionHolds || condition();
}

void TaskScheduler::Yield() {
  if (!running_ || starting_.empty()) return;
  if (Refused()) return;
  yielding_.push_back(running_);
  Suspend();
  Refused();
}

bool TaskScheduler::RunOnWorker(std::function<void()> work, Duration limit, std::function<void()> cameBack) {
  if (!running_) {
    work();
    return true;
  }
  if (Refused()) return false;
  const auto job = std::make_shared<BlockingJob>(std::move(work));
  job->waiting = running_;
  job->cameBack = std::move(cameBack);
  const auto goOn = [this, job] { Wake(*std::exchange(job->waiting, nullptr)); };
  offload_([job] { job->Run(); },
           [job, goOn] {
             job->finished = true;
             if (job->waiting) return goOn();
             job->TellBack();
           });
  const Timer timer = loop_.After(limit, [job, goOn] {
    if (job->waiting) goOn();
  });
  Suspend();
  job->waiting = nullptr;
  if (!job->finished && job->Withdraw() && !closing_) job->TellBack();
  if (Refused() || !job->finished) return false;
  if (std::exception_ptr failure = job->TakeFailure()) std::rethrow_exception(failure);
  return true;
}

// One pass over the tasks that wait for a condition. Each is asked just before it goes on, for a task that
// went on before it may have changed the answer.
void TaskScheduler::RunReady() {
  if (running_ || waiting_.empty()) return;
  bool anyWentOn = false;
  auto next = waiting_.begin();
  for (std::size_t left = waiting_.size(); left > 0; --left) {
    Task& task = *next++;
    if (!ConditionHolds(task)) continue;
    anyWentOn = true;
    Wake(task);
  }
  // What these tasks did may be what another waits for. That is looked at in the loop's next turn, so that
  // tasks which keep waking each other do not keep events out.
  if (anyWentOn && !waiting_.empty()) loop_.Post([] {});
}

bool TaskScheduler::ConditionHolds(Task& task) {
  try {
    task.conditionHolds = task.condition();
  } catch (...) {
    task.conditionFailure = std::current_exception();
    return true;
  }
  return task.conditionHolds;
}

// Whether the present task's wait is refused because the loop ends. Throws, unless an exception is in flight
// already: then the wait is in a destructor, which must not throw.
bool TaskScheduler::Refused() {
  if (!closing_) return false;
  if (++running_->refusedWaits > kMostRefusedWaits) Suspend();  // for ever
  if (std::uncaught_exceptions() == 0) throw TaskAbandoned();
  return true;
}

void TaskScheduler::Abandon() {
  closing_ = true;
  const Tasks neverBegun = std::move(starting_);
  starting_.clear();
  parked_.splice(parked_.end(), waiting_);
  yielding_.clear();
  while (!parked_.empty()) {
    Task& task = parked_.front();
    Enter(task);
    if (!task.ended) LeaveSuspended(task);
    parked_.erase(task.self);
  }
}

// Keeps the stack of a task that will not end: nothing on it may be destroyed.
void TaskScheduler::LeaveSuspended(Task& task) {
  static auto* const left = new std::vector<boost::context::fiber>();
  left->push_back(std::move(task.inside));
  KeepStack(task.stackBottom, task.stackSize);
}

void TaskScheduler::ReportFailure(const std::string& name, const std::string& what) noexcept {
  try {
    if (onFailure_) {
      onFailure_(name, what);
    } else {
      std::cerr << name << ": " << what << std::endl;
    }
  } catch (...) {
    // There is nobody left to tell.
  }
}

boost::context::stack_context TaskScheduler::StackSource::allocate() {
  auto stack = scheduler->stacks_.Take();
  task->stackBottom = static_cast<char*>(stack.sp) - stack.size;
  task->stackSize = stack.size;
  return stack;
}

void TaskScheduler::StackSource::deallocate(boost::context::stack_context& stack) noexcept {
  scheduler->stacks_.GiveBack(stack);
}

}  // namespace zeb
