#include "platform/posix/SqliteStore.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>

#include "platform/posix/SettingsFile.h"
#include "text/Encodings.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

constexpr char kSchemaVersion[] = "1";

// Paths and names are kept twice: lower-cased for comparing, since SQLite knows the case of ASCII only, and
// as first written for showing (of a path, its last part).
constexpr char kSchema[] =
    "BEGIN;"
    "CREATE TABLE keys(path TEXT PRIMARY KEY, parent TEXT, shown TEXT NOT NULL) WITHOUT ROWID;"
    "CREATE INDEX keys_by_parent ON keys(parent, path);"
    "CREATE TABLE settings(path TEXT, name TEXT, shown TEXT NOT NULL, data, PRIMARY KEY(path, name))"
    " WITHOUT ROWID;"
    "PRAGMA user_version = 1;"
    "COMMIT;";

// In the order of Statement. Everything below a key lies between its path + "\" and its path + "]", the
// character that follows.
constexpr std::array<const char*, static_cast<std::size_t>(Statement::kCount)> kStatements = {
    // A writing transaction from the start: one that began by reading could not wait for another writer.
    "BEGIN IMMEDIATE",
    "BEGIN",
    "COMMIT",
    "ROLLBACK",
    "SELECT 1 FROM keys WHERE path = ?1",
    "INSERT OR IGNORE INTO keys(path, parent, shown) VALUES(?1, ?2, ?3)",
    "SELECT shown FROM keys WHERE parent = ?1 ORDER BY path",
    "DELETE FROM keys WHERE path = ?1",
    "DELETE FROM settings WHERE path = ?1",
    "DELETE FROM keys WHERE path >= ?1 AND path < ?2",
    "DELETE FROM settings WHERE path >= ?1 AND path < ?2",
    "SELECT data FROM settings WHERE path = ?1 AND name = ?2",
    "SELECT shown, data FROM settings WHERE path = ?1 ORDER BY name",
    "INSERT INTO settings(path, name, shown, data) VALUES(?1, ?2, ?3, ?4) "
    "ON CONFLICT(path, name) DO UPDATE SET data = excluded.data",
    "DELETE FROM settings WHERE path = ?1 AND name = ?2",
};

bool MeansDamage(int code) {
  return (code & 0xFF) == SQLITE_CORRUPT || (code & 0xFF) == SQLITE_NOTADB;
}

bool IsEmptyFile(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && info.st_size == 0;
}

}  // namespace

SqliteStore::~SqliteStore() {
  for (sqlite3_stmt* statement : statements_) sqlite3_finalize(statement);
  sqlite3_close(database_);
}

Result<std::unique_ptr<SqliteStore>> SqliteStore::Open(const std::string& path,
                                                       std::chrono::milliseconds patience, bool& damaged) {
  damaged = false;
  if (Outcome usable = CheckSettingsFile(path); !usable) return usable.AsFailure();
  if (!FileExists(path)) {
    if (Outcome created = Create(path, patience); !created) return created.AsFailure();
  } else if (IsEmptyFile(path)) {
    // Never so by this program, which gives a new file its name when it is complete.
    damaged = true;
    return Failure{"settings file '" + path + "' is damaged (it is empty)"};
  }
  RestrictSettingsFile(path);

  std::unique_ptr<SqliteStore> store(new SqliteStore(path, patience));
  if (Outcome connected = store->Connect(); !connected) {
    damaged = MeansDamage(sqlite3_errcode(store->database_));
    return connected.AsFailure();
  }
  if (Outcome verified = store->Verify(damaged); !verified) return verified.AsFailure();
  return store;
}

Outcome SqliteStore::Create(const std::string& path, std::chrono::milliseconds patience) {
  const std::string draft = path + ".new-" + std::to_string(::getpid());
  ::unlink(draft.c_str());  // of an earlier process with this number
  Outcome outcome = CreateSettingsFile(draft);
  if (!outcome) return outcome;
  {
    SqliteStore store(draft, patience);
    outcome = store.Connect();
    if (outcome && !store.Execute(kSchema)) outcome = Failure{store.Problem()};
  }
  if (outcome) outcome = PlaceSettingsFile(draft, path);
  if (!outcome) ::unlink(draft.c_str());
  return outcome;
}

