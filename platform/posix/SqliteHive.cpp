#include "platform/posix/SqliteHive.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "platform/posix/SettingsFile.h"
#include "platform/posix/SqliteStore.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

// Of a service and its outputs, and those for all services.
constexpr std::size_t kMostKeysKnown = 32;

std::string StoredPath(const std::string& key) {
  return LowerCase(NormalSettingsKey(key));
}

}  // namespace

SqliteHive::SqliteHive(std::unique_ptr<SqliteStore> store) : store_(std::move(store)) {}
SqliteHive::~SqliteHive() = default;

Result<std::unique_ptr<SqliteHive>> SqliteHive::Open(const std::string& path, bool* damaged,
                                                     std::chrono::milliseconds patience) {
  bool isDamaged = false;
  Result<std::unique_ptr<SqliteStore>> store = SqliteStore::Open(path, patience, isDamaged);
  if (damaged != nullptr) *damaged = isDamaged;
  if (!store) return store.AsFailure();
  return std::unique_ptr<SqliteHive>(new SqliteHive(std::move(store.Value())));
}

Result<std::unique_ptr<SqliteHive>> SqliteHive::OpenOrSetAside(const std::string& path) {
  bool damaged = false;
  Result<std::unique_ptr<SqliteHive>> hive = Open(path, &damaged);
  const std::string remedy =
      "restore a backup of it, or import a .reg file with 'zebctl settings import FILE.reg'";
  if (damaged) {
    Result<std::string> aside = SetAside(path);
    if (!aside) return Failure{hive.Reason() + "; " + aside.Reason()};
    return Failure{hive.Reason() + "; it is kept as '" + aside.Value() + "': " + remedy};
  }
  if (!hive || !hive.Value()->SubKeys("").empty()) return hive;
  const std::string aside = FindSettingsFileSetAside(path);
  if (aside.empty()) return hive;
  return Failure{"settings file '" + path + "' is empty, and a damaged one is kept as '" + aside +
                 "': " + remedy + ", or move that file elsewhere to begin anew"};
}

Result<std::string> SqliteHive::SetAside(const std::string& path) {
  return SetSettingsFileAside(path);
}

void SqliteHive::CheckTransaction() const {
  if (inTransaction_ && !store_->TransactionOpen())
    throw SettingsError("settings file '" + store_->path() +
                        "': the changes could not be written and are undone");
}

void SqliteHive::Run(Statement statement) {
  SqliteQuery(*store_, statement).Step();
}

void SqliteHive::Run(Statement statement, std::string_view first, std::string_view second) {
  SqliteQuery query(*store_, statement);
  query.Bind(first);
  if (second.data() != nullptr) query.Bind(second);
  query.Step();
}

bool SqliteHive::KeyExists(const std::string& key) {
  CheckTransaction();
  return SqliteQuery(*store_, Statement::kFindKey).Bind(StoredPath(key)).Step();
}

std::vector<std::string> SqliteHive::SubKeys(const std::string& key) {
  CheckTransaction();
  SqliteQuery query(*store_, Statement::kSubKeys);
  query.Bind(StoredPath(key));
  std::vector<std::string> names;
  while (query.Step()) names.push_back(query.Text(0));
  return names;
}

std::vector<SettingsValue> SqliteHive::Values(const std::string& key) {
  CheckTransaction();
  SqliteQuery query(*store_, Statement::kReadAll);
  query.Bind(StoredPath(key));
  std::vector<SettingsValue> values;
  while (query.Step()) values.push_back({query.Text(0), query.Data(1)});
  return values;
}

const SqliteHive::KnownValues& SqliteHive::ValuesKnownOf(const std::string& key) {
  const auto found = known_.find(key);
  if (found != known_.end()) return found->second;
  if (known_.size() >= kMostKeysKnown) Forget();
  KnownValues values;
  for (SettingsValue& value : Values(key)) values[LowerCase(value.name)] = std::move(value.data);
  return known_[key] = std::move(values);
}

std::optional<SettingsData> SqliteHive::Read(const std::string& key, const std::string& name) {
  CheckTransaction();
  if (reading_) {
    const KnownValues& values = ValuesKnownOf(key);
    const auto found = values.find(LowerCase(name));
    return found == values.end() ? std::nullopt : std::optional(found->second);
  }
  SqliteQuery query(*store_, Statement::kRead);
  if (!query.Bind(StoredPath(key)).Bind(LowerCase(name)).Step()) return std::nullopt;
  return query.Data(0);
}

bool SqliteHive::HasValue(const std::string& key, const std::string& name) {
  return Read(key, name).has_value();
}

