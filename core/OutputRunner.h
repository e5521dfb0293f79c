// OutputRunner: one output's place in its service: what it is doing, what it is to show next, and when it
// tries again. A plain record; the update cycle, which owns it, acts on it.
#pragma once

#include <algorithm>
#include <deque>
#include <memory>
#include <optional>

#include "core/clsZEBTemplate.h"
#include "platform/EventLoop.h"

namespace zeb {

// A command that goes to an output between updates.
struct Cue {
  enum Kind { kNearEnd, kTravelOn, kTravelOff };
  Kind kind = kNearEnd;
  SnapshotPtr snapshot;  // what its texts are expanded against

  bool IsTravel() const { return kind != kNearEnd; }
};

struct OutputRunner {
  OutputRunner(OutputType givenType, OutputPtr givenOutput)
      : type(givenType), output(std::move(givenOutput)) {}

  const OutputType type;
  const OutputPtr output;
  bool busy = false;     // it is being started, or a run is under way
  bool removed = false;  // no longer one of the service's

  // Newest wins: what the output is to show, and why it does not show it yet.
  SnapshotPtr target;
  enum class Wanted { kNo, kRepair, kNews } wanted = Wanted::kNo;
  std::deque<Cue> cues;           // to be sent before the next update
  std::optional<Cue> owedTravel;  // a travel cue that did not leave

  // What a delayed output shows later, in the order of time.
  struct Later {
    MonotonicTime due{};
    std::optional<Cue> cue;  // nothing: an update
    SnapshotPtr snapshot;
  };
  std::deque<Later> later;
  Timer laterDue;

  int failures = 0;  // in a row
  Timer retry;

  // For what it is to show: more than was wanted before, never less.
  void Want(Wanted what) {
    if (target) wanted = std::max(wanted, what);
  }
  // What is to be done when the run under way has ended.
  clsZEBTemplate::Waiting WhatWaits(MonotonicTime now) const {
    clsZEBTemplate::Waiting waiting;
    const auto note = [&waiting](const Cue& cue) {
      (cue.IsTravel() ? waiting.travel : waiting.nearEnd) = true;
    };
    for (const Cue& cue : cues) note(cue);
    if (wanted == Wanted::kNews) waiting.news = target;
    if (later.empty() || later.front().due > now) return waiting;
    if (later.front().cue)
      note(*later.front().cue);
    else
      waiting.news = later.front().snapshot;
    return waiting;
  }
  bool Free() const { return !busy && !output->Hangs(); }
};

using RunnerPtr = std::shared_ptr<OutputRunner>;

}  // namespace zeb
