// HistoryRequest: a question to the history as programs ask it, in words, and its answer as JSON: what
// `GET /api/v1/history` takes and gives. The answer reads the store, which may block: ask it on a worker.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/HistoryStore.h"
#include "platform/Result.h"
#include "text/MomentText.h"

namespace zeb {

// "file2" is "File2"; nothing for a name that no output has.
std::optional<std::string> ReadOutputName(std::string_view text);

// How far local time was ahead of UTC at a moment of local time.
using UtcOffsetOf = std::function<std::chrono::seconds(WallTime local)>;
HistoryMoment MomentOf(const WrittenMoment& written, const UtcOffsetOf& utcOffset);

struct HistoryRequest {
  static constexpr int kMostRows = 1000;
  HistoryFilter filter;
  bool songs = false;
  int most = kMostRows;  // rows, the first ones of the span
  static constexpr int kMostLast = 100;
  int last = 0;  // not 0: instead of a span, the last items that were current, the newest first
};

// Names and values, as a query string has them: "service" (a number), "output" ("File2"), "from" and "to"
// (moments, see text/MomentText.h), "songs" ("1"), "limit" (1 to kMostRows), "last" (1 to kMostLast, with a
// service); an empty value is as none. Without "from" the day before `now` (or before "to") counts. The
// reason of a failure names the word.
Result<HistoryRequest> ReadHistoryRequest(const std::vector<std::pair<std::string, std::string>>& words,
                                          const HistoryMoment& now, const UtcOffsetOf& utcOffset);

// Opens the store for one request; creates nothing.
using OpenHistory = std::function<Result<std::unique_ptr<HistoryReader>>()>;

// A list of objects, as `zebctl history --json` prints it.
Result<std::string> HistoryJson(HistoryReader& reader, const HistoryRequest& request);

}  // namespace zeb
