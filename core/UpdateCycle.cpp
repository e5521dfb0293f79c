#include "core/UpdateCycle.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;
using Phase = OutputWave::Phase;

constexpr Duration kSlowUpdate = 10s;

std::string_view VerbOf(Phase phase) {
  switch (phase) {
    case Phase::kPrepare:
      return "Preparing ";
    case Phase::kUpdate:
      return "Updating ";
    default:
      return "Finishing ";
  }
}

}  // namespace

UpdateCycle::UpdateCycle(Environment& environment, ServiceEvents& events)
    : environment_(environment), events_(events) {}

// ---- The outputs

RunnerPtr UpdateCycle::MakeRunner(OutputType type, OutputPtr output) {
  auto runner = std::make_shared<OutputRunner>(type, std::move(output));
  runner->output->onShownLost = [this, weak = std::weak_ptr<OutputRunner>(runner), mark = epoch_.Now()] {
    const auto lost = weak.lock();
    if (!lost || !mark.Holds() || lost->busy) return;
    lost->Want(OutputRunner::Wanted::kRepair);
    if (lost->target) TryAgainLater(lost);
  };
  runner->output->whatWaits = [&loop = environment_.loop, weak = std::weak_ptr<OutputRunner>(runner)] {
    const auto busy = weak.lock();
    return busy ? busy->WhatWaits(loop.Monotonic()) : clsZEBTemplate::Waiting();
  };
  return runner;
}

void UpdateCycle::SetRunners(OutputType type, std::vector<RunnerPtr> runners) {
  const std::vector<RunnerPtr> former = std::exchange(StateOf(type).runners, std::move(runners));
  for (const RunnerPtr& runner : former) {
    if (IndexOf(*runner) != 0) continue;
    runner->removed = true;
    runner->output->onShownLost = nullptr;
    runner->output->whatWaits = nullptr;
    runner->retry.Stop();
    runner->laterDue.Stop();
  }
}

std::vector<OutputPtr> UpdateCycle::Clear(OutputType type) {
  std::vector<OutputPtr> outputs;
  for (const RunnerPtr& runner : Runners(type)) outputs.push_back(runner->output);
  SetRunners(type, {});
  StateOf(type).lastUpdate.reset();
  return outputs;
}

void UpdateCycle::EndAll() {
  epoch_.Next();
  openWaves_ = 0;
}

int UpdateCycle::IndexOf(const OutputRunner& runner) const {
  const auto& runners = StateOf(runner.type).runners;
  const auto found = std::find_if(runners.begin(), runners.end(),
                                  [&](const RunnerPtr& one) { return one.get() == &runner; });
  return found == runners.end() ? 0 : static_cast<int>(found - runners.begin()) + 1;
}

bool UpdateCycle::UpdateInProgress() const {
  return openWaves_ > 0 || std::any_of(types_.begin(), types_.end(), [](const TypeState& state) {
           return std::any_of(state.runners.begin(), state.runners.end(),
                              [](const RunnerPtr& runner) { return runner->busy; });
         });
}

bool UpdateCycle::TravelCueOwed() const {
  const auto owes = [](const RunnerPtr& runner) {
    const auto isTravel = [](const auto& cue) { return cue.IsTravel(); };
    return runner->owedTravel || std::any_of(runner->cues.begin(), runner->cues.end(), isTravel) ||
           std::any_of(runner->later.begin(), runner->later.end(),
                       [&](const auto& later) { return later.cue && isTravel(*later.cue); });
  };
  return std::any_of(types_.begin(), types_.end(), [&](const TypeState& state) {
    return std::any_of(state.runners.begin(), state.runners.end(), owes);
  });
}

void UpdateCycle::CancelAll() {
  for (const TypeState& state : types_)
    for (const RunnerPtr& runner : state.runners)
      if (runner->busy) Guarded("cancelling an output", [&] { runner->output->Cancel(); });
}

void UpdateCycle::Start(OutputType type, int index, const std::shared_ptr<Control>& control) {
  const RunnerPtr runner = Runners(type).at(static_cast<std::size_t>(index) - 1);
  runner->busy = true;
  environment_.loop.Start("start of an output", [this, type, runner, control, mark = epoch_.Now()] {
    std::string fault;
    if (!Guarded(
            "starting an output", [&] { runner->output->StartOutput(control); }, &fault))
      runner->output->NoteFault(fault);
    if (!mark.Holds()) return;
    runner->busy = false;
    if (runner->removed) return;
    Tell(&ServiceEvents::OutputStarted, IndexOf(*runner), type);
    GoOn(runner);
  });
}

