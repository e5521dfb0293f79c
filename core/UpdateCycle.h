// UpdateCycle: drives the outputs of one service, each for itself.
//
// - An update runs as a wave over the outputs of a type that are free; types run side by side.
// - Newest wins: an output that is busy shows the newest items once more as soon as it is free.
// - Cues (near end, travel flag) go to an output before its next update, and a travel cue until it has left.
// - An output whose run failed tries again by itself, after 5, 10, 20, 40, then every 60 seconds.
// - A delayed output shows every snapshot and every cue, that much later.
//
// Owned by clsZEBService. Nothing here waits; the outputs' operations run in tasks of their own, which
// outlive the cycle when an output hangs and then touch it no more.
#pragma once

#include <array>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "core/OutputRunner.h"
#include "core/OutputWave.h"
#include "core/ServiceEvents.h"
#include "core/UpdateRecord.h"
#include "diagnostics/hxGeneral.h"
#include "platform/Epoch.h"

namespace zeb {

class UpdateCycle {
 public:
  UpdateCycle(Environment& environment, ServiceEvents& events);

  // The outputs of a type (a code from 1 to kNumberOutputTypes), in their order.
  const std::vector<RunnerPtr>& Runners(OutputType type) const { return StateOf(type).runners; }
  RunnerPtr MakeRunner(OutputType type, OutputPtr output);
  // Puts others in the place of a type's outputs; one that is in both goes on as it is.
  void SetRunners(OutputType type, std::vector<RunnerPtr> runners);
  // Ends everything: what still runs is neither reported nor continued. The outputs are handed back, not
  // stopped.
  std::vector<OutputPtr> Clear(OutputType type);
  void EndAll();

  // Attaches the output in a task of its own; it is busy until then.
  void Start(OutputType type, int index, const std::shared_ptr<Control>& control);

  std::int32_t Interval(OutputType type) const { return StateOf(type).interval; }
  void SetInterval(OutputType type, std::int32_t seconds) { StateOf(type).interval = seconds; }
  // Whether a periodic pass would update the type now.
  bool IsDue(OutputType type) const;

  // Begins an update of some types, in their order. New information is shown also by outputs that are busy,
  // when they are free.
  void Update(const std::vector<OutputType>& types, const SnapshotPtr& snapshot, UpdateCause cause);
  // Begins a run of one output with the newest items, when there are any.
  void Show(const RunnerPtr& runner, const SnapshotPtr& snapshot);
  void SendCue(OutputType type, const Cue& cue);

  bool UpdateInProgress() const;  // of any output
  bool TravelCueOwed() const;     // one has not left yet
  // Gives up what is under way, as soon as the peers allow.
  void CancelAll();
  // How soon an output that failed tries again; 0: with the next information only.
  void SetRetrySeconds(std::int32_t seconds) { retrySeconds_ = seconds; }
  // The service stops: what failed is not tried again, and cues go out undelayed.
  void BeginStopping() { stopping_ = true; }

 private:
  struct TypeState {
    std::vector<RunnerPtr> runners;
    std::int32_t interval = 0;  // seconds; 0: no periodic update
    std::optional<MonotonicTime> lastUpdate;
  };
  using RecordPtr = std::shared_ptr<UpdateRecord>;
  // What a wave does with each of its outputs.
  struct Run {
    SnapshotPtr snapshot;
    std::optional<Cue> cue;     // nothing: an update
    std::string_view logName;   // how log lines begin
    bool updateEvents = false;  // the update phase is reported
    RecordPtr record;           // of an update
  };

  const TypeState& StateOf(OutputType type) const { return types_[static_cast<std::size_t>(type)]; }
  TypeState& StateOf(OutputType type) { return types_[static_cast<std::size_t>(type)]; }

  void UpdateType(OutputType type, const SnapshotPtr& snapshot, const RecordPtr& record);
  void BeginUpdateWave(OutputType type, std::vector<RunnerPtr> runners, const SnapshotPtr& snapshot,
                       const RecordPtr& record);
  void BeginCueWave(OutputType type, std::vector<RunnerPtr> runners, const Cue& cue);
  void BeginWave(OutputType type, std::vector<RunnerPtr> runners, Run run);
  void RunPhase(const Run& run, OutputWave::Phase phase, OutputRunner& runner);
  void SendCueTo(OutputRunner& runner, const Cue& cue);
  void RunEnded(const RunnerPtr& runner, const Run& run);
  void GoOn(const RunnerPtr& runner);
  bool ShowLater(const RunnerPtr& runner);
  void Delay(const RunnerPtr& runner, OutputRunner::Later later);
  void ArmLater(const RunnerPtr& runner);
  void QueueCue(OutputRunner& runner, const Cue& cue);
  void Judge(const RunnerPtr& runner);
  void TryAgainLater(const RunnerPtr& runner);
  void TryAgain(const RunnerPtr& runner);
  RecordPtr MakeRecord(const SnapshotPtr& snapshot, UpdateCause cause);
  void Release(const RecordPtr& record);
  void Tell(void (ServiceEvents::*event)(int, OutputType), int index, OutputType type) const;
  int IndexOf(const OutputRunner& runner) const;  // 0: removed
  Duration RetryDelay(const OutputRunner& runner) const;
  // False when the work threw; reported then, and its words are in `what`. `doing` is a text, or makes one.
  template <class Doing, class Work>
  static bool Guarded(const Doing& doing, const Work& work, std::string* what = nullptr);

  Environment& environment_;
  ServiceEvents& events_;
  std::array<TypeState, kNumberOutputTypes + 1> types_;
  int openWaves_ = 0;  // of updates
  std::int32_t retrySeconds_ = 5;
  bool stopping_ = false;
  Epoch epoch_;  // a new one when everything ends
};

template <class Doing, class Work>
bool UpdateCycle::Guarded(const Doing& doing, const Work& work, std::string* what) {
  try {
    work();
    return true;
  } catch (const std::exception& fault) {
    if (what) *what = fault.what();
    if constexpr (std::is_invocable_v<Doing>)
      ReportException(doing(), Report::kQuietly);
    else
      ReportException(doing, Report::kQuietly);
    return false;
  }
}

}  // namespace zeb
