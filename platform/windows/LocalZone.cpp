#include "platform/system/LocalZone.h"

#include <windows.h>

namespace zeb {

std::chrono::seconds UtcOffsetAt(WallTime local) {
  using namespace std::chrono;
  const auto day = floor<days>(local);
  const year_month_day date(day);
  const hh_mm_ss time(floor<seconds>(local - day));
  SYSTEMTIME here{};
  here.wYear = static_cast<WORD>(static_cast<int>(date.year()));
  here.wMonth = static_cast<WORD>(static_cast<unsigned>(date.month()));
  here.wDay = static_cast<WORD>(static_cast<unsigned>(date.day()));
  here.wHour = static_cast<WORD>(time.hours().count());
  here.wMinute = static_cast<WORD>(time.minutes().count());
  here.wSecond = static_cast<WORD>(time.seconds().count());
  SYSTEMTIME utc{};
  FILETIME localTicks{}, utcTicks{};
  if (TzSpecificLocalTimeToSystemTimeEx(nullptr, &here, &utc) == 0 ||
      SystemTimeToFileTime(&here, &localTicks) == 0 || SystemTimeToFileTime(&utc, &utcTicks) == 0)
    return seconds(0);
  const auto ticks = [](const FILETIME& moment) {
    return (static_cast<std::int64_t>(moment.dwHighDateTime) << 32) + moment.dwLowDateTime;
  };
  constexpr std::int64_t kTicksInSecond = 10'000'000;
  return seconds((ticks(localTicks) - ticks(utcTicks)) / kTicksInSecond);
}

}  // namespace zeb
