#include "history/HistoryListing.h"

#include <map>
#include <optional>
#include <utility>

#include "core/ItemType.h"
#include "history/HistoryCursor.h"
#include "history/HistoryRecord.h"
#include "text/SharedTime.h"

namespace zeb {
namespace {

clsZEBItemInfo ItemIn(const std::string& record) {
  return ReadItemRecord(record).value_or(clsZEBItemInfo());
}

std::string TypeText(const clsZEBItemInfo& item) {
  return std::string(ItemTypeText(item->ItemType));
}

// ---- All of it

const std::vector<HistoryColumn>& ListColumns() {
  static const std::vector<HistoryColumn> columns = {
      {"moment", 19}, {"service", 7, true},
      {"station"},    {"kind"},
      {"what", 12},   {"part"},
      {"title"},      {"artists"},
      {"type"},       {"source"},
      {"result"},     {"problem"},
      {"text"},       {"bytes", 0, true},
      {"digest"},     {"latencyMs", 0, true},
      {"shown", 1},
  };
  return columns;
}

std::string Quoted(const std::string& text) {
  return "\"" + text + "\"";
}

std::string ItemSummary(const HistoryItem& row, const clsZEBItemInfo& item) {
  std::string text = item->ItemName;
  if (!item->Artists.empty()) text += (text.empty() ? "" : " - ") + item->Artists;
  if (text.empty()) text = "(nothing)";
  return row.source.empty() ? text : text + " (" + row.source + ")";
}

std::string PublicationSummary(const HistoryPublication& row) {
  const std::string part = row.part.empty() ? "" : row.part + ": ";
  if (!row.problem.empty()) return part + "FAILED: " + row.problem;
  if (row.digest.empty()) return part + Quoted(row.text);
  return part + std::to_string(row.bytes) + " bytes, begins " + Quoted(row.text);
}

class Listing {
 public:
  Listing(std::ostream& out, HistoryForm form) : form_(form), table_(out, form, Columns(form)) {}

  void Add(const HistoryItem& row) {
    const clsZEBItemInfo item = ItemIn(row.record);
    Row({table_.Moment(row.moment), std::to_string(row.service), row.serviceName, "item", SlotText(row.slot),
         "", item->ItemName, item->Artists, TypeText(item), row.source, "", "", "", "", "", "",
         ItemSummary(row, item)});
  }
  void Add(const HistoryPublication& row) {
    const bool published = row.problem.empty();
    Row({table_.Moment(row.moment), std::to_string(row.service), "", "publication", row.output, row.part, "",
         "", "", "", published ? "published" : "failed", row.problem, row.text,
         published ? std::to_string(row.bytes) : "", row.digest, row.latency ? LatencyText(*row.latency) : "",
         PublicationSummary(row)});
  }
  void End() { table_.End(); }

 private:
  // The last column is for the table only.
  static std::vector<HistoryColumn> Columns(HistoryForm form) {
    std::vector<HistoryColumn> columns = ListColumns();
    if (form != HistoryForm::kTable) columns.pop_back();
    return columns;
  }
  void Row(std::vector<std::string> values) {
    if (form_ != HistoryForm::kTable) values.pop_back();
    table_.Row(values);
  }

  HistoryForm form_;
  HistoryTable table_;
};

// ---- Songs

// The same song, sent once more.
bool SamePlay(const clsZEBItemInfo& a, const clsZEBItemInfo& b) {
  return a->ItemName == b->ItemName && a->Artists == b->Artists && a->ItemType == b->ItemType &&
         a->ItemReference == b->ItemReference && a->CartNumber == b->CartNumber;
}

std::string Either(const std::string& first, const std::string& otherwise) {
  return first.empty() ? otherwise : first;
}

class Songs {
 public:
  Songs(std::ostream& out, HistoryForm form, std::int64_t to, int most)
      : to_(to),
        left_(most),
        table_(out, form,
               {{"start", 19},
                {"length", 8},
                {"service", 7, true},
                {"title", 30},
                {"artists", 30},
                {"label", 15},
                {"composer", 20},
                {"recordNumber", 1}}) {}

