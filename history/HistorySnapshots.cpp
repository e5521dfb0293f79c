#include "history/HistorySnapshots.h"

#include <utility>

#include "history/HistoryRecord.h"

namespace zeb {
namespace {

constexpr std::size_t kMostItems = 10000;  // that are remembered

// Null for a slot that the service did not have.
clsZEBItemInfo* InSlot(ServiceSnapshot& snapshot, int slot) {
  if (slot == kHistoryCurrent) return &snapshot.currentItem;
  if (slot == kHistoryComingSoon) return &snapshot.comingSoonItem;
  std::vector<clsZEBItemInfo>& items = slot > 0 ? snapshot.nextItems : snapshot.previousItems;
  const auto index = static_cast<std::size_t>(slot > 0 ? slot : -slot) - 1;
  return index < items.size() ? &items[index] : nullptr;
}

// Slots know their numbers.
void NumberSlots(std::vector<clsZEBItemInfo>& items) {
  for (std::size_t i = 0; i < items.size(); ++i) items[i].ItemIndexNumber = static_cast<std::int16_t>(i + 1);
}

}  // namespace

Result<SnapshotPtr> HistorySnapshots::Make(const HistoryReader::Update& update, const HistoryMoment& moment) {
  const auto snapshot = std::make_shared<ServiceSnapshot>();
  const Result<std::string> words = reader_.Bytes(update.words);
  if (!words) return words.AsFailure();
  ReadWordsRecord(words.Value(), *snapshot);
  snapshot->moment = moment.Local();
  snapshot->serviceNumber = update.service;
  for (const auto& [slot, number] : update.items) {
    clsZEBItemInfo* place = InSlot(*snapshot, slot);
    if (place == nullptr) continue;
    Result<clsZEBItemInfo> item = ItemAt(number);
    if (!item) return item.AsFailure();
    *place = std::move(item.Value());
  }
  NumberSlots(snapshot->nextItems);
  NumberSlots(snapshot->previousItems);
  return SnapshotPtr(snapshot);
}

Result<clsZEBItemInfo> HistorySnapshots::ItemAt(std::int64_t number) {
  if (const auto known = items_.find(number); known != items_.end()) return known->second;
  const Result<std::string> record = reader_.Bytes(number);
  if (!record) return record.AsFailure();
  if (items_.size() >= kMostItems) items_.clear();
  return items_.emplace(number, ReadItemRecord(record.Value()).value_or(clsZEBItemInfo())).first->second;
}

std::optional<std::string> ExpandAgainst(const ServiceSnapshot& snapshot, std::string_view templateText,
                                         bool page, std::string_view simpleText, ValueEncoding values) {
  UploadFileList files;
  if (page) return ExpandPage(UndoEscapedTags(templateText), snapshot, simpleText, files, values);
  return ExpandTemplate(templateText, snapshot, simpleText, files, values);
}

}  // namespace zeb