// ---- Updates

bool UpdateCycle::IsDue(OutputType type) const {
  const TypeState& state = StateOf(type);
  if (state.runners.empty() || state.interval <= 0) return false;
  return !state.lastUpdate ||
         environment_.loop.Monotonic() - *state.lastUpdate > std::chrono::seconds(state.interval);
}

void UpdateCycle::Update(const std::vector<OutputType>& types, const SnapshotPtr& snapshot,
                         UpdateCause cause) {
  const RecordPtr record = MakeRecord(snapshot, cause);
  const Epoch::Mark mark = epoch_.Now();
  for (const OutputType type : types) {
    UpdateType(type, snapshot, record);
    // So that a type whose outputs do not wait is through before the next one begins, also inside a task.
    environment_.loop.Yield();
    if (!mark.Holds()) return;
  }
  Release(record);
}

void UpdateCycle::UpdateType(OutputType type, const SnapshotPtr& snapshot, const RecordPtr& record) {
  std::vector<RunnerPtr> wave, laterOnes;
  for (const RunnerPtr& runner : StateOf(type).runners) {
    if (runner->output->DelaySeconds > 0) {
      Delay(
          runner,
          {environment_.loop.Monotonic() + std::chrono::seconds(runner->output->DelaySeconds), {}, snapshot});
      ++record->delayed;
      continue;
    }
    const bool free = runner->Free();
    const bool isShown = free || record->cause == UpdateCause::kInformation;
    if (isShown) runner->target = snapshot;
    if (free && !runner->owedTravel) {
      wave.push_back(runner);
      continue;
    }
    if (isShown) runner->Want(OutputRunner::Wanted::kNews);
    ++record->postponed;
    if (free) laterOnes.push_back(runner);
  }
  BeginUpdateWave(type, std::move(wave), snapshot, record);
  for (const RunnerPtr& runner : laterOnes) TryAgain(runner);
}

void UpdateCycle::BeginUpdateWave(OutputType type, std::vector<RunnerPtr> runners,
                                  const SnapshotPtr& snapshot, const RecordPtr& record) {
  if (DebugLevelAllows(5))
    WriteDebugLine("Started ZEBService.UpdateOutputType(" + std::to_string(static_cast<int>(type)) + "): '" +
                       snapshot->currentItem->ItemName + "' by '" + snapshot->currentItem->Artists + "'",
                   5, LineKind::kStarted);
  ++openWaves_;
  Guarded("telling that an update starts", [this] { events_.UpdateStarted(); });
  for (const RunnerPtr& runner : runners) {
    record->runs.push_back({type, IndexOf(*runner), runner->output, false, {}});
    ++record->left;
    runner->target = snapshot;
    runner->wanted = OutputRunner::Wanted::kNo;
  }
  BeginWave(type, std::move(runners), {snapshot, {}, "Update", true, record});
}

void UpdateCycle::Show(const RunnerPtr& runner, const SnapshotPtr& snapshot) {
  runner->target = snapshot;
  runner->Want(OutputRunner::Wanted::kRepair);
  GoOn(runner);
}

void UpdateCycle::BeginWave(OutputType type, std::vector<RunnerPtr> runners, Run run) {
  for (const RunnerPtr& runner : runners) runner->busy = true;
  const auto shared = std::make_shared<const Run>(std::move(run));
  OutputWave::Owner owner;
  owner.run = [this, shared](Phase phase, OutputRunner& runner) { RunPhase(*shared, phase, runner); };
  owner.ended = [this, shared](const RunnerPtr& runner) { RunEnded(runner, *shared); };
  owner.over = [this, shared, type] {
    if (shared->cue) return;
    --openWaves_;
    StateOf(type).lastUpdate = environment_.loop.Monotonic();
    Guarded("telling that an update has finished", [this] { events_.UpdateFinished(); });
    WriteDebugLine("Finished ZEBService.UpdateOutputType", 5, LineKind::kFinished);
  };
  std::string name = shared->cue ? "cue to " : "update of ";
  name += NameOf(type);
  std::make_shared<OutputWave>(environment_.loop, std::move(name), std::move(runners), std::move(owner),
                               epoch_.Now())
      ->Begin();
}

