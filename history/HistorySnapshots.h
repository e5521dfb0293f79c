// HistorySnapshots: an update of the history as the snapshot that it published, so that a template can be
// expanded against it as it was then, or as it would have been.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "core/ServiceSnapshot.h"
#include "platform/HistoryStore.h"
#include "platform/Result.h"
#include "templates/ZEB_Class_Functions.h"

namespace zeb {

class HistorySnapshots {
 public:
  explicit HistorySnapshots(HistoryReader& reader) : reader_(reader) {}

  // Its dates are those of `moment`. A record that is no longer there leaves its slot empty.
  Result<SnapshotPtr> Make(const HistoryReader::Update& update, const HistoryMoment& moment);

 private:
  Result<clsZEBItemInfo> ItemAt(std::int64_t number);

  HistoryReader& reader_;
  std::unordered_map<std::int64_t, clsZEBItemInfo> items_;  // of late
};

// A template of a text, or of a page as the file output treats one. Nothing: the page would be too large.
std::optional<std::string> ExpandAgainst(const ServiceSnapshot& snapshot, std::string_view templateText,
                                         bool page, std::string_view simpleText, ValueEncoding values = {});

}  // namespace zeb
