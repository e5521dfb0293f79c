// LocalZone: what the station's clocks said at some other time than now.
#pragma once

#include <chrono>

#include "platform/Time.h"

namespace zeb {

// How far local time was, or will be, ahead of UTC at a moment of local time. Of an hour that comes twice one
// of the two is taken; one that is left out counts as the system takes it.
std::chrono::seconds UtcOffsetAt(WallTime local);

}  // namespace zeb
