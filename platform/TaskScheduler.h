// TaskScheduler: the tasks of one event loop: stackful coroutines that are suspended while they wait.
//
// Private to EventLoop, which owns it. All of it runs on the loop's thread; the loop's own stack resumes
// tasks and is where they return to when they wait or end, so tasks never nest.
#pragma once

#include <atomic>
#include <boost/context/fiber.hpp>
#include <cstddef>
#include <exception>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "platform/EventLoop.h"
#include "platform/TaskStacks.h"

#undef Yield  // windows.h, which Boost includes, makes a macro of it

namespace zeb {

class TaskScheduler {
 public:
  using Offload = std::function<void(std::function<void()> work, std::function<void()> done)>;
  using FailureHandler = std::function<void(const std::string& task, const std::string& what)>;

  TaskScheduler(EventLoop& loop, Offload offload);
  ~TaskScheduler();
  TaskScheduler(const TaskScheduler&) = delete;
  TaskScheduler& operator=(const TaskScheduler&) = delete;

  void Start(std::string name, std::function<void()> work);
  bool WaitUntil(std::function<bool()> condition, Duration limit);  // an empty condition: only for the time
  void Yield();
  bool RunOnWorker(std::function<void()> work, Duration limit, std::function<void()> cameBack);
  void RunReady();
  void Abandon();
  void ReportFailure(const std::string& name, const std::string& what) noexcept;

  bool InTask() const { return running_ != nullptr; }
  std::size_t Count() const { return starting_.size() + waiting_.size() + parked_.size(); }
  void SetFailureHandler(FailureHandler handler) { onFailure_ = std::move(handler); }

 private:
  class BlockingJob;
  struct Task;
  using Tasks = std::list<Task>;

  // A task's view of the C++ runtime's record of exceptions in flight. The runtime keeps it per thread, but a
  // task may wait inside a catch block while others throw and catch.
  struct ExceptionState {
    void* caught = nullptr;
    unsigned int uncaught = 0;
  };

  struct Task {
    Task(std::string givenName, std::function<void()> givenWork);
    ~Task();
    std::string name;
    std::function<void()> work;
    std::function<bool()> condition;  // set exactly while the task is in waiting_
    bool conditionHolds = false;
    std::exception_ptr conditionFailure;
    Tasks::iterator self;
    boost::context::fiber inside;   // where it goes on, while suspended
    boost::context::fiber outside;  // the loop's stack, while running
    const void* stackBottom = nullptr;
    std::size_t stackSize = 0;
    void* sanitizerState = nullptr;
    ExceptionState exceptions;
    int refusedWaits = 0;  // waits that threw because the loop ends
    bool begun = false;
    bool ended = false;
  };

  // What boost::context asks a stack of.
  struct StackSource {
    TaskScheduler* scheduler;
    Task* task;
    boost::context::stack_context allocate();
    void deallocate(boost::context::stack_context& stack) noexcept;
  };

  void RunStarted();
  void Wake(Task& task);
  void Resume(Task& task);
  void Enter(Task& task);
  bool MakeFiber(Task& task);
  void Body(Task& task);
  void Suspend();
  bool ConditionHolds(Task& task);
  bool Refused();
  static void LeaveSuspended(Task& task);

  EventLoop& loop_;
  Offload offload_;
  FailureHandler onFailure_;
  TaskStacks stacks_;
  // Each task is in one of these.
  Tasks starting_;               // not begun
  Tasks waiting_;                // for a condition, in the order in which they began to wait
  Tasks parked_;                 // for time, a worker thread or the tasks that were started; or running
  std::vector<Task*> yielding_;  // those of parked_ that wait for the tasks that were started
  Task* running_ = nullptr;
  bool closing_ = false;
  // The sanitizer's view of the loop's stack.
  void* loopSanitizerState_ = nullptr;
  const void* loopStackBottom_ = nullptr;
  std::size_t loopStackSize_ = 0;
};

}  // namespace zeb
