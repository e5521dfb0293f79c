#include "platform/simulated/MemoryHive.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "text/LetterCase.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

// The character behind the separator: everything below a key sorts before key + this.
constexpr char kBehindSeparator = '\\' + 1;

std::string MapKey(const std::string& key) {
  return LowerCase(NormalSettingsKey(key));
}

}  // namespace

void MemoryHive::CheckUsable() const {
  if (!failure.empty()) throw SettingsError(failure);
}

const MemoryHive::Key* MemoryHive::Find(const std::string& key) const {
  auto found = keys_.find(MapKey(key));
  return found == keys_.end() ? nullptr : &found->second;
}

const SettingsData* MemoryHive::FindData(const std::string& key, const std::string& name) const {
  CheckUsable();
  const Key* found = Find(key);
  if (found == nullptr) return nullptr;
  auto value = found->values.find(LowerCase(name));
  return value == found->values.end() ? nullptr : &value->second.data;
}

MemoryHive::Key& MemoryHive::Ensure(const std::string& key) {
  const std::string path = NormalSettingsKey(key);
  std::string mapKey;
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = std::min(path.find('\\', start), path.size());
    std::string name = path.substr(start, end - start);
    mapKey += LowerCase(name);
    Key& made = keys_.try_emplace(mapKey, Key{std::move(name), {}}).first->second;
    if (end == path.size()) return made;
    mapKey += '\\';
    start = end + 1;
  }
}

void MemoryHive::Write(const std::string& key, const std::string& name, SettingsData data) {
  CheckUsable();
  const auto* text = std::get_if<std::string>(&data);
  CheckSettingsValue(key, name, text != nullptr ? std::string_view(*text) : std::string_view());
  auto [value, isNew] = Ensure(key).values.try_emplace(LowerCase(name));
  if (isNew) value->second.name = name;
  value->second.data = std::move(data);
}

bool MemoryHive::KeyExists(const std::string& key) {
  CheckUsable();
  return Find(key) != nullptr;
}

std::vector<std::string> MemoryHive::SubKeys(const std::string& key) {
  CheckUsable();
  std::string start = MapKey(key);
  if (!start.empty()) start += '\\';
  std::vector<std::string> names;
  for (auto at = keys_.lower_bound(start); at != keys_.end() && at->first.starts_with(start);) {
    const std::size_t deeper = at->first.find('\\', start.size());
    if (deeper != std::string::npos) {
      at = keys_.lower_bound(at->first.substr(0, deeper) + kBehindSeparator);
      continue;
    }
    if (!at->second.name.empty()) names.push_back(at->second.name);
    ++at;
  }
  return names;
}

std::vector<SettingsValue> MemoryHive::Values(const std::string& key) {
  CheckUsable();
  std::vector<SettingsValue> values;
  if (const Key* found = Find(key))
    for (const auto& [name, value] : found->values) values.push_back(value);
  return values;
}

bool MemoryHive::HasValue(const std::string& key, const std::string& name) {
  return FindData(key, name) != nullptr;
}

std::string MemoryHive::ReadText(const std::string& key, const std::string& name,
                                 const std::string& byDefault) {
  const SettingsData* data = FindData(key, name);
  if (data == nullptr) return byDefault;
  if (const auto* text = std::get_if<std::string>(data)) return *text;
  return PlainNumber(std::int64_t{static_cast<std::int32_t>(std::get<std::uint32_t>(*data))});
}

std::int32_t MemoryHive::ReadNumber(const std::string& key, const std::string& name, std::int32_t byDefault) {
  const SettingsData* data = FindData(key, name);
  if (data == nullptr) return byDefault;
  if (const auto* text = std::get_if<std::string>(data)) return LeadingInteger(*text);
  return static_cast<std::int32_t>(std::get<std::uint32_t>(*data));
}

void MemoryHive::WriteText(const std::string& key, const std::string& name, const std::string& text) {
  Write(key, name, text);
}

void MemoryHive::WriteNumber(const std::string& key, const std::string& name, std::int32_t number) {
  Write(key, name, static_cast<std::uint32_t>(number));
}

void MemoryHive::CreateKey(const std::string& key) {
  CheckUsable();
  CheckSettingsKey(key);
  Ensure(key);
}

void MemoryHive::DeleteKey(const std::string& key) {
  CheckUsable();
  const std::string path = MapKey(key);
  if (path.empty()) return keys_.clear();
  keys_.erase(path);
  keys_.erase(keys_.lower_bound(path + '\\'), keys_.lower_bound(path + kBehindSeparator));
}

void MemoryHive::DeleteValue(const std::string& key, const std::string& name) {
  CheckUsable();
  auto found = keys_.find(MapKey(key));
  if (found != keys_.end()) found->second.values.erase(LowerCase(name));
}

void MemoryHive::Transaction(const std::function<void()>& changes) {
  CheckUsable();
  if (inTransaction_) return changes();
  std::map<std::string, Key> before = keys_;
  inTransaction_ = true;
  try {
    changes();
    CheckUsable();  // a store that fails now cannot commit either
  } catch (...) {
    keys_ = std::move(before);
    inTransaction_ = false;
    throw;
  }
  inTransaction_ = false;
}

}  // namespace zeb
