// HistoryFeed: the last rows of the history for a list that is kept up to date: each piece goes on where the
// one before ended. Reading blocks: on a worker only.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "history/HistoryRequest.h"
#include "platform/HistoryStore.h"

namespace zeb {

struct HistoryRow {
  HistoryMoment moment;
  std::int64_t id = 0;
  std::string output, part;  // "" for an item that came on air
  std::string text;          // what was on air, or shown
  std::string problem;       // "": it was published
  std::optional<std::chrono::microseconds> latency;
};

struct HistoryQuestion {
  OpenHistory open;
  HistoryFilter filter;                // with an output: its publications only
  HistoryPlace items, publications{};  // what is known already
};

struct HistoryPiece {
  std::vector<HistoryRow> rows;  // in the order of time, the last kMostHistoryRows
  HistoryPlace items, publications;
  std::string problem;  // why there is no more; "": there is not
};

inline constexpr std::size_t kMostHistoryRows = 1000;
HistoryPiece ReadHistoryPiece(const HistoryQuestion& question);

// Why the output showed what it showed at the moment, in words.
std::string WhyText(const OpenHistory& open, int service, const std::string& output,
                    const HistoryMoment& moment);

}  // namespace zeb
