#include "platform/system/LocalZone.h"

#include <ctime>

namespace zeb {

std::chrono::seconds UtcOffsetAt(WallTime local) {
  using namespace std::chrono;
  const auto day = floor<days>(local);
  const year_month_day date(day);
  const hh_mm_ss time(floor<seconds>(local - day));
  std::tm parts{};
  parts.tm_year = static_cast<int>(date.year()) - 1900;
  parts.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
  parts.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
  parts.tm_hour = static_cast<int>(time.hours().count());
  parts.tm_min = static_cast<int>(time.minutes().count());
  parts.tm_sec = static_cast<int>(time.seconds().count());
  parts.tm_isdst = -1;
  std::mktime(&parts);
  return seconds(parts.tm_gmtoff);
}

}  // namespace zeb
