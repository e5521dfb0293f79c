// SqliteStore: the settings file as an open database: its schema, its prepared statements, and what its
// errors mean. For SqliteHive.
#pragma once

#include <sqlite3.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/Result.h"
#include "platform/SettingsHive.h"

namespace zeb {

enum class Statement {
  kBegin,
  kBeginReading,
  kCommit,
  kRollback,
  kFindKey,
  kAddKey,
  kSubKeys,
  kDeleteKey,
  kDeleteValuesOfKey,
  kDeleteKeysBelow,
  kDeleteValuesBelow,
  kRead,
  kReadAll,
  kWrite,
  kDeleteValue,
  kCount
};

class SqliteStore {
 public:
  // `damaged` tells whether a failure is a damaged file.
  static Result<std::unique_ptr<SqliteStore>> Open(const std::string& path,
                                                   std::chrono::milliseconds patience, bool& damaged);
  ~SqliteStore();
  SqliteStore(const SqliteStore&) = delete;
  SqliteStore& operator=(const SqliteStore&) = delete;

  sqlite3_stmt* Prepared(Statement statement) const {
    return statements_[static_cast<std::size_t>(statement)];
  }
  bool TransactionOpen() const { return sqlite3_get_autocommit(database_) == 0; }
  // What went wrong with the last call, as one line that names the file.
  std::string Problem() const;
  void SetPatience(std::chrono::milliseconds patience);
  const std::string& path() const { return path_; }

 private:
  SqliteStore(std::string path, std::chrono::milliseconds patience)
      : path_(std::move(path)), patience_(patience) {}
  static Outcome Create(const std::string& path, std::chrono::milliseconds patience);
  Outcome Connect();
  Outcome Verify(bool& damaged);
  bool PrepareAll();
  bool Execute(const char* sql) const;
  // The first column of the first row; nothing on failure.
  std::optional<std::string> Ask(const char* sql) const;

  std::string path_;
  std::chrono::milliseconds patience_;
  sqlite3* database_ = nullptr;
  std::array<sqlite3_stmt*, static_cast<std::size_t>(Statement::kCount)> statements_{};
};

// One run of a prepared statement. Parameters are bound in their order; what fails throws SettingsError.
class SqliteQuery {
 public:
  SqliteQuery(const SqliteStore& store, Statement statement)
      : store_(store), statement_(store.Prepared(statement)) {}
  ~SqliteQuery();
  SqliteQuery(const SqliteQuery&) = delete;
  SqliteQuery& operator=(const SqliteQuery&) = delete;

  SqliteQuery& Bind(std::string_view text);
  SqliteQuery& BindData(const SettingsData& data);
  bool Step();  // true while there is another row
  std::string Text(int column) const;
  SettingsData Data(int column) const;

 private:
  SqliteQuery& Checked(int code);

  const SqliteStore& store_;
  sqlite3_stmt* statement_;
  int bound_ = 0;
};

}  // namespace zeb
