#include "history/HistoryQueue.h"

#include <iterator>
#include <unordered_map>
#include <utility>

#include "history/HistoryRecord.h"

namespace zeb {
namespace {

// About what an entry alone holds in memory; the items themselves are held by others as well.
std::size_t BytesOf(const HistoryEntry& entry) {
  constexpr std::size_t kUpdate = 4 * 1024, kOther = 512;  // a snapshot has a hundred slots
  if (std::holds_alternative<HistoryUpdateEntry>(entry)) return kUpdate;
  const auto* shown = std::get_if<HistoryPublication>(&entry);
  return shown == nullptr ? kOther
                          : kOther + shown->part.size() + shown->problem.size() + shown->text.size() +
                                shown->templateText.size() + shown->simpleText.size();
}

// Puts items into bytes; one that stands in many slots of many updates only once.
class Records {
 public:
  const std::string& Of(const clsZEBItemInfo& item) {
    const auto [found, isNew] = records_.try_emplace(&item.Fields());
    if (isNew) found->second = WriteItemRecord(item);
    return found->second;
  }

 private:
  std::unordered_map<const ItemFields*, std::string> records_;
};

void AddSlot(HistoryUpdate& update, int slot, const clsZEBItemInfo& item, Records& records) {
  const std::string& record = records.Of(item);
  if (!record.empty()) update.items.push_back({slot, record});
}

HistoryUpdate ToRow(const HistoryUpdateEntry& entry, Records& records) {
  const ServiceSnapshot& snapshot = *entry.snapshot;
  HistoryUpdate update;
  update.id = entry.id;
  update.moment = entry.moment;
  update.service = snapshot.serviceNumber;
  update.cause = static_cast<int>(entry.cause);
  update.words = WriteWordsRecord(snapshot);
  AddSlot(update, kHistoryCurrent, snapshot.currentItem, records);
  AddSlot(update, kHistoryComingSoon, snapshot.comingSoonItem, records);
  for (std::size_t i = 0; i < snapshot.nextItems.size(); ++i)
    AddSlot(update, static_cast<int>(i) + 1, snapshot.nextItems[i], records);
  for (std::size_t i = 0; i < snapshot.previousItems.size(); ++i)
    AddSlot(update, kHistoryPrevious * (static_cast<int>(i) + 1), snapshot.previousItems[i], records);
  return update;
}

}  // namespace

// The entries hold the items meanwhile, so that none takes another's place in memory.
HistoryBatch ToBatch(const std::vector<HistoryEntry>& entries) {
  HistoryBatch batch;
  Records records;
  for (const HistoryEntry& entry : entries) {
    if (const auto* item = std::get_if<HistoryItemEntry>(&entry)) {
      batch.items.push_back(item->row);
      batch.items.back().record = records.Of(item->item);
    } else if (const auto* update = std::get_if<HistoryUpdateEntry>(&entry)) {
      batch.updates.push_back(ToRow(*update, records));
    } else {
      batch.publications.push_back(std::get<HistoryPublication>(entry));
    }
  }
  return batch;
}

bool HistoryQueue::Add(HistoryEntry entry) {
  bytes_ += BytesOf(entry);
  entries_.push_back(std::move(entry));
  return KeepBounds();
}

std::vector<HistoryEntry> HistoryQueue::Take(std::size_t most, std::size_t mostBytes) {
  std::vector<HistoryEntry> taken;
  std::size_t bytes = 0;
  while (!entries_.empty() && taken.size() < most && bytes < mostBytes) {
    bytes += BytesOf(entries_.front());
    bytes_ -= BytesOf(entries_.front());
    taken.push_back(std::move(entries_.front()));
    entries_.pop_front();
  }
  return taken;
}

bool HistoryQueue::PutBack(std::vector<HistoryEntry> entries) {
  for (const HistoryEntry& entry : entries) bytes_ += BytesOf(entry);
  entries_.insert(entries_.begin(), std::make_move_iterator(entries.begin()),
                  std::make_move_iterator(entries.end()));
  return KeepBounds();
}

bool HistoryQueue::KeepBounds() {
  const std::size_t before = givenUp_;
  while (entries_.size() > mostEntries_ || (bytes_ > mostBytes_ && !entries_.empty())) {
    bytes_ -= BytesOf(entries_.front());
    entries_.pop_front();
    ++givenUp_;
  }
  return givenUp_ != before;
}

std::size_t HistoryQueue::TakeGivenUp() {
  return std::exchange(givenUp_, 0);
}

void HistoryQueue::Clear() {
  entries_.clear();
  bytes_ = 0;
  givenUp_ = 0;
}

}  // namespace zeb
