// MemoryHive: a settings hive in memory, for tests and for zebctl expand.
#pragma once

#include <map>
#include <string>

#include "platform/SettingsHive.h"

namespace zeb {

class MemoryHive : public SettingsHive {
 public:
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

  // While set, every operation throws SettingsError with this reason.
  std::string failure;

 private:
  struct Key {
    std::string name;                             // the last part of the path, as first written
    std::map<std::string, SettingsValue> values;  // by lower-cased name
  };

  void CheckUsable() const;
  const Key* Find(const std::string& key) const;
  const SettingsData* FindData(const std::string& key, const std::string& name) const;
  // Makes the key and those above it.
  Key& Ensure(const std::string& key);
  void Write(const std::string& key, const std::string& name, SettingsData data);

  std::map<std::string, Key> keys_;  // by lower-cased path
  bool inTransaction_ = false;
};

}  // namespace zeb
