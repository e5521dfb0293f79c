// HistoryQueue: what the recorder was told and has not yet written, within bounds. For HistoryRecorder.
//
// Entries hold items and snapshots by reference, so that taking one costs next to nothing; ToBatch, which
// puts everything into bytes, is called on the worker.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <variant>
#include <vector>

#include "core/ServiceSnapshot.h"
#include "core/UpdateRecord.h"
#include "platform/HistoryStore.h"

namespace zeb {

struct HistoryItemEntry {
  HistoryItem row;  // without the record
  clsZEBItemInfo item;
};

struct HistoryUpdateEntry {
  std::int64_t id = 0;
  HistoryMoment moment;
  UpdateCause cause = UpdateCause::kInformation;
  SnapshotPtr snapshot;
};

using HistoryEntry = std::variant<HistoryItemEntry, HistoryUpdateEntry, HistoryPublication>;

HistoryBatch ToBatch(const std::vector<HistoryEntry>& entries);

class HistoryQueue {
 public:
  HistoryQueue(std::size_t mostEntries, std::size_t mostBytes)
      : mostEntries_(mostEntries), mostBytes_(mostBytes) {}

  // True: the oldest had to be given up for it.
  bool Add(HistoryEntry entry);
  // The oldest: at most so many, and none beyond those that take so much memory.
  std::vector<HistoryEntry> Take(std::size_t most, std::size_t mostBytes);
  // What could not be written goes back to where it was. True: some had to be given up.
  bool PutBack(std::vector<HistoryEntry> entries);

  bool Empty() const { return entries_.empty(); }
  std::size_t Size() const { return entries_.size(); }
  // How many were given up, since the last call.
  std::size_t TakeGivenUp();
  void Clear();

 private:
  bool KeepBounds();

  std::size_t mostEntries_, mostBytes_;
  std::deque<HistoryEntry> entries_;
  std::size_t bytes_ = 0;
  std::size_t givenUp_ = 0;
};

}  // namespace zeb
