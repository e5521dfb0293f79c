#include "platform/EventLoop.h"

#include <utility>

#include "platform/TaskScheduler.h"

namespace zeb {

EventLoop::EventLoop()
    : tasks_(std::make_unique<TaskScheduler>(*this,
                                             [this](std::function<void()> work, std::function<void()> done) {
                                               Offload(std::move(work), std::move(done));
                                             })) {}

EventLoop::~EventLoop() = default;

void EventLoop::Start(std::string name, std::function<void()> work) {
  tasks_->Start(std::move(name), std::move(work));
}

bool EventLoop::WaitUntil(std::function<bool()> condition, Duration limit) {
  return tasks_->WaitUntil(std::move(condition), limit);
}

void EventLoop::Wait(Duration time) {
  tasks_->WaitUntil(nullptr, time);
}

void EventLoop::Yield() {
  tasks_->Yield();
}

bool EventLoop::RunOnWorker(std::function<void()> work, Duration limit, std::function<void()> cameBack) {
  return tasks_->RunOnWorker(std::move(work), limit, std::move(cameBack));
}

bool EventLoop::InTask() const {
  return tasks_->InTask();
}

std::size_t EventLoop::TaskCount() const {
  return tasks_->Count();
}

void EventLoop::OnTaskFailure(std::function<void(const std::string& task, const std::string& what)> handler) {
  tasks_->SetFailureHandler(std::move(handler));
}

void EventLoop::ReportFailure(const std::string& name, const std::string& what) noexcept {
  tasks_->ReportFailure(name, what);
}

void EventLoop::AbandonTasks() {
  tasks_->Abandon();
}

void EventLoop::RunReadyTasks() {
  tasks_->RunReady();
}

}  // namespace zeb