Outcome SqliteStore::Connect() {
  if (sqlite3_open_v2(path_.c_str(), &database_, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK)
    return Failure{Problem()};
  sqlite3_extended_result_codes(database_, 1);
  SetPatience(patience_);
  if (!Ask("PRAGMA journal_mode = DELETE") || !Execute("PRAGMA synchronous = FULL") ||
      !Execute("PRAGMA trusted_schema = OFF"))
    return Failure{Problem()};
  return {};
}

void SqliteStore::SetPatience(std::chrono::milliseconds patience) {
  patience_ = patience;
  sqlite3_busy_timeout(database_, static_cast<int>(patience_.count()));
}

Outcome SqliteStore::Verify(bool& damaged) {
  const std::optional<std::string> version = Ask("PRAGMA user_version");
  const std::optional<std::string> check = version ? Ask("PRAGMA quick_check(1)") : std::nullopt;
  if (!check) {
    damaged = MeansDamage(sqlite3_errcode(database_));
    return Failure{Problem()};
  }
  const std::string file = "settings file '" + path_ + "'";
  if (*check != "ok") {
    damaged = true;
    return Failure{file + " is damaged (" + check->substr(0, check->find('\n')) + ")"};
  }
  if (version->size() > 1 || *version > kSchemaVersion)
    return Failure{file + " was written by a newer version of this program (format " + *version + ")"};
  if (*version != kSchemaVersion) return Failure{file + " is not a settings file of this program"};
  if (!PrepareAll()) {
    const int code = sqlite3_errcode(database_) & 0xFF;
    damaged = code == SQLITE_ERROR || MeansDamage(code);  // a table is missing
    return Failure{Problem()};
  }
  return {};
}

bool SqliteStore::PrepareAll() {
  for (std::size_t i = 0; i < statements_.size(); ++i)
    if (sqlite3_prepare_v3(database_, kStatements[i], -1, SQLITE_PREPARE_PERSISTENT, &statements_[i],
                           nullptr) != SQLITE_OK)
      return false;
  return true;
}

std::string SqliteStore::Problem() const {
  const std::string file = "settings file '" + path_ + "'";
  if (database_ == nullptr) return file + ": out of memory";
  const int code = sqlite3_errcode(database_) & 0xFF;
  if (code == SQLITE_BUSY || code == SQLITE_LOCKED) return file + " is locked by another program";
  std::string reason = sqlite3_errmsg(database_);
  if (MeansDamage(code)) return file + " is damaged (" + reason + ")";
  if (code == SQLITE_IOERR || code == SQLITE_CANTOPEN)
    if (const int number = sqlite3_system_errno(database_); number != 0)
      reason += " (" + SystemReason(number) + ")";
  return file + ": " + reason;
}

bool SqliteStore::Execute(const char* sql) const {
  return sqlite3_exec(database_, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

std::optional<std::string> SqliteStore::Ask(const char* sql) const {
  sqlite3_stmt* statement = nullptr;
  std::optional<std::string> answer;
  if (sqlite3_prepare_v2(database_, sql, -1, &statement, nullptr) == SQLITE_OK &&
      sqlite3_step(statement) == SQLITE_ROW) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
    answer = text != nullptr ? text : "";
  }
  if (sqlite3_finalize(statement) != SQLITE_OK) answer.reset();
  return answer;
}

SqliteQuery::~SqliteQuery() {
  sqlite3_reset(statement_);
  sqlite3_clear_bindings(statement_);
}

SqliteQuery& SqliteQuery::Bind(std::string_view text) {
  const char* bytes = text.data() != nullptr ? text.data() : "";  // a null pointer would bind NULL
  return Checked(
      sqlite3_bind_text64(statement_, ++bound_, bytes, text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
}

SqliteQuery& SqliteQuery::BindData(const SettingsData& data) {
  if (const auto* text = std::get_if<std::string>(&data)) return Bind(std::string_view(*text));
  return Checked(sqlite3_bind_int64(statement_, ++bound_, std::int64_t{std::get<std::uint32_t>(data)}));
}

bool SqliteQuery::Step() {
  const int code = sqlite3_step(statement_);
  if (code != SQLITE_ROW && code != SQLITE_DONE) throw SettingsError(store_.Problem());
  return code == SQLITE_ROW;
}

std::string SqliteQuery::Text(int column) const {
  const void* bytes = sqlite3_column_blob(statement_, column);
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
  if (bytes == nullptr) return {};
  std::string text(static_cast<const char*>(bytes), size);
  return IsValidUtf8(text) ? text : DecodeLenient(text);
}

// Data of types that this program does not write (NULL, fractions, bytes) reads as text.
SettingsData SqliteQuery::Data(int column) const {
  if (sqlite3_column_type(statement_, column) == SQLITE_INTEGER)
    return static_cast<std::uint32_t>(sqlite3_column_int64(statement_, column));
  return Text(column);
}

SqliteQuery& SqliteQuery::Checked(int code) {
  if (code != SQLITE_OK) throw SettingsError(store_.Problem());
  return *this;
}

}  // namespace zeb
