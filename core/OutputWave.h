// OutputWave: one run of the three phases (prepare, update, finish) over outputs of one type that are free:
// all prepared, then all updated, then all finished, side by side. A phase ends when all are through or after
// a second: whoever is not through is left behind, ends its phases alone, and holds nobody up.
//
// Lives by shared_ptr while anybody runs for it. Private to the update cycle.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/OutputRunner.h"
#include "platform/Epoch.h"

namespace zeb {

class OutputWave : public std::enable_shared_from_this<OutputWave> {
 public:
  enum class Phase { kPrepare, kUpdate, kFinish, kOver };

  // What the update cycle does for a wave. Not called any more once `owner` has ended.
  struct Owner {
    // In the runner's task; may wait. Must leave what it uses alone once `owner` has ended meanwhile.
    std::function<void(Phase, OutputRunner&)> run;
    std::function<void(const RunnerPtr&)> ended;  // the runner's last phase is over
    std::function<void()> over;                   // all phases are over, except for outputs left behind
  };

  OutputWave(EventLoop& loop, std::string name, std::vector<RunnerPtr> runners, Owner owner,
             Epoch::Mark mark);

  void Begin();

 private:
  struct Member {
    RunnerPtr runner;
    bool through = false;     // with the present phase
    bool leftBehind = false;  // for good
  };

  void StartPhase();
  void RunMember(Member& member, Phase phase);
  bool GoesOn(Member& member);
  void BeginLimit();
  void ArmLimit(Duration delay);
  void LeaveBehind();
  void NextPhase();
  void End();

  EventLoop& loop_;
  std::string name_;
  std::vector<Member> members_;
  Owner owner_;
  Epoch::Mark mark_;
  Phase phase_ = Phase::kPrepare;
  int running_ = 0;  // members whose present phase is waited for
  MonotonicTime phaseEnd_{};
  Timer limit_;  // from the first phase that is waited for on
};

}  // namespace zeb
