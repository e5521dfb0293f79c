#include "core/OutputWave.h"

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
  if (running_ == 0) {
    phase_ = Phase::kOver;
    return owner_.over();
  }
  for (Member& member : members_) {
    if (member.leftBehind) continue;
    member.through = false;
    loop_.Start(name_, [self = shared_from_this(), &member, phase] { self->RunMember(member, phase); });
  }
  if (phase_ != phase || running_ == 0) return;  // all are through already
  limit_ = loop_.After(kPhaseLimit, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->LeaveBehind();
  });
}

// A member's task. One that is left behind goes on with its further phases alone.
void OutputWave::RunMember(Member& member, Phase phase) {
  for (; mark_.Holds(); phase = After(phase)) {
    owner_.run(phase, *member.runner);
    if (!mark_.Holds()) return;
    if (phase == Phase::kFinish) owner_.ended(member.runner);
    if (!mark_.Holds()) return;
    if (!member.leftBehind) return MemberThrough(member);
    if (phase == Phase::kFinish) return;
  }
}

void OutputWave::MemberThrough(Member& member) {
  member.through = true;
  if (--running_ == 0) NextPhase();
}

void OutputWave::LeaveBehind() {
  if (!mark_.Holds()) return;
  for (Member& member : members_)
    if (!member.through) member.leftBehind = true;
  NextPhase();
}

void OutputWave::NextPhase() {
  limit_.Stop();
  phase_ = After(phase_);
  if (phase_ == Phase::kOver) return owner_.over();
  StartPhase();
}

}  // namespace zeb
