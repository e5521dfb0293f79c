// SqliteHistory: the history in one SQLite file, written by one publisher.
//
// Opens the file when it is first needed and again when it was taken away or something failed, so nothing
// here is final. Its limit is held by the database itself (it refuses to grow), whatever is written.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/HistoryStore.h"

namespace zeb {

class HistoryFile;

class SqliteHistory : public HistoryStore {
 public:
  explicit SqliteHistory(std::string path);
  ~SqliteHistory() override;

  HistoryOutcome Write(const HistoryBatch& batch, const HistoryLimits& limits) override;
  HistoryOutcome CleanUp(const HistoryLimits& limits, std::int64_t nowUtc) override;
  // Of files that were set aside the last one stays.
  Result<std::string> SetAside() override;
  void Close() override;

 private:
  struct Blob {
    std::int64_t id, used;
  };

  HistoryOutcome Open(const HistoryLimits& limits);
  HistoryOutcome Failed(const HistoryOutcome& outcome);  // closes the file
  void ApplyLimit(const HistoryLimits& limits);
  void WriteAll(const HistoryBatch& batch);
  bool MakeRoom(const HistoryLimits& limits, int piece);
  void WriteItems(const HistoryBatch& batch);
  void WriteUpdates(const HistoryBatch& batch);
  void WritePublications(const HistoryBatch& batch);
  // The number of these bytes, which are stored if they are not yet.
  std::int64_t Keep(std::string_view bytes, std::int64_t utc);
  Blob FindOrStore(std::string_view bytes, std::int64_t utc);
  // Deletes the oldest rows: of those before `before`, a bounded number. False: there are none.
  bool GiveUpOldest(std::int64_t before, int rows);
  bool NearlyFull(const HistoryLimits& limits) const;

  // Prepared once for an open file.
  struct BlobQueries;
  BlobQueries& Queries();
  void Remember(std::string_view bytes, Blob blob);
  void ForgetAll();

  struct BytesHash : std::hash<std::string_view> {
    using is_transparent = void;
  };

  std::string path_;
  std::unique_ptr<HistoryFile> file_;
  std::unique_ptr<BlobQueries> queries_;                                     // null: not prepared
  std::unordered_map<std::string, Blob, BytesHash, std::equal_to<>> known_;  // by their bytes; those of late
  std::size_t knownBytes_ = 0;
};

}  // namespace zeb
