// RegistryHive: the settings hive in the Windows registry, where the playout system's tools and older
// versions keep theirs: texts as REG_SZ, numbers as REG_DWORD, in the view of 32-bit programs. Other kinds of
// text and number are read as well; values of other kinds are passed over.
//
// The registry has no transactions that may be relied on. So a transaction collects its changes in memory,
// over what is stored. When it ends, how to undo them is noted in a key beside (RegistryJournal), then they
// are made, then the note is closed. Who finds a note that counts undoes what was begun: this object at once,
// when a change is refused; after a crash or a kill the next one that reads or writes. Undoing and not
// finishing, since only so can a change that is refused half way leave nothing behind. One changed value
// needs no note.
//
// One lock for all processes (NamedLock) is held through each transaction and each single reading or writing,
// so nobody who uses this class sees a half state, and a note is never that of one still at work. A
// transaction is on the disk when it ends; a single value the system writes there within seconds.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/Result.h"
#include "platform/StoredHive.h"
#include "platform/windows/NamedLock.h"
#include "platform/windows/RegistryChanges.h"
#include "platform/windows/RegistryJournal.h"
#include "platform/windows/RegistryTree.h"

namespace zeb {

// Where in the registry a hive is.
struct RegistryPlace {
  // HKEY_LOCAL_MACHINE. Nothing but what is below its Software\Hexmoor is ever changed.
  static RegistryPlace Machine();

  RegistryTree::Root root = RegistryTree::Root::kMachine;
  std::string top;         // path below the root of the hive's own top; may be empty
  std::string changeable;  // key of the hive below which alone it is changed; empty: everywhere
  std::string journal;     // path below the root of the key for notes
};

class RegistryHive : public StoredHive {
 public:
  static constexpr std::chrono::milliseconds kPatience{5000};

  // Fails with one line that names the key.
  static Result<std::unique_ptr<RegistryHive>> Open(const RegistryPlace& place,
                                                    std::chrono::milliseconds patience = kPatience);
  // Throws SettingsError.
  RegistryHive(const RegistryPlace& place, std::chrono::milliseconds patience);

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
  void SetPatience(std::chrono::milliseconds patience) override { patience_ = patience; }

  // Called before each call that changes the registry; what it throws is as if the registry had refused. For
  // tests.
  void BeforeEachChange(const std::function<void()>& call) {
    tree_.beforeChange = besides_.beforeChange = call;
  }

 private:
  class Held;
  using KnownValues = std::unordered_map<std::string, SettingsData>;  // by lower-cased name

  // The normal path of a key that may be changed.
  std::string Changeable(const std::string& key) const;
  std::optional<SettingsData> Read(const std::string& key, const std::string& name);
  const KnownValues& ValuesKnownOf(const std::string& key);
  void Write(const std::string& key, const std::string& name, const SettingsData& data);
  void UndoWhatWasBrokenOff();
  void Commit();
  void ApplyOrUndo(const RegistryChanges& undoing);

  RegistryPlace place_;
  RegistryTree tree_;
  RegistryTree besides_;  // for the note: the root's
  RegistryJournal journal_;
  NamedLock lock_;
  std::chrono::milliseconds patience_;
  int held_ = 0;  // how often this object holds the lock
  bool inTransaction_ = false;
  RegistryChanges changes_;
  // Within a read transaction a key is read whole when its first value is asked for: who loads a service asks
  // for all of them. By the key as it was given.
  bool reading_ = false;
  std::unordered_map<std::string, KnownValues> known_;
};

}  // namespace zeb
