// UpdateRecord: one update as the journal reports it: what was published, and which outputs took part.
//
// Made by the update cycle and shared by the runs that belong to it; complete when the last of them has
// ended.
#pragma once

#include <vector>

#include "core/clsZEBTemplate.h"
#include "platform/Time.h"

namespace zeb {

// Why outputs are updated: there is new information (a full update), or an interval has passed, or what an
// output shows is not right.
enum class UpdateCause { kInformation, kInterval, kRepair };

// One output's part in an update.
struct UpdateRun {
  OutputType type;
  int index;  // when it began
  OutputPtr output;
  bool ended = false;
  clsZEBTemplate::Tally tally;  // once ended
};

struct UpdateRecord {
  SnapshotPtr snapshot;
  UpdateCause cause = UpdateCause::kInformation;
  MonotonicTime began{};
  std::vector<UpdateRun> runs;
  int delayed = 0;    // outputs that show it later, as they are set
  int postponed = 0;  // outputs that are busy and show it, or something newer, when they are free
  Timer slow;         // for telling that it takes long
  int left = 0;       // runs that have not ended, and one for whoever still adds some
};

}  // namespace zeb
