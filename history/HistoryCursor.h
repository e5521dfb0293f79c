// HistoryCursor: walks through rows of the history in the order of time, fetching them piece by piece, so
// that neither the memory grows with the span nor the store is held open while somebody reads what was found.
#pragma once

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "platform/HistoryStore.h"

namespace zeb {

template <class Row>
class HistoryCursor {
 public:
  static constexpr int kPiece = 500;
  // What fetches the rows behind a place, at most so many.
  using Fetch = std::function<Result<std::vector<Row>>(HistoryPlace place, int most)>;

  explicit HistoryCursor(Fetch fetch) : fetch_(std::move(fetch)) {}

  // The row in front; null at the end, and when the store failed.
  const Row* Peek() {
    if (next_ == rows_.size() && !ended_) FetchMore();
    return next_ < rows_.size() ? &rows_[next_] : nullptr;
  }
  void Skip() { ++next_; }
  const Outcome& outcome() const { return outcome_; }

 private:
  void FetchMore() {
    Result<std::vector<Row>> rows = fetch_(place_, kPiece);
    next_ = 0;
    rows_.clear();
    if (!rows) {
      outcome_ = rows.AsFailure();
      ended_ = true;
      return;
    }
    rows_ = std::move(rows.Value());
    ended_ = rows_.size() < kPiece;
    if (!rows_.empty()) place_ = {rows_.back().moment.utc, rows_.back().id};
  }

  Fetch fetch_;
  std::vector<Row> rows_;
  std::size_t next_ = 0;
  HistoryPlace place_;
  bool ended_ = false;
  Outcome outcome_;
};

inline HistoryCursor<HistoryItem> ItemsOf(HistoryReader& reader, const HistoryFilter& filter) {
  return HistoryCursor<HistoryItem>(
      [&reader, filter](HistoryPlace place, int most) { return reader.Items(filter, place, most); });
}
inline HistoryCursor<HistoryPublication> PublicationsOf(HistoryReader& reader, const HistoryFilter& filter) {
  return HistoryCursor<HistoryPublication>(
      [&reader, filter](HistoryPlace place, int most) { return reader.Publications(filter, place, most); });
}
inline HistoryCursor<HistoryReader::Update> UpdatesOf(HistoryReader& reader, const HistoryFilter& filter) {
  return HistoryCursor<HistoryReader::Update>(
      [&reader, filter](HistoryPlace place, int most) { return reader.Updates(filter, place, most); });
}

}  // namespace zeb
