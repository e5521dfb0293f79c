#include "platform/common/SqliteHistory.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

#include "platform/common/HistoryFile.h"
#include "platform/system/SettingsFile.h"
#include "text/Sha256.h"

namespace zeb {
namespace {

constexpr std::size_t kHashBytes = 16;  // of the 32
// Of blobs whose numbers are remembered; a busy station's items of some hours.
constexpr std::size_t kMostKnownBytes = 4u * 1024 * 1024, kKnownBytesEach = 100;
constexpr std::int64_t kUsedEvery = 300000;  // ms: how exactly it is known when a blob was last referred to
constexpr std::int64_t kMillisecondsPerDay = 86400000;
constexpr int kPieceRows = 500;  // of each table, given up at a time
constexpr int kRoomRows = 100;   // the same, when room is needed at once
constexpr int kPieceBlobs = 2000;
constexpr int kPiecePages = 250;
constexpr int kMostPieces = 50;  // to make room for one batch
constexpr std::int64_t kMegabyte = 1024 * 1024;
constexpr int kFewestMegabytes = 16;
constexpr std::int64_t kMostLogBytes = 64 * kMegabyte;

// What the database may have; the rest is for its log.
std::int64_t DatabaseBytes(const HistoryLimits& limits) {
  return std::max(limits.megabytes, kFewestMegabytes) * kMegabyte / 4 * 3;
}

std::int64_t LogBytesAllowed(const HistoryLimits& limits) {
  return std::min(kMostLogBytes, std::max(limits.megabytes, kFewestMegabytes) * kMegabyte / 4);
}

void AppendNumber(std::string& to, std::uint64_t number) {
  for (; number >= 0x80; number >>= 7) to += static_cast<char>((number & 0x7Fu) | 0x80u);
  to += static_cast<char>(number);
}

}  // namespace

struct SqliteHistory::BlobQueries {
  explicit BlobQueries(const HistoryFile& file)
      : find(file, "SELECT id, used FROM blobs WHERE hash = ?1"),
        insert(file, "INSERT INTO blobs(hash, used, data) VALUES(?1, ?2, ?3)"),
        use(file, "UPDATE blobs SET used = ?1 WHERE id = ?2") {}
  HistoryQuery find, insert, use;
};

SqliteHistory::SqliteHistory(std::string path) : path_(std::move(path)) {}

SqliteHistory::~SqliteHistory() = default;

// ---- The file

HistoryOutcome SqliteHistory::Open(const HistoryLimits& limits) {
  if (file_ && !file_->StillThere()) Close();
  HistoryOutcome outcome;
  if (!file_) file_ = HistoryFile::OpenToWrite(path_, outcome);
  if (!file_) return outcome;
  ApplyLimit(limits);
  if (file_->LogBytes() <= LogBytesAllowed(limits)) return {};
  file_->Execute("PRAGMA wal_checkpoint(TRUNCATE)");
  if (file_->LogBytes() <= LogBytesAllowed(limits)) return {};
  return {HistoryOutcome::Trouble::kMayPass,
          "history file '" + path_ + "' cannot take more: another program has been reading it for long"};
}

HistoryOutcome SqliteHistory::Failed(const HistoryOutcome& outcome) {
  file_->Execute("ROLLBACK");
  Close();
  return outcome;
}

void SqliteHistory::Close() {
  ForgetAll();
  file_.reset();
}

void SqliteHistory::ForgetAll() {
  known_.clear();
  knownBytes_ = 0;
  queries_.reset();
}

void SqliteHistory::ApplyLimit(const HistoryLimits& limits) {
  const std::int64_t page = std::max<std::int64_t>(512, file_->Number("PRAGMA page_size"));
  file_->Execute("PRAGMA max_page_count = " + std::to_string(DatabaseBytes(limits) / page));
}

Result<std::string> SqliteHistory::SetAside() {
  Close();
  for (std::string old = FindSettingsFileSetAside(path_); !old.empty();
       old = FindSettingsFileSetAside(path_)) {
    for (const char* ending : {"-wal", "-shm", "-journal"}) RemoveFile(old + ending);
    if (!RemoveFile(old)) break;
  }
  return SetSettingsFileAside(path_, "history file");
}

// ---- Writing

HistoryOutcome SqliteHistory::Write(const HistoryBatch& batch, const HistoryLimits& limits) {
  if (HistoryOutcome opened = Open(limits); !opened.Ok()) return opened;
  for (int piece = 0;; ++piece) try {
      WriteAll(batch);
      return {};
    } catch (const HistoryFileError& error) {
      if (!error.full || !MakeRoom(limits, piece)) return Failed(error.outcome);
    }
}

void SqliteHistory::WriteAll(const HistoryBatch& batch) {
  file_->ExecuteOrThrow("BEGIN IMMEDIATE");
  WriteItems(batch);
  WriteUpdates(batch);
  WritePublications(batch);
  file_->ExecuteOrThrow("COMMIT");
}

// False when that is of no use: it is the disk that is full.
bool SqliteHistory::MakeRoom(const HistoryLimits& limits, int piece) {
  file_->Execute("ROLLBACK");
  ForgetAll();
  if (piece == kMostPieces || !NearlyFull(limits)) return false;
  try {
    return GiveUpOldest(std::numeric_limits<std::int64_t>::max(), kRoomRows);
  } catch (const HistoryFileError&) {
    return false;
  }
}

void SqliteHistory::WriteItems(const HistoryBatch& batch) {
  if (batch.items.empty()) return;
  HistoryQuery insert(*file_,
                      "INSERT INTO items(at, zone, service, slot, name, source, record) "
                      "VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7)");
  for (const HistoryItem& item : batch.items) {
    const std::int64_t at = item.moment.utc;
    insert.Bind(at).Bind(item.moment.offset.count()).Bind(item.service).Bind(item.slot);
    insert.Bind(Keep(item.serviceName, at)).Bind(Keep(item.source, at)).Bind(Keep(item.record, at)).Run();
  }
}

void SqliteHistory::WriteUpdates(const HistoryBatch& batch) {
  if (batch.updates.empty()) return;
  HistoryQuery insert(*file_,
                      "INSERT OR REPLACE INTO updates(id, at, zone, service, cause, words, slots) "
                      "VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7)");
  for (const HistoryUpdate& update : batch.updates) {
    const std::int64_t at = update.moment.utc;
    // Previous slots are negative: signs go into the last bit.
    std::string slots;
    for (const HistoryUpdate::Slot& slot : update.items) {
      AppendNumber(slots, static_cast<std::uint64_t>(slot.slot < 0 ? -2 * slot.slot - 1 : 2 * slot.slot));
      AppendNumber(slots, static_cast<std::uint64_t>(Keep(slot.record, at)));
    }
    insert.Bind(update.id).Bind(at).Bind(update.moment.offset.count()).Bind(update.service);
    insert.Bind(update.cause).Bind(Keep(update.words, at)).Bytes(slots).Run();
  }
}

void SqliteHistory::WritePublications(const HistoryBatch& batch) {
  if (batch.publications.empty()) return;
  HistoryQuery insert(
      *file_,
      "INSERT INTO publications(at, zone, service, output, part, failed, problem, shown, "
      "digest, bytes, template, simple, encoding, update_id, update_at, update_zone, latency) "
      "VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16, ?17)");
  for (const HistoryPublication& shown : batch.publications) {
    const std::int64_t at = shown.moment.utc;
    insert.Bind(at).Bind(shown.moment.offset.count()).Bind(shown.service);
    insert.Text(shown.output).Text(shown.part).Bind(shown.problem.empty() ? 0 : 1);
    insert.Bind(Keep(shown.problem, at)).Bind(Keep(shown.text, at)).Text(shown.digest);
    insert.Bind(static_cast<std::int64_t>(shown.bytes));
    insert.Bind(Keep(shown.templateText, at)).Bind(Keep(shown.simpleText, at)).Bind(shown.encoding);
    insert.Bind(shown.update).Bind(shown.updateMoment.utc).Bind(shown.updateMoment.offset.count());
    if (shown.latency) insert.Bind(shown.latency->count());
    insert.Run();
  }
}

std::int64_t SqliteHistory::Keep(std::string_view bytes, std::int64_t utc) {
  if (bytes.empty()) return 0;
  const auto known = known_.find(bytes);
  Blob blob = known != known_.end() ? known->second : FindOrStore(bytes, utc);
  const bool used = utc - blob.used > kUsedEvery;
  if (used) {
    blob.used = utc;
    Queries().use.Bind(utc).Bind(blob.id).Run();
  }
  if (known == known_.end())
    Remember(bytes, blob);
  else if (used)
    known->second = blob;
  return blob.id;
}

void SqliteHistory::Remember(std::string_view bytes, Blob blob) {
  const std::size_t room = bytes.size() + kKnownBytesEach;
  if (knownBytes_ + room > kMostKnownBytes) {
    known_.clear();
    knownBytes_ = 0;
  }
  knownBytes_ += room;
  known_.emplace(bytes, blob);
}

SqliteHistory::BlobQueries& SqliteHistory::Queries() {
  if (!queries_) queries_ = std::make_unique<BlobQueries>(*file_);
  return *queries_;
}

SqliteHistory::Blob SqliteHistory::FindOrStore(std::string_view bytes, std::int64_t utc) {
  const std::string hash = Sha256(bytes).substr(0, kHashBytes);
  HistoryQuery& find = Queries().find;
  find.Bytes(hash);
  const std::optional<Blob> found =
      find.Step() ? std::optional<Blob>({find.Number(0), find.Number(1)}) : std::nullopt;
  find.Restart();
  if (found) return *found;
  Queries().insert.Bytes(hash).Bind(utc).Bytes(bytes).Run();
  return {sqlite3_last_insert_rowid(file_->database()), utc};
}

// ---- Giving up what is old

bool SqliteHistory::NearlyFull(const HistoryLimits& limits) const {
  const std::int64_t page = file_->Number("PRAGMA page_size");
  const std::int64_t used = file_->Number("PRAGMA page_count") - file_->Number("PRAGMA freelist_count");
  return used * page > DatabaseBytes(limits) / 10 * 9;
}

// The first of a piece, of all tables, and where it ends.
bool SqliteHistory::GiveUpOldest(std::int64_t before, int mostRows) {
  constexpr const char* kTables[] = {"items", "updates", "publications"};
  std::optional<std::int64_t> end;
  bool more = false;
  for (const char* table : kTables) {
    const std::string name = table;
    // The moment of the row behind the piece; of the last row where there are fewer.
    const std::int64_t rows =
        file_->Number("SELECT count(*) FROM (SELECT 1 FROM " + name + " WHERE at < " +
                      std::to_string(before) + " ORDER BY at LIMIT " + std::to_string(mostRows) + ")");
    if (rows < 0) throw HistoryFileError(*file_);
    if (rows == 0) continue;
    const std::int64_t last =
        file_->Number("SELECT at FROM " + name + " ORDER BY at LIMIT 1 OFFSET " + std::to_string(rows - 1));
    end = std::min(end.value_or(last), last);
    more = true;
  }
  file_->ExecuteOrThrow("BEGIN IMMEDIATE");
  const std::int64_t blobsBefore = end ? *end - kUsedEvery : before - kUsedEvery;
  if (end)
    for (const char* table : kTables) {
      // Many may share one moment; a piece stays a piece.
      HistoryQuery rows(*file_, "DELETE FROM " + std::string(table) + " WHERE id IN (SELECT id FROM " +
                                    table + " WHERE at <= ?1 ORDER BY at LIMIT ?2)");
      rows.Bind(*end).Bind(mostRows).Run();
    }
  HistoryQuery blobs(*file_, "DELETE FROM blobs WHERE id IN (SELECT id FROM blobs WHERE used < ?1 LIMIT ?2)");
  blobs.Bind(blobsBefore).Bind(kPieceBlobs).Run();
  if (sqlite3_changes(file_->database()) > 0) more = true;
  ForgetAll();
  file_->ExecuteOrThrow("COMMIT");
  return more;
}

HistoryOutcome SqliteHistory::CleanUp(const HistoryLimits& limits, std::int64_t nowUtc) {
  if (HistoryOutcome opened = Open(limits); !opened.Ok()) return opened;
  try {
    HistoryOutcome outcome;
    outcome.more = GiveUpOldest(nowUtc - limits.days * kMillisecondsPerDay, kPieceRows);
    if (NearlyFull(limits)) outcome.more = GiveUpOldest(std::numeric_limits<std::int64_t>::max(), kPieceRows);
    const std::int64_t pages = file_->Number("PRAGMA page_count");
    file_->ExecuteOrThrow("PRAGMA incremental_vacuum(" + std::to_string(kPiecePages) + ")");
    if (file_->Number("PRAGMA page_count") < pages) outcome.more = true;
    if (!outcome.more) file_->Execute("PRAGMA wal_checkpoint(TRUNCATE)");
    return outcome;
  } catch (const HistoryFileError& error) {
    return Failed(error.outcome);
  }
}

}  // namespace zeb
