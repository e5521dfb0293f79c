#include "app/desktop/service/HistoryFeed.h"

#include <algorithm>
#include <deque>
#include <sstream>
#include <utility>

#include "history/HistoryRecord.h"
#include "history/HistoryWhy.h"

namespace zeb {

namespace {

constexpr int kRowsAtATime = 500, kMostFetches = 100;  // the next piece goes on

HistoryRow RowOf(const HistoryItem& item) {
  HistoryRow row{item.moment, item.id, {}, {}, {}, {}, {}};
  if (const auto record = ReadItemRecord(item.record)) {
    const ItemFields& fields = record->Fields();
    row.text =
        fields.ItemName + (fields.ItemName.empty() || fields.Artists.empty() ? "" : " — ") + fields.Artists;
  }
  return row;
}

HistoryRow RowOf(const HistoryPublication& shown) {
  return {shown.moment, shown.id, shown.output, shown.part, shown.text, shown.problem, shown.latency};
}

// Goes through what is behind the place; the last rows stay. The reason why it could not go on.
template <class Fetch>
std::string ReadOn(const Fetch& fetch, HistoryPlace& place, std::deque<HistoryRow>& rows) {
  for (int i = 0; i < kMostFetches; ++i) {
    const auto found = fetch(place);
    if (!found) return found.Reason();
    for (const auto& row : found.Value()) rows.push_back(RowOf(row));
    while (rows.size() > kMostHistoryRows) rows.pop_front();
    if (!found.Value().empty()) place = {found.Value().back().moment.utc, found.Value().back().id};
    if (found.Value().size() < kRowsAtATime) break;
  }
  return {};
}

}  // namespace

HistoryPiece ReadHistoryPiece(const HistoryQuestion& question) {
  HistoryPiece piece{{}, question.items, question.publications, {}};
  const auto opened = question.open();
  if (!opened) {
    piece.problem = opened.Reason();
    return piece;
  }
  HistoryReader& reader = *opened.Value();
  std::deque<HistoryRow> items, shown;
  HistoryFilter onAir = question.filter;
  onAir.slot = kHistoryCurrent;
  if (question.filter.output.empty())
    piece.problem = ReadOn([&](HistoryPlace place) { return reader.Items(onAir, place, kRowsAtATime); },
                           piece.items, items);
  if (piece.problem.empty())
    piece.problem =
        ReadOn([&](HistoryPlace place) { return reader.Publications(question.filter, place, kRowsAtATime); },
               piece.publications, shown);
  // An item comes before what was made of it in the same moment.
  std::merge(items.begin(), items.end(), shown.begin(), shown.end(), std::back_inserter(piece.rows),
             [](const HistoryRow& a, const HistoryRow& b) { return a.moment.utc < b.moment.utc; });
  if (piece.rows.size() > kMostHistoryRows)
    piece.rows.erase(piece.rows.begin(), piece.rows.end() - static_cast<std::ptrdiff_t>(kMostHistoryRows));
  return piece;
}

std::string WhyText(const OpenHistory& open, int service, const std::string& output,
                    const HistoryMoment& moment) {
  const auto opened = open();
  if (!opened) return opened.Reason();
  const Result<WhyAnswer> answer = AskWhy(*opened.Value(), service, output, moment.utc);
  if (!answer) return answer.Reason();
  std::ostringstream text;
  WriteWhy(answer.Value(), service, output, moment, text, WhyLength::kAll);
  return text.str();
}

}  // namespace zeb
