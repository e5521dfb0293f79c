#include "history/HistoryQueue.h"

#include <iterator>
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

void AddSlot(HistoryUpdate& update, int slot, const clsZEBItemInfo& item) {
  std::string record = WriteItemRecord(item);
  if (!record.empty()) update.items.push_back({slot, std::move(record)});
}

HistoryUpdate ToRow(const HistoryUpdateEntry& entry) {
  const ServiceSnapshot& snapshot = *entry.snapshot;
  HistoryUpdate update;
  update.id = entry.id;
  update.moment = entry.moment;
  update.service = snapshot.serviceNumber;
  update.cause = static_cast<int>(entry.cause);
  update.words = WriteWordsRecord(snapshot);
  AddSlot(update, kHistoryCurrent, snapshot.currentItem);
  AddSlot(update, kHistoryComingSoon, snapshot.comingSoonItem);
  for (std::size_t i = 0; i < snapshot.nextItems.size(); ++i)
    AddSlot(update, static_cast<int>(i) + 1, snapshot.nextItems[i]);
  for (std::size_t i = 0; i < snapshot.previousItems.size(); ++i)
    AddSlot(update, kHistoryPrevious * (static_cast<int>(i) + 1), snapshot.previousItems[i]);
  return update;
}

}  // namespace

HistoryBatch ToBatch(const std::vector<HistoryEntry>& entries) {
  HistoryBatch batch;
  for (const HistoryEntry& entry : entries) {
    if (const auto* item = std::get_if<HistoryItemEntry>(&entry)) {
      batch.items.push_back(item->row);
      batch.items.back().record = WriteItemRecord(item->item);
    } else if (const auto* update = std::get_if<HistoryUpdateEntry>(&entry)) {
      batch.updates.push_back(ToRow(*update));
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
