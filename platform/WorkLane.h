// WorkLane: one thing's way to worker threads: one job at a time, each with a limit. A job that hangs closes
// the lane until it has come back, so that whatever hangs, at most one worker hangs with it.
//
// Owned by an output, a source or whatever else blocks; used on the loop's thread. Destroying it leaves a job
// that hangs to itself.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "platform/EventLoop.h"

namespace zeb {

// How long one piece of work on files may take before its owner goes on without it.
inline constexpr Duration kFileWorkLimit = std::chrono::seconds(30);

class WorkLane {
 public:
  explicit WorkLane(EventLoop& loop) : loop_(loop) {}
  WorkLane(const WorkLane&) = delete;
  WorkLane& operator=(const WorkLane&) = delete;

  // As EventLoop::RunBlocking, with the same rules for `work`. Nothing (false) also at once while an earlier
  // job hangs.
  template <class Work>
  auto Run(Work work, Duration limit) {
    using Given = decltype(loop_.RunBlocking(std::move(work), limit));
    if (Hangs()) return Given();
    Given given = loop_.RunBlocking(std::move(work), limit, [state = state_] { state->ComeBack(); });
    if (!given) state_->LimitPassed();
    return given;
  }

  bool Hangs() const { return state_->hangs; }
  // Called once, when the job that hangs has come back; replaces what was asked for before.
  void WhenBack(std::function<void()> work) { state_->whenBack = std::move(work); }

 private:
  struct State {
    bool hangs = false;
    bool cameBack = false;  // before its limit was noticed
    std::function<void()> whenBack;
    void ComeBack();
    void LimitPassed();
  };

  EventLoop& loop_;
  std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace zeb
