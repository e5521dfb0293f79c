// OneWorker: where the requests of one kind have their work done by a worker, one at a time, so that whoever
// asks often takes no workers from the outputs.
#pragma once

#include <memory>
#include <utility>

#include "platform/EventLoop.h"
#include "platform/WorkLane.h"

namespace zeb {

class OneWorker {
 public:
  // `limit`: of the wait for one's turn, and of the work. The loop outlives this object.
  OneWorker(EventLoop& loop, Duration limit) : loop_(loop), lane_(loop), limit_(limit) {}

  // As WorkLane::Run, in a task. Nothing (false): it took too long, or an earlier one still does.
  template <class Work>
  auto Run(Work work) {
    using Given = decltype(lane_.Run(std::move(work), limit_));
    if (!loop_.WaitUntil([this] { return !working_; }, limit_)) return Given();
    working_ = true;
    const std::shared_ptr<void> done(nullptr, [this](void*) { working_ = false; });
    return lane_.Run(std::move(work), limit_);
  }

 private:
  EventLoop& loop_;
  WorkLane lane_;
  const Duration limit_;
  bool working_ = false;
};

}  // namespace zeb
