#include "platform/SerialLineState.h"

namespace zeb {

std::vector<CommEvent> CommEventsBetween(const SerialLineState& before, const SerialLineState& now) {
  std::vector<CommEvent> events;
  const auto when = [&events](bool happened, CommEvent event) {
    if (happened) events.push_back(event);
  };
  when(now.breaks != before.breaks, kCommBreak);
  when(now.framingErrors != before.framingErrors, kCommFrame);
  when(now.parityErrors != before.parityErrors, kCommParity);
  when(now.overruns != before.overruns, kCommOverrun);
  when(now.bufferOverflows != before.bufferOverflows, kCommReceiveOverflow);
  when(now.cts != before.cts || now.ctsChanges != before.ctsChanges, kCommCTS);
  when(now.dsr != before.dsr || now.dsrChanges != before.dsrChanges, kCommDSR);
  when(now.carrier != before.carrier || now.carrierChanges != before.carrierChanges, kCommCD);
  when((now.ringing && !before.ringing) || now.rings != before.rings, kCommRing);
  return events;
}

}  // namespace zeb
