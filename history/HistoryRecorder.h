// HistoryRecorder: keeps what was on air and what each output showed, while the publisher runs.
//
// Whoever tells it something goes on at once: what is told waits in a bounded queue, and a worker writes it
// down, in batches, within about a second. Nothing that is wrong with the store ever reaches the publisher: a
// store that fails is told of in one journal line and tried again; what does not fit meanwhile is given up,
// the oldest first, and counted in another.
//
// Owned by the window of all services; on the loop's thread only.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "core/ServiceSnapshot.h"
#include "core/SettingFields.h"
#include "core/Shown.h"
#include "core/UpdateRecord.h"
#include "platform/Environment.h"
#include "platform/HistoryStore.h"

namespace zeb {

class SettingsHive;

SettingTable<HistoryLimits> HistorySettingTable();

// "HistoryDays" and "HistoryMegabytes" under the settings root, held within what can be. Nothing: either is
// 0, and no history is kept.
std::optional<HistoryLimits> ReadHistoryLimits(SettingsHive& hive, const std::string& root);

// What an output has put out, or could not.
struct HistoryShown {
  SnapshotPtr snapshot;  // what it shows
  UpdateCause cause = UpdateCause::kInformation;
  OutputType type = OutputType::kFile;
  int number = 0;    // within its type, from 1
  std::string part;  // the destination, of a pair; "" where there is one thing
  std::string text;  // of texts: what was sent
  std::optional<Shown::Page> page;
  Shown::Source source;
  std::optional<Duration> latency;  // from the information's arrival
  std::string problem;              // one line; "": it was published
};

class HistoryRecorder {
 public:
  static constexpr std::size_t kMostWaiting = 8192;                  // of what was told
  static constexpr std::size_t kMostWaitingBytes = 8 * 1024 * 1024;  // in memory, about
  static constexpr Duration kBatchAfter = std::chrono::seconds(1);
  static constexpr std::size_t kBatch = 256, kBatchBytes = 1024 * 1024;
  static constexpr Duration kRetryAfter = std::chrono::seconds(10);
  static constexpr Duration kCleanUpAfter = std::chrono::minutes(1), kCleanUpEvery = std::chrono::hours(1);
  static constexpr Duration kWriteLimit = std::chrono::seconds(30);
  static constexpr Duration kPieceEvery = std::chrono::milliseconds(100);  // of a clean-up
  static constexpr Duration kCloseLimit = std::chrono::seconds(2);
  static constexpr std::size_t kMostTextBytes = 4 * 1024, kMostTemplateBytes = 64 * 1024;

  // The store is touched by the worker only. Without limits nothing is kept.
  HistoryRecorder(Environment& environment, std::shared_ptr<HistoryStore> store,
                  std::optional<HistoryLimits> limits);
  ~HistoryRecorder();
  HistoryRecorder(const HistoryRecorder&) = delete;
  HistoryRecorder& operator=(const HistoryRecorder&) = delete;

  // After the settings were read again.
  void SetLimits(std::optional<HistoryLimits> limits);

  bool Keeps() const;  // a history, at this moment

  // A new item stands in a slot (kHistoryCurrent and so on). `source`: who gave it, in a few words.
  void ItemSet(int service, std::string_view serviceName, int slot, std::string_view source,
               const clsZEBItemInfo& item);
  // An update begins. Gives its number; the same for a snapshot that differs from the last of its service in
  // its moment only. 0 while no history is kept.
  std::int64_t Updating(const SnapshotPtr& snapshot, UpdateCause cause);
  // An output's run has ended, for each thing that it put out. The update need not have been told before.
  // What repeats the last of the same output and part is not kept again.
  void Shown(const HistoryShown& shown);

  // Writes what waits, for kCloseLimit at most when called in a task. What is told afterwards is lost.
  void Close();

  std::size_t Waiting() const;

 private:
  struct State;
  std::shared_ptr<State> state_;  // shared with the task that writes
};

}  // namespace zeb
