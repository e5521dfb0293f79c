// The parts of the lists that requests and events give: moments, journal lines, the list of stations.
#pragma once

#include <boost/json/object.hpp>
#include <chrono>

#include "dashboard/JournalTail.h"
#include "platform/EventLoop.h"

namespace zeb {

boost::json::object TimeJson(const EventLoop& loop);      // {"time"}: now
boost::json::object ListHeadJson(const EventLoop& loop);  // {"version","time"}
boost::json::object JsonOf(const JournalTail::Line& line, std::chrono::seconds utcOffset);

}  // namespace zeb
