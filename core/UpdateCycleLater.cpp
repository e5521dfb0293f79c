// What UpdateCycle does later: delayed outputs, and trying again.
#include <algorithm>
#include <chrono>
#include <utility>

#include "core/UpdateCycle.h"
#include "diagnostics/hxGeneral.h"

namespace zeb {

namespace {

// A delayed output holds this many snapshots; only a delay of hours would need more.
constexpr std::size_t kMostLater = 1000;

}  // namespace

// ---- Delays

void UpdateCycle::Delay(const RunnerPtr& runner, OutputRunner::Later later) {
  auto& waiting = runner->later;
  if (waiting.size() >= kMostLater) {
    // A travel cue goes only when all are: the last one tells how things stand.
    const auto mayGo = [](const OutputRunner::Later& one) { return !one.cue || !one.cue->IsTravel(); };
    const auto oldest = std::find_if(waiting.begin(), waiting.end(), mayGo);
    waiting.erase(oldest == waiting.end() ? waiting.begin() : oldest);
    ArmLater(runner);
    DebugLine("A delayed output has ", static_cast<int>(kMostLater), " snapshots waiting; the oldest goes");
  }
  waiting.push_back(std::move(later));
  if (waiting.size() == 1) ArmLater(runner);
}

void UpdateCycle::ArmLater(const RunnerPtr& runner) {
  if (runner->later.empty()) return;
  const Duration wait = runner->later.front().due - environment_.loop.Monotonic();
  runner->laterDue =
      environment_.loop.After(std::max(wait, Duration::zero()),
                              [this, weak = std::weak_ptr<OutputRunner>(runner), mark = epoch_.Now()] {
                                if (const auto due = weak.lock(); due && mark.Holds()) GoOn(due);
                              });
}

// True when something has been begun.
bool UpdateCycle::ShowLater(const RunnerPtr& runner) {
  if (runner->later.empty() || runner->later.front().due > environment_.loop.Monotonic()) return false;
  const OutputRunner::Later later = std::move(runner->later.front());
  runner->later.pop_front();
  ArmLater(runner);
  if (later.cue) {
    BeginCueWave(runner->type, {runner}, *later.cue);
    return true;
  }
  const RecordPtr record = MakeRecord(later.snapshot, UpdateCause::kInformation);
  BeginUpdateWave(runner->type, {runner}, later.snapshot, record);
  Release(record);
  return true;
}

// ---- Trying again

// After a run: whether what the output shows is right.
void UpdateCycle::Judge(const RunnerPtr& runner) {
  clsZEBTemplate& output = *runner->output;
  const bool failed = output.Fails();
  if (!failed && !runner->owedTravel) {
    runner->failures = 0;
    runner->retry.Stop();
  } else if (runner->owedTravel || (runner->target && output.MayPass())) {
    TryAgainLater(runner);
  } else {
    runner->retry.Stop();  // an earlier failure may have passed, this one will not
  }
}

Duration UpdateCycle::RetryDelay(const OutputRunner& runner) const {
  constexpr std::int32_t kUsual = 5, kMost = 60, kMostDoublings = 3;
  // A travel flag must end, whatever else is turned off.
  const std::int32_t first =
      retrySeconds_ > 0 ? std::min(retrySeconds_, kMost) : (runner.owedTravel ? kUsual : 0);
  if (runner.failures <= kMostDoublings)
    return std::min(std::chrono::seconds(first) * (1 << runner.failures), std::chrono::seconds(kMost));
  // Spread a little, so that a hundred outputs do not come back to their server at the same moment.
  constexpr int kSpreadMilliseconds = 6000;
  const int spread = ((static_cast<int>(runner.type) * 31 + IndexOf(runner)) * 1301 + runner.failures * 977) %
                     kSpreadMilliseconds;
  return first == 0 ? Duration::zero() : std::chrono::seconds(kMost) + std::chrono::milliseconds(spread);
}

void UpdateCycle::TryAgainLater(const RunnerPtr& runner) {
  if (stopping_ || runner->removed) return;
  const Duration delay = RetryDelay(*runner);
  if (delay == Duration::zero()) return;
  ++runner->failures;
  runner->retry =
      environment_.loop.After(delay, [this, weak = std::weak_ptr<OutputRunner>(runner), mark = epoch_.Now()] {
        if (const auto failed = weak.lock(); failed && mark.Holds() && !stopping_) TryAgain(failed);
      });
}

void UpdateCycle::TryAgain(const RunnerPtr& runner) {
  if (runner->owedTravel) QueueCue(*runner, *std::exchange(runner->owedTravel, std::nullopt));
  if (runner->output->Fails()) runner->Want(OutputRunner::Wanted::kRepair);
  GoOn(runner);
}

}  // namespace zeb
