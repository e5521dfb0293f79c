#include "platform/common/HistoryFile.h"

#include <array>
#include <cerrno>
#include <utility>

#include "platform/system/SettingsFile.h"

namespace zeb {
namespace {

constexpr std::int64_t kSchemaVersion = 1;
// How long a file that another program locks is waited for; then what is to be written waits.
constexpr int kPatienceMilliseconds = 1000;

// Texts and records are in `blobs`, each once; the others hold its number, 0 for "". `used` is about when a
// blob was last referred to: it stays for as long as something that refers to it does.
constexpr char kSchema[] =
    "BEGIN IMMEDIATE;"
    "CREATE TABLE blobs(id INTEGER PRIMARY KEY, hash BLOB NOT NULL UNIQUE, used INTEGER NOT NULL,"
    " data BLOB NOT NULL);"
    "CREATE INDEX blobs_by_use ON blobs(used);"
    "CREATE TABLE items(id INTEGER PRIMARY KEY, at INTEGER NOT NULL, zone INTEGER NOT NULL,"
    " service INTEGER NOT NULL, slot INTEGER NOT NULL, name INTEGER NOT NULL, source INTEGER NOT NULL,"
    " record INTEGER NOT NULL);"
    "CREATE INDEX items_by_time ON items(at);"
    "CREATE INDEX items_by_slot ON items(service, slot, at);"
    "CREATE TABLE updates(id INTEGER PRIMARY KEY, at INTEGER NOT NULL, zone INTEGER NOT NULL,"
    " service INTEGER NOT NULL, cause INTEGER NOT NULL, words INTEGER NOT NULL, slots BLOB NOT NULL);"
    "CREATE INDEX updates_by_time ON updates(at);"
    "CREATE INDEX updates_by_service ON updates(service, at);"
    "CREATE TABLE publications(id INTEGER PRIMARY KEY, at INTEGER NOT NULL, zone INTEGER NOT NULL,"
    " service INTEGER NOT NULL, output TEXT NOT NULL, part TEXT NOT NULL, failed INTEGER NOT NULL,"
    " problem INTEGER NOT NULL, shown INTEGER NOT NULL, digest TEXT NOT NULL, bytes INTEGER NOT NULL,"
    " latency INTEGER, template INTEGER NOT NULL, simple INTEGER NOT NULL, encoding INTEGER NOT NULL,"
    " update_id INTEGER NOT NULL, update_at INTEGER NOT NULL, update_zone INTEGER NOT NULL);"
    "CREATE INDEX publications_by_time ON publications(at);"
    "CREATE INDEX publications_by_output ON publications(service, output, part, at);"
    "PRAGMA user_version = 1;"
    "COMMIT;";

HistoryOutcome MayPass(std::string reason) {
  return {HistoryOutcome::Trouble::kMayPass, std::move(reason)};
}

}  // namespace

HistoryFile::~HistoryFile() {
  sqlite3_close_v2(database_);
}

std::unique_ptr<HistoryFile> HistoryFile::OpenToWrite(const std::string& path, HistoryOutcome& outcome) {
  if (!FileExists(path)) {
    // The log of a file that somebody took away must not be played back into the new one.
    for (const char* ending : {"-wal", "-shm", "-journal"}) RemoveFile(path + ending);
    if (Outcome created = CreateSettingsFile(path, "history file"); !created && !FileExists(path)) {
      outcome = MayPass(created.Reason());
      return nullptr;
    }
  }
  if (const auto found = FindFile(path); !found || !found->isRegular) {
    outcome = MayPass("history file '" + path + "' is not a regular file");
    return nullptr;
  }
  RestrictSettingsFile(path);
  std::unique_ptr<HistoryFile> file(new HistoryFile(path));
  outcome = file->Connect(SQLITE_OPEN_READWRITE) ? file->Prepare() : file->Problem();
  return outcome.Ok() ? std::move(file) : nullptr;
}

Result<std::unique_ptr<HistoryFile>> HistoryFile::OpenToRead(const std::string& path) {
  if (!FileExists(path)) return Failure{"there is no history yet: '" + path + "' does not exist"};
  std::unique_ptr<HistoryFile> file(new HistoryFile(path));
  if (!file->Connect(SQLITE_OPEN_READONLY)) return Failure{file->Problem().reason};
  const std::int64_t version = file->Number("PRAGMA user_version");
  if (version < 0) return Failure{file->Problem().reason};
  if (version == 0 && file->Number("SELECT count(*) FROM sqlite_schema") == 0)
    return Failure{"there is no history yet: '" + path + "' is empty"};
  if (version != kSchemaVersion)
    return Failure{"history file '" + path + "' is not one that this version can read (format " +
                   std::to_string(version) + ")"};
  return file;
}

bool HistoryFile::Connect(int flags) {
  if (sqlite3_open_v2(path_.c_str(), &database_, flags, nullptr) != SQLITE_OK) return false;
  sqlite3_extended_result_codes(database_, 1);
  sqlite3_busy_timeout(database_, kPatienceMilliseconds);
  opened_ = FindFile(path_).value_or(FoundFile());
  return Execute("PRAGMA trusted_schema = OFF");
}

HistoryOutcome HistoryFile::Prepare() {
  // Before the first page is written, or it has no effect.
  if (!Execute("PRAGMA auto_vacuum = INCREMENTAL") || !Execute("PRAGMA journal_mode = WAL") ||
      !Execute("PRAGMA synchronous = NORMAL") || !Execute("PRAGMA wal_autocheckpoint = 128") ||
      !Execute("PRAGMA journal_size_limit = 1048576"))
    return Problem();
  const std::int64_t version = Number("PRAGMA user_version");
  if (version < 0) return Problem();
  const std::int64_t tables = Number("SELECT count(*) FROM sqlite_schema");
  if (tables < 0) return Problem();
  if (version == 0 && tables == 0) {
    if (Execute(kSchema)) return {};
    HistoryOutcome problem = Problem();
    Execute("ROLLBACK");
    return problem;
  }
  if (version > kSchemaVersion)
    return MayPass("history file '" + path_ + "' was written by a newer version of this program");
  if (version != kSchemaVersion)
    return MayPass("history file '" + path_ + "' is not a history file of this program");
  if (tables < 4)
    return {HistoryOutcome::Trouble::kDamaged,
            "history file '" + path_ + "' is damaged (tables are missing)"};
  return {};
}

bool HistoryFile::Execute(const std::string& sql) const {
  return sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
}

void HistoryFile::ExecuteOrThrow(const std::string& sql) const {
  if (!Execute(sql)) throw HistoryFileError(*this);
}

std::int64_t HistoryFile::Number(const std::string& sql) const {
  sqlite3_stmt* statement = nullptr;
  std::int64_t number = -1;
  if (sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK &&
      sqlite3_step(statement) == SQLITE_ROW)
    number = sqlite3_column_int64(statement, 0);
  sqlite3_finalize(statement);
  return number;
}

HistoryOutcome HistoryFile::Problem() const {
  const std::string file = "history file '" + path_ + "'";
  if (database_ == nullptr) return MayPass(file + ": out of memory");
  const int code = sqlite3_extended_errcode(database_) & 0xFF;
  std::string reason = sqlite3_errmsg(database_);
  // A missing table or column is damage, too: the statements are our own.
  if (code == SQLITE_CORRUPT || code == SQLITE_NOTADB || code == SQLITE_ERROR)
    return {HistoryOutcome::Trouble::kDamaged, file + " is damaged (" + reason + ")"};
  if (code == SQLITE_BUSY || code == SQLITE_LOCKED) return MayPass(file + " is locked by another program");
  if (code == SQLITE_IOERR || code == SQLITE_CANTOPEN || code == SQLITE_READONLY)
    if (const int number = sqlite3_system_errno(database_); number != 0)
      reason += " (" + SystemReason(number) + ")";
  return MayPass(file + ": " + reason);
}

bool HistoryFile::StillThere() const {
  const auto found = FindFile(path_);
  return found && found->IsSameAs(opened_) && found->bytes > 0;
}

std::int64_t HistoryFile::LogBytes() const {
  const auto found = FindFile(path_ + "-wal");
  return found ? found->bytes : 0;
}

// ---- Statements

HistoryQuery::HistoryQuery(const HistoryFile& file, const std::string& sql) : file_(file) {
  Check(sqlite3_prepare_v2(file.database(), sql.c_str(), -1, &statement_, nullptr));
}

HistoryQuery& HistoryQuery::Bind(std::int64_t number) {
  Check(sqlite3_bind_int64(statement_, ++bound_, number));
  return *this;
}

HistoryQuery& HistoryQuery::Text(std::string_view text) {
  const char* bytes = text.data() != nullptr ? text.data() : "";  // a null pointer would bind NULL
  Check(sqlite3_bind_text64(statement_, ++bound_, bytes, text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
  return *this;
}

HistoryQuery& HistoryQuery::Bytes(std::string_view bytes) {
  const char* data = bytes.data() != nullptr ? bytes.data() : "";
  Check(sqlite3_bind_blob64(statement_, ++bound_, data, bytes.size(), SQLITE_TRANSIENT));
  return *this;
}

bool HistoryQuery::Step() {
  const int code = sqlite3_step(statement_);
  if (code != SQLITE_ROW && code != SQLITE_DONE) throw HistoryFileError(file_);
  return code == SQLITE_ROW;
}

void HistoryQuery::Run() {
  while (Step()) {
  }
  Restart();
}

void HistoryQuery::Restart() {
  sqlite3_reset(statement_);
  sqlite3_clear_bindings(statement_);
  bound_ = 0;
}

std::string HistoryQuery::Text(int column) const {
  const void* bytes = sqlite3_column_blob(statement_, column);
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
  return bytes == nullptr ? std::string() : std::string(static_cast<const char*>(bytes), size);
}

void HistoryQuery::Check(int code) const {
  if (code != SQLITE_OK) throw HistoryFileError(file_);
}

}  // namespace zeb
