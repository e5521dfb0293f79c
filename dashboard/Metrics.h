// The state of the services as figures, in Prometheus' text format (version 0.0.4). docs/manual/metrics.md
// says what each means.
#pragma once

#include <string>
#include <vector>

#include "platform/Time.h"
#include "status/StationState.h"

namespace zeb {

inline constexpr const char* kMetricsContentType = "text/plain; version=0.0.4; charset=utf-8";

// `now`: the moment of the states.
std::string MetricsText(const std::vector<StationState>& states, WallTime now);

}  // namespace zeb
