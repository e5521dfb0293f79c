// ScheduleFile: templates with the days and hours at which they may be used, one a line:
// "days|hours|template".
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/Time.h"

namespace zeb {

struct ScheduleEntry {
  std::string days;  // must contain the first two letters of today's short name
  int fromHour = 0, toHour = 0;
  std::string templateText;

  bool Matches(WallTime now) const;
};

struct ScheduleFile {
  std::vector<ScheduleEntry> entries;
  std::vector<int> malformedLines;  // their numbers, the first few

  // From the bytes of a file, in whatever encoding it is. Lines end in CR LF, CR or LF; empty ones are
  // skipped.
  static ScheduleFile Parse(std::string_view bytes);
};

inline constexpr std::size_t kMaxScheduleBytes = 1024 * 1024;
inline constexpr std::size_t kMaxScheduleEntries = 10000;

}  // namespace zeb
