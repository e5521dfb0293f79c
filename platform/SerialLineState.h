// SerialLineState: what a serial device reports about its line, and which communication events lie between
// two looks at it.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/SerialPortControl.h"

namespace zeb {

struct SerialLineState {
  // How often since some moment.
  std::uint32_t breaks = 0, framingErrors = 0, parityErrors = 0, overruns = 0, bufferOverflows = 0, rings = 0;
  std::uint32_t ctsChanges = 0, dsrChanges = 0, carrierChanges = 0;  // where the device counts them
  bool cts = false, dsr = false, carrier = false, ringing = false;
};

// At most one event of each kind.
std::vector<CommEvent> CommEventsBetween(const SerialLineState& before, const SerialLineState& now);

}  // namespace zeb
