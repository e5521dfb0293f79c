// SqliteHive: the settings hive in one SQLite file.
//
// Every transaction is flushed to the disk and survives a crash, a kill and a power cut. Several processes
// may use the file at a time; one that finds it locked waits up to five seconds. A rollback journal, not a
// write-ahead log: when nobody is writing, the one file is the whole store, and copying it is a backup. The
// file is for its owner only (mode 0600), since it holds passwords.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/Result.h"
#include "platform/StoredHive.h"

namespace zeb {

class SqliteStore;
enum class Statement;

class SqliteHive : public StoredHive {
 public:
  // How long a locked file is waited for.
  static constexpr std::chrono::milliseconds kPatience{5000};

  // Opens the file, creating it when it is missing (its folder must exist). Fails with one line that names
  // the file. `damaged`, when given, tells whether the failure is a damaged file, for SetAside.
  static Result<std::unique_ptr<SqliteHive>> Open(const std::string& path, bool* damaged = nullptr,
                                                  std::chrono::milliseconds patience = kPatience);
  // For the publisher, which must not run without its settings: as Open, but a damaged file is set aside. The
  // reason then says where, and what to do. As long as a file that was set aside lies there and no new
  // settings file does, this goes on failing, so that a restart does not begin with an empty store unseen.
  static Result<std::unique_ptr<SqliteHive>> OpenOrSetAside(const std::string& path);
  // Renames the file to `path`.damaged-YYYYMMDD-hhmmss, with its journal; gives the new name.
  static Result<std::string> SetAside(const std::string& path);

  ~SqliteHive() override;

  bool KeyExists(const std::string& key) override;
  std::vector<std::string> SubKeys(const std::string& key) override;
  std::vector<SettingsValue> Values(const std::string& key) override;
  bool HasValue(const std::string& key, const std::string& name) override;
  std::string ReadText(const std::string& key, const std::string& name,
                       const std::string& byDefault) override;
  std::int32_t ReadNumber(const std::string& key, const std::string& name, std::int32_t byDefault) override;
  void WriteText(const std::string& key, const std::string& name, const std::string& text) override;
  void WriteNumber(const std::string& key, const std::string& name, std::int32_t number) override;
  void CreateKey(const std::string& key) override;
  void DeleteKey(const std::string& key) override;
  void DeleteValue(const std::string& key, const std::string& name) override;
  void Transaction(const std::function<void()>& changes) override;
  void ReadTransaction(const std::function<void()>& reads) override;
  void SetPatience(std::chrono::milliseconds patience) override;

 private:
  explicit SqliteHive(std::unique_ptr<SqliteStore> store);

  // Nothing may be stored on its own when SQLite has given the open transaction up (on a full disk).
  void CheckTransaction() const;
  std::optional<SettingsData> Read(const std::string& key, const std::string& name);
  void Write(const std::string& key, const std::string& name, const SettingsData& data);
  bool RunTransaction(Statement begin, const std::function<void()>& work);  // false: as part of another
  // Makes the key and those above it.
  void EnsureKey(const std::string& key);
  void Run(Statement statement);
  void Run(Statement statement, std::string_view first, std::string_view second = {});

  using KnownValues = std::unordered_map<std::string, SettingsData>;  // by lower-cased name
  const KnownValues& ValuesKnownOf(const std::string& key);
  void Forget() { known_.clear(); }

  std::unique_ptr<SqliteStore> store_;
  bool inTransaction_ = false;
  // Within a read transaction a key is read whole when its first value is asked for: who loads a service asks
  // for all of them. By the key as it was given.
  bool reading_ = false;
  std::unordered_map<std::string, KnownValues> known_;
};

}  // namespace zeb