std::string SqliteHive::ReadText(const std::string& key, const std::string& name,
                                 const std::string& byDefault) {
  std::optional<SettingsData> data = Read(key, name);
  if (!data) return byDefault;
  if (auto* text = std::get_if<std::string>(&*data)) return std::move(*text);
  return PlainNumber(std::int64_t{static_cast<std::int32_t>(std::get<std::uint32_t>(*data))});
}

std::int32_t SqliteHive::ReadNumber(const std::string& key, const std::string& name, std::int32_t byDefault) {
  const std::optional<SettingsData> data = Read(key, name);
  if (!data) return byDefault;
  if (const auto* text = std::get_if<std::string>(&*data)) return LeadingInteger(*text);
  return static_cast<std::int32_t>(std::get<std::uint32_t>(*data));
}

void SqliteHive::WriteText(const std::string& key, const std::string& name, const std::string& text) {
  CheckSettingsValue(key, name, text);
  Write(key, name, text);
}

void SqliteHive::WriteNumber(const std::string& key, const std::string& name, std::int32_t number) {
  CheckSettingsValue(key, name, {});
  Write(key, name, static_cast<std::uint32_t>(number));
}

void SqliteHive::Write(const std::string& key, const std::string& name, const SettingsData& data) {
  Forget();
  Transaction([&] {
    EnsureKey(key);
    SqliteQuery query(*store_, Statement::kWrite);
    query.Bind(StoredPath(key)).Bind(LowerCase(name)).Bind(name).BindData(data).Step();
  });
}

void SqliteHive::CreateKey(const std::string& key) {
  CheckSettingsKey(key);
  Transaction([&] { EnsureKey(key); });
}

void SqliteHive::EnsureKey(const std::string& key) {
  if (KeyExists(key)) return;
  const std::string path = NormalSettingsKey(key);
  std::string parent;
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = std::min(path.find('\\', start), path.size());
    const std::string name = path.substr(start, end - start);
    const std::string stored = start == 0 ? LowerCase(name) : parent + "\\" + LowerCase(name);
    // The nameless top is a key of its own, but nobody's subkey.
    SqliteQuery query(*store_, Statement::kAddKey);
    query.Bind(stored).Bind(path.empty() ? std::string_view("\\") : parent).Bind(name).Step();
    if (end == path.size()) return;
    parent = stored;
    start = end + 1;
  }
}

void SqliteHive::DeleteKey(const std::string& key) {
  Forget();
  const std::string path = StoredPath(key);
  // Above every path: UTF-8 has no byte 0xFF.
  const std::string first = path.empty() ? "" : path + '\\';
  const std::string behind = path.empty() ? "\xFF" : path + static_cast<char>('\\' + 1);
  Transaction([&] {
    Run(Statement::kDeleteKey, path);
    Run(Statement::kDeleteValuesOfKey, path);
    Run(Statement::kDeleteKeysBelow, first, behind);
    Run(Statement::kDeleteValuesBelow, first, behind);
  });
}

void SqliteHive::DeleteValue(const std::string& key, const std::string& name) {
  Forget();
  Transaction([&] { Run(Statement::kDeleteValue, StoredPath(key), LowerCase(name)); });
}

void SqliteHive::Transaction(const std::function<void()>& changes) {
  if (RunTransaction(Statement::kBegin, changes) && onStored) onStored();
}

void SqliteHive::ReadTransaction(const std::function<void()>& reads) {
  if (reading_) return reads();
  struct Reading {
    explicit Reading(SqliteHive& reader) : hive(reader) { hive.reading_ = true; }
    ~Reading() {
      hive.reading_ = false;
      hive.Forget();
    }
    SqliteHive& hive;
  };
  RunTransaction(Statement::kBeginReading, [&] {
    // The first read takes the state that is read from, or finds the file locked.
    KeyExists("Software");
    const Reading reading(*this);
    reads();
  });
}

void SqliteHive::SetPatience(std::chrono::milliseconds patience) {
  store_->SetPatience(patience);
}

bool SqliteHive::RunTransaction(Statement begin, const std::function<void()>& work) {
  CheckTransaction();
  if (inTransaction_) {
    work();
    return false;
  }
  Run(begin);
  inTransaction_ = true;
  try {
    work();
    CheckTransaction();
    Run(Statement::kCommit);
    inTransaction_ = false;
    return true;
  } catch (...) {
    inTransaction_ = false;
    if (store_->TransactionOpen()) sqlite3_step(store_->Prepared(Statement::kRollback));
    sqlite3_reset(store_->Prepared(Statement::kRollback));
    throw;
  }
}

}  // namespace zeb
