// RegistryJournal: how what is being changed in the registry can be undone, kept in a key of its own.
//
// The note counts from the moment its closing value is there until that is removed: each is one call, which
// is done or not, whenever the process ends.
#pragma once

#include <optional>
#include <string>

#include "platform/windows/RegistryChanges.h"
#include "platform/windows/RegistryTree.h"

namespace zeb {

class RegistryJournal {
 public:
  RegistryJournal(RegistryTree& tree, std::string key) : tree_(tree), key_(std::move(key)) {}

  bool Exists() const { return tree_.Exists(key_); }
  void Write(const RegistryChanges& undoing);
  // Nothing when the note does not count. Throws SettingsError for one that cannot be understood.
  std::optional<RegistryChanges> Read() const;
  // From now on the note does not count.
  void Close();
  void Remove();

 private:
  RegistryTree& tree_;
  std::string key_;
};

}  // namespace zeb