// In the runner's task.
void UpdateCycle::RunPhase(const Run& run, Phase phase, OutputRunner& runner) {
  const int index = IndexOf(runner);
  if (index == 0) return;  // removed meanwhile
  const auto step = [phase, index, &runner] {
    return std::string(VerbOf(phase)).append(NameOf(runner.type)).append(" ").append(std::to_string(index));
  };
  if (DebugLevelAllows(5)) DebugLine(run.logName, " - ", step());
  if (phase == Phase::kPrepare) Tell(&ServiceEvents::OutputUpdateStarting, index, runner.type);
  if (phase == Phase::kUpdate && run.updateEvents)
    Tell(&ServiceEvents::OutputUpdateUpdating, index, runner.type);

  const auto doing = [&step] {
    std::string text = step();
    text.front() = AsciiLower(text.front());
    return text;
  };
  const Epoch::Mark mark = epoch_.Now();
  const OutputPtr output = runner.output;
  std::string fault;
  const bool done = Guarded(
      doing,
      [&] {
        if (phase == Phase::kPrepare) {
          output->PrepareOutput(run.snapshot);
        } else if (phase == Phase::kFinish) {
          output->FinishOutput(run.snapshot);
        } else if (run.cue) {
          SendCueTo(runner, *run.cue);
        } else {
          output->CountRun(output->UpdateOutput(run.snapshot));
        }
      },
      &fault);
  if (!done) {
    Guarded(doing, [&] {
      output->NoteFault(fault);
      output->CountRun(false);
    });
  }
  if (!mark.Holds()) return;
  const int indexNow = IndexOf(runner);
  if (indexNow == 0) return;
  if (phase == Phase::kUpdate && run.updateEvents)
    Tell(&ServiceEvents::OutputUpdateUpdated, indexNow, runner.type);
  if (phase == Phase::kFinish) Tell(&ServiceEvents::OutputUpdateFinished, indexNow, runner.type);
}

void UpdateCycle::RunEnded(const RunnerPtr& runner, const Run& run) {
  runner->busy = false;
  if (run.record) {
    for (UpdateRun& one : run.record->runs) {
      if (one.output != runner->output) continue;
      one.ended = true;
      one.tally = runner->output->LastTally();
      if (one.tally.givenUp > 0 && !stopping_) runner->Want(OutputRunner::Wanted::kRepair);
      Guarded("telling that an output has ended its run", [&] { events_.OutputRunEnded(*run.record, one); });
    }
    Release(run.record);
  }
  if (runner->removed) return;
  Judge(runner);
  GoOn(runner);
}

// Begins what the output is to do next, if it is free.
void UpdateCycle::GoOn(const RunnerPtr& runner) {
  if (runner->removed || runner->busy) return;
  if (runner->output->Hangs()) {
    runner->output->WhenBack([this, weak = std::weak_ptr<OutputRunner>(runner), mark = epoch_.Now()] {
      const auto back = weak.lock();
      if (!back || !mark.Holds()) return;
      back->Want(OutputRunner::Wanted::kRepair);  // what it shows now is not known
      GoOn(back);
    });
    return;
  }
  if (!runner->cues.empty()) {
    const Cue cue = std::move(runner->cues.front());
    runner->cues.pop_front();
    return BeginCueWave(runner->type, {runner}, cue);
  }
  if (ShowLater(runner)) return;
  if (runner->wanted == OutputRunner::Wanted::kNo) return;
  const UpdateCause cause =
      runner->wanted == OutputRunner::Wanted::kNews ? UpdateCause::kInformation : UpdateCause::kRepair;
  const RecordPtr record = MakeRecord(runner->target, cause);
  BeginUpdateWave(runner->type, {runner}, runner->target, record);
  Release(record);
}

// ---- Records

UpdateCycle::RecordPtr UpdateCycle::MakeRecord(const SnapshotPtr& snapshot, UpdateCause cause) {
  auto record = std::make_shared<UpdateRecord>();
  record->snapshot = snapshot;
  record->cause = cause;
  record->began = environment_.loop.Monotonic();
  record->left = 1;  // its maker, until all its runs have been added
  record->slow = environment_.loop.After(
      kSlowUpdate, [this, weak = std::weak_ptr<UpdateRecord>(record), mark = epoch_.Now()] {
        const auto waits = weak.lock();
        if (waits && mark.Holds())
          Guarded("telling that an update waits", [&] { events_.UpdateWaits(*waits); });
      });
  return record;
}

void UpdateCycle::Release(const RecordPtr& record) {
  if (--record->left > 0) return;
  record->slow.Stop();
  Guarded("telling that an update is through", [&] { events_.UpdateThrough(*record); });
}

void UpdateCycle::Tell(void (ServiceEvents::*event)(int, OutputType), int index, OutputType type) const {
  Guarded("telling of an output's update", [&] { (events_.*event)(index, type); });
}

}  // namespace zeb
