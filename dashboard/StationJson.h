// The state of a service as JSON, as the web page, the local socket and `zebctl status --json` give it. The
// names are those of docs/openapi.json.
#pragma once

#include <boost/json/object.hpp>
#include <chrono>

#include "status/StationState.h"

namespace zeb {

// `utcOffset`: how far the state's moments are ahead of UTC.
boost::json::object JsonOf(const StationState& state, std::chrono::seconds utcOffset);
boost::json::object JsonOf(const OutputState& state, std::chrono::seconds utcOffset);
boost::json::object JsonOf(const clsZEBItemInfo& item);

}  // namespace zeb
