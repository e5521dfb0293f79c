// StationBoard: one picture of a service's state, kept from the events of its window; what every front end
// shows, and nothing else.
//
// Owned by the service window, which tells it what happens; on the loop's thread only. Who looks calls State,
// which puts the picture together at that moment; who wants to know of changes sets onChanged, which is
// called once in a turn of the loop, however much has changed.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/UpdateRecord.h"
#include "core/clsZEBService.h"
#include "platform/Epoch.h"
#include "sources/ItemIntake.h"
#include "status/ProofOfAir.h"
#include "status/StationState.h"

namespace zeb {

class StationBoard {
 public:
  // What only the window knows; asked when the picture is put together.
  struct Window {
    std::function<SourceState()> source;
    std::function<const std::string&(Panel panel)> panel;
  };

  StationBoard(clsZEBService& service, Window window);

  bool Hears() const { return window_.source().healthy; }  // whether its source is open
  StationState State() const;
  // The outputs that are in trouble at this moment.
  std::vector<Trouble> Troubles();
  std::function<void()> onChanged;
  // Goes up with each change, so that who looks now and then knows whether there is anything new.
  std::uint64_t Version() const { return version_; }

  // Told by the window.
  void OutputChanged(OutputType type, int index);  // its status or problems may be others now
  void RunEnded(const UpdateRecord& record, const UpdateRun& run);
  void WindowChanged() { TellSoon(); }  // its panels or items
  void Changed();                       // anything else

 private:
  // What is remembered of an output, for as long as it lives.
  struct Known {
    std::weak_ptr<clsZEBTemplate> output;
    SnapshotPtr shows;  // the snapshot of its last run that was right
    std::optional<WallTime> published, failingSince, staleSince;
    std::optional<Duration> latency;
    LatencyHistogram latencies;
    std::uint64_t publications = 0, failures = 0;
    std::unique_ptr<ProofOfAir> proof;  // where the operator wants it
    std::string notedAirProblem;
  };
  void LookAtAir(const OutputPtr& output, const ServiceSnapshot& snapshot);
  void AirChanged(const clsZEBTemplate* output);
  Known& Look(const OutputPtr& output);
  void ForgetGone();
  bool IsStale(clsZEBTemplate& output, const Known& known) const;
  static void LeaveOut(StationState& state);
  OutputState StateOf(OutputType type, int index) const;
  void AddKnown(OutputState& state, const Known& known) const;
  void TellSoon();

  clsZEBService& service_;
  Window window_;
  std::map<const clsZEBTemplate*, Known> known_;
  std::uint64_t version_ = 0;
  bool tellWaits_ = false;
  Epoch epoch_;
};

}  // namespace zeb
