#include "dashboard/StationList.h"

#include "text/SharedTime.h"

namespace zeb {

boost::json::object TimeJson(const EventLoop& loop) {
  return {{"time", Rfc3339(loop.Now(), loop.UtcOffset())}};
}

boost::json::object ListHeadJson(const EventLoop& loop) {
  return {{"version", ZEB_VERSION}, {"time", Rfc3339(loop.Now(), loop.UtcOffset())}};
}

boost::json::object JsonOf(const JournalTail::Line& line, std::chrono::seconds utcOffset) {
  return {{"time", Rfc3339(line.moment, utcOffset)}, {"text", line.text}};
}

}  // namespace zeb
