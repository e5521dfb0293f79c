#include "core/OutputWave.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace zeb {

namespace {

// Nobody waits longer than this for another output of the same type.
constexpr Duration kPhaseLimit = std::chrono::seconds(1);

OutputWave::Phase After(OutputWave::Phase phase) {
  return static_cast<OutputWave::Phase>(static_cast<int>(phase) + 1);
}

}  // namespace

OutputWave::OutputWave(EventLoop& loop, std::string name, std::vector<RunnerPtr> runners, Owner owner,
                       Epoch::Mark mark)
    : loop_(loop), name_(std::move(name)), owner_(std::move(owner)), mark_(std::move(mark)) {
  for (RunnerPtr& runner : runners) members_.push_back({std::move(runner)});
}

void OutputWave::Begin() {
  StartPhase();
}

void OutputWave::StartPhase() {
  const Phase phase = phase_;
  running_ = 0;
  for (Member& member : members_)
    if (!member.leftBehind) ++running_;
  if (running_ == 0) return End();
  for (Member& member : members_) {
    if (member.leftBehind) continue;
    member.through = false;
    loop_.Start(name_, [self = shared_from_this(), &member, phase] { self->RunMember(member, phase); });
  }
  if (phase_ != phase || running_ == 0) return;  // all are through already
  BeginLimit();
}

// One timer for all phases: most of them end long before their time, and a timer at each would be for
// nothing.
void OutputWave::BeginLimit() {
  phaseEnd_ = loop_.Monotonic() + kPhaseLimit;
  if (!limit_.Running()) ArmLimit(kPhaseLimit);
}

void OutputWave::ArmLimit(Duration delay) {
  limit_ = loop_.After(delay, [weak = weak_from_this()] {
    const auto self = weak.lock();
    if (!self) return;
    const Duration left = self->phaseEnd_ - self->loop_.Monotonic();
    if (left > Duration::zero()) return self->ArmLimit(left);
    self->LeaveBehind();
  });
}

// A member's task. One that is left behind goes on with its further phases alone.
void OutputWave::RunMember(Member& member, Phase phase) {
  for (; mark_.Holds(); phase = After(phase)) {
    owner_.run(phase, *member.runner);
    if (!mark_.Holds()) return;
    if (phase == Phase::kFinish) owner_.ended(member.runner);
    if (!mark_.Holds()) return;
    if (!member.leftBehind && !GoesOn(member)) return;
    if (phase == Phase::kFinish) return;
  }
}

// A member is through with the present phase. True when its task goes on with the next one: nobody else is
// in the wave.
bool OutputWave::GoesOn(Member& member) {
  member.through = true;
  if (--running_ > 0) return false;
  const bool alone =
      std::count_if(members_.begin(), members_.end(), [](const Member& one) { return !one.leftBehind; }) == 1;
  if (!alone || After(phase_) == Phase::kOver) {
    NextPhase();
    return false;
  }
  phase_ = After(phase_);
  member.through = false;
  running_ = 1;
  BeginLimit();
  return true;
}

void OutputWave::LeaveBehind() {
  if (!mark_.Holds()) return;
  for (Member& member : members_)
    if (!member.through) member.leftBehind = true;
  NextPhase();
}

void OutputWave::NextPhase() {
  phase_ = After(phase_);
  if (phase_ == Phase::kOver) return End();
  StartPhase();
}

void OutputWave::End() {
  limit_.Stop();
  phase_ = Phase::kOver;
  owner_.over();
}

}  // namespace zeb