  void Add(const HistoryItem& row) {
    clsZEBItemInfo item = ItemIn(row.record);
    const auto playing = playing_.find(row.service);
    if (playing != playing_.end() && SamePlay(playing->second.item, item)) {
      playing->second.item = std::move(item);  // it may know more now
      return;
    }
    if (playing != playing_.end()) Finish(row.service, row.moment);
    if (row.moment.utc < to_ && KindOfItemType(item->ItemType) == ItemKind::kSong)
      playing_[row.service] = {row.moment, std::move(item)};
  }
  bool Full() const { return left_ <= 0; }
  // Behind the span only the ends of songs matter.
  bool Waits() const { return !playing_.empty(); }
  void End() {
    while (!Full() && !playing_.empty()) Finish(playing_.begin()->first, std::nullopt);
    table_.End();
  }

 private:
  struct Playing {
    HistoryMoment since;
    clsZEBItemInfo item;
  };

  void Finish(int service, std::optional<HistoryMoment> end) {
    const Playing song = std::move(playing_.at(service));
    playing_.erase(service);
    const clsZEBItemInfo& item = song.item;
    std::optional<float> length;
    for (const float known :
         {item->CopyrightMusicDuration, item->CopyrightTotalDuration, item->CartItemLength})
      if (!length && known > 0) length = known;
    if (!length && end) length = static_cast<float>(end->utc - song.since.utc) / 1000.0F;
    --left_;
    table_.Row({table_.Moment(song.since), length ? TimeText(*length) : "", std::to_string(service),
                Either(item->CopyrightMusicTitle, item->ItemName),
                Either(item->CopyrightPerformer, item->Artists), item->CopyrightRecordLabel,
                item->CopyrightComposer, item->CopyrightRecordNumber});
  }

  std::int64_t to_;
  int left_;  // rows that may still be written
  HistoryTable table_;
  std::map<int, Playing> playing_;  // by service
};

}  // namespace

Outcome WriteHistory(HistoryReader& reader, const HistoryFilter& filter, HistoryForm form, std::ostream& out,
                     int most) {
  HistoryCursor<HistoryItem> items = ItemsOf(reader, filter);
  HistoryCursor<HistoryPublication> publications = PublicationsOf(reader, filter);
  const bool withItems = filter.output.empty();
  Listing listing(out, form);
  for (int rows = 0; rows < most; ++rows) {
    const HistoryItem* item = withItems ? items.Peek() : nullptr;
    const HistoryPublication* publication = publications.Peek();
    if (!items.outcome()) return items.outcome();
    if (!publications.outcome()) return publications.outcome();
    if (item == nullptr && publication == nullptr) break;
    if (publication == nullptr || (item != nullptr && item->moment.utc <= publication->moment.utc)) {
      listing.Add(*item);
      items.Skip();
    } else {
      listing.Add(*publication);
      publications.Skip();
    }
  }
  listing.End();
  return {};
}

Outcome WriteLastItems(HistoryReader& reader, int service, HistoryForm form, std::ostream& out, int most) {
  Listing listing(out, form);
  std::int64_t before = std::numeric_limits<std::int64_t>::max();
  for (int rows = 0; rows < most; ++rows) {
    const auto item = reader.LastItem(service, kHistoryCurrent, before);
    if (!item) return item.AsFailure();
    if (!item.Value()) break;
    listing.Add(*item.Value());
    before = item.Value()->moment.utc - 1;
  }
  listing.End();
  return {};
}

Outcome WriteSongs(HistoryReader& reader, const HistoryFilter& filter, HistoryForm form, std::ostream& out,
                   int most) {
  HistoryFilter current = filter;
  current.slot = kHistoryCurrent;
  current.to = std::numeric_limits<std::int64_t>::max();
  HistoryCursor<HistoryItem> items = ItemsOf(reader, current);
  Songs songs(out, form, filter.to, most);
  while (const HistoryItem* item = items.Peek()) {
    if (songs.Full() || (item->moment.utc >= filter.to && !songs.Waits())) break;
    songs.Add(*item);
    items.Skip();
  }
  if (!items.outcome()) return items.outcome();
  songs.End();
  return {};
}

}  // namespace zeb
