// Moments as people and programs write them: "YYYY-MM-DD hh:mm[:ss]" by the station's clocks, or RFC 3339.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

#include "platform/Time.h"

namespace zeb {

struct WrittenMoment {
  WallTime wall{};
  std::optional<std::chrono::seconds> utcOffset;  // nothing: by the station's clocks
};

// "2026-11-24 08:14", "2026-11-24T08:14:03.250+01:00", "…Z". A blank or a T between date and time; seconds,
// their fraction and the offset may be left out. Nothing for anything else.
std::optional<WrittenMoment> ReadMomentText(std::string_view text);

}  // namespace zeb
