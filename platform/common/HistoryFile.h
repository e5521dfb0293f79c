// HistoryFile: history.db as an open database, to be written or only read: its schema, its bounds, and what
// its errors mean. For SqliteHistory and SqliteHistoryReader, which own one each.
//
// A write-ahead log, unlike the settings file: who reads holds nobody up who writes, a batch costs no flush
// of the disk, and a process that is killed leaves a whole file behind. A power cut may cost the last
// seconds.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/HistoryStore.h"
#include "platform/Result.h"
#include "platform/system/SettingsFile.h"

namespace zeb {

class HistoryFile {
 public:
  // Opens the file to write it, and creates it (for its owner only) when it is missing. Null when that fails;
  // `outcome` tells why.
  static std::unique_ptr<HistoryFile> OpenToWrite(const std::string& path, HistoryOutcome& outcome);
  // Changes nothing, creates nothing.
  static Result<std::unique_ptr<HistoryFile>> OpenToRead(const std::string& path);
  ~HistoryFile();
  HistoryFile(const HistoryFile&) = delete;
  HistoryFile& operator=(const HistoryFile&) = delete;

  sqlite3* database() const { return database_; }
  bool Execute(const std::string& sql) const;
  void ExecuteOrThrow(const std::string& sql) const;  // HistoryFileError
  // The first number of the first row; -1 on failure.
  std::int64_t Number(const std::string& sql) const;
  // What went wrong with the last call.
  HistoryOutcome Problem() const;
  // False when the file of that name is another one by now, gone, or emptied.
  bool StillThere() const;
  std::int64_t LogBytes() const;  // of the write-ahead log

 private:
  explicit HistoryFile(std::string path) : path_(std::move(path)) {}
  bool Connect(int flags);
  HistoryOutcome Prepare();  // makes the schema where there is none

  std::string path_;
  sqlite3* database_ = nullptr;
  FoundFile opened_;
};

// A failure of the database in the middle of an operation.
struct HistoryFileError {
  explicit HistoryFileError(const HistoryFile& file)
      : outcome(file.Problem()), full((sqlite3_extended_errcode(file.database()) & 0xFF) == SQLITE_FULL) {}
  HistoryOutcome outcome;
  bool full;  // the file has reached its limit, or the disk is full
};

// One run after the other of a prepared statement. What fails throws HistoryFileError, which the operation
// that was called from outside turns into its outcome.
class HistoryQuery {
 public:
  HistoryQuery(const HistoryFile& file, const std::string& sql);
  ~HistoryQuery() { sqlite3_finalize(statement_); }
  HistoryQuery(const HistoryQuery&) = delete;
  HistoryQuery& operator=(const HistoryQuery&) = delete;

  // In the order of the parameters; the first after a Run or Restart begins anew.
  HistoryQuery& Bind(std::int64_t number);
  HistoryQuery& Text(std::string_view text);
  HistoryQuery& Bytes(std::string_view bytes);
  bool Step();  // true while there is another row
  void Run();   // of a statement without rows
  void Restart();

  std::int64_t Number(int column) const { return sqlite3_column_int64(statement_, column); }
  bool IsNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }
  std::string Text(int column) const;

 private:
  void Check(int code) const;

  const HistoryFile& file_;
  sqlite3_stmt* statement_ = nullptr;
  int bound_ = 0;
};

}  // namespace zeb
