// ServiceReport: what is printed of a service: its configuration sheet, without passwords, and what it played
// on a day. As the simple HTML that a QTextDocument lays out on pages.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "core/SettingsTree.h"
#include "core/clsZEBItemInfo.h"
#include "history/HistoryRequest.h"
#include "platform/Result.h"
#include "platform/Time.h"
#include "status/StationState.h"

namespace zeb {

// `settings` is the service's key as it is stored.
std::string ConfigurationReport(const StationState& state, const SettingsTree& settings, WallTime now);

struct PlayedItem {
  WallTime moment{};
  clsZEBItemInfo item;
};
struct PlayedDay {
  std::vector<PlayedItem> items;
  bool more = false;  // there were more than are listed
};
inline constexpr std::size_t kMostPlayed = 5000;

// What came on air at a service on a day of the station's clocks. Reads the history: on a worker.
Result<PlayedDay> ReadPlayedDay(const OpenHistory& open, int service, std::chrono::local_days day,
                                std::chrono::seconds utcOffset);
std::string PlayHistoryReport(const std::string& serviceName, const PlayedDay& played,
                              std::chrono::local_days day, WallTime now);

}  // namespace zeb
