// The cues of UpdateCycle.
#include <algorithm>
#include <utility>

#include "core/UpdateCycle.h"

namespace zeb {

namespace {

constexpr const char* kCueCommand = "CMD";
constexpr const char* kNearEndText = "SAE\r\n";
constexpr std::size_t kMostCues = 16;  // that wait for one output

}  // namespace

void UpdateCycle::SendCue(OutputType type, const Cue& cue) {
  std::vector<RunnerPtr> wave;
  for (const RunnerPtr& runner : StateOf(type).runners) {
    if (runner->output->DelaySeconds > 0 && !stopping_) {
      Delay(runner, {environment_.loop.Monotonic() + std::chrono::seconds(runner->output->DelaySeconds), cue,
                     cue.snapshot});
      continue;
    }
    if (cue.IsTravel()) runner->owedTravel.reset();  // this one takes its place
    if (runner->Free())
      wave.push_back(runner);
    else
      QueueCue(*runner, cue);
  }
  BeginCueWave(type, std::move(wave), cue);
}

// A second near end while one waits is the same end. Nothing is lost by dropping travel cues when far too
// many wait: the last one tells how things stand.
void UpdateCycle::QueueCue(OutputRunner& runner, const Cue& cue) {
  if (!cue.IsTravel() || runner.cues.size() >= kMostCues)
    std::erase_if(runner.cues, [&](const Cue& waiting) { return waiting.IsTravel() == cue.IsTravel(); });
  runner.cues.push_back(cue);
}

void UpdateCycle::BeginCueWave(OutputType type, std::vector<RunnerPtr> runners, const Cue& cue) {
  if (runners.empty()) return;
  const bool travel = cue.IsTravel();
  BeginWave(type, std::move(runners), {cue.snapshot, cue, travel ? "Update" : "PreCue", !travel, nullptr});
}

// In the runner's task.
void UpdateCycle::SendCueTo(OutputRunner& runner, const Cue& cue) {
  const OutputPtr output = runner.output;
  if (runner.type == OutputType::kEncoder) {
    auto* encoder = dynamic_cast<ScriptCommandOutput*>(output.get());
    if (encoder) encoder->SendScriptCommand(kCueCommand, kNearEndText);
    return;
  }
  auto* serial = dynamic_cast<StringOutput*>(output.get());
  if (!serial) return;
  if (cue.kind == Cue::kNearEnd) {
    serial->SendString(*cue.snapshot, kNearEndText);
    return;
  }
  // Owed until it is known to have left, also when this run throws or never comes back.
  runner.owedTravel = cue;
  runner.retry.Stop();  // it would queue this cue once more while it is being sent
  const bool left = cue.kind == Cue::kTravelOn ? serial->SetTravelFlagActivated(*cue.snapshot)
                                               : serial->SetTravelFlagCleared(*cue.snapshot);
  if (left) runner.owedTravel.reset();
}

}  // namespace zeb
