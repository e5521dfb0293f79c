// RegistryChanges: what is to become of keys and values, over what is stored. Applying the same changes
// again, also after a part of them, gives the same.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/windows/RegistryTree.h"

namespace zeb {

class RegistryChanges {
 public:
  bool Empty() const { return keys_.empty(); }
  // Whether one call of the registry does it all.
  bool IsOneCall() const;

  // Keys are normal paths.
  void Write(const RegistryTree& stored, const std::string& key, RegistryValue value);  // with the key
  void Remove(const std::string& key, const std::string& name);
  void Create(const RegistryTree& stored, const std::string& key);  // with those above it
  void Delete(const std::string& key);

  // What is to be seen, with these changes, of what is stored.
  bool Exists(const RegistryTree& stored, const std::string& key) const;
  std::vector<std::string> SubKeys(const RegistryTree& stored, const std::string& key) const;
  std::vector<RegistryValue> Values(const RegistryTree& stored, const std::string& key) const;
  std::optional<RegistryValue> Read(const RegistryTree& stored, const std::string& key,
                                    const std::string& name) const;

  // The changes that bring back what is stored now once these have been applied, or a part of them.
  RegistryChanges Undoing(const RegistryTree& stored) const;
  void ApplyTo(RegistryTree& tree) const;

  std::string Bytes() const;
  static std::optional<RegistryChanges> FromBytes(const std::string& bytes);

 private:
  struct Pending {
    RegistryValue value;
    bool removed = false;
  };
  struct Change {
    std::string key;                        // as it was given first
    bool deleted = false;                   // what was stored here and below goes
    bool made = false;                      // and then the key is there
    std::map<std::string, Pending> values;  // by lower-cased name
  };

  Change& At(const std::string& key);
  const Change* Find(const std::string& key) const;
  std::vector<const Change*> ChildrenOf(const std::string& key) const;
  // Whether what was stored at the key, or above it, goes.
  bool Hides(const std::string& key) const;
  void Capture(const RegistryTree& stored, const std::string& key);

  std::map<std::string, Change> keys_;  // by lower-cased path: a key comes before those below it
};

}  // namespace zeb
