#include "platform/qt/LoopSystem.h"

#include <windows.h>

namespace zeb {

std::chrono::seconds PresentUtcOffset() {
  DYNAMIC_TIME_ZONE_INFORMATION zone{};
  const DWORD kind = GetDynamicTimeZoneInformation(&zone);
  // Minutes that local time is behind UTC.
  const LONG behind = zone.Bias + (kind == TIME_ZONE_ID_DAYLIGHT ? zone.DaylightBias : zone.StandardBias);
  return std::chrono::minutes(kind == TIME_ZONE_ID_INVALID ? 0 : -behind);
}

// Qt's own is the one for Windows' messages and sockets.
void SetPlainDispatcher() {}

}  // namespace zeb
