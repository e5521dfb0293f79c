#include "platform/windows/RegistryChanges.h"

#include <cstdint>
#include <cstring>
#include <utility>

#include "text/LetterCase.h"

namespace zeb {
namespace {

std::string Below(const std::string& key, const std::string& name) {
  return key.empty() ? name : key + "\\" + name;
}

std::string Parent(const std::string& key) {
  const std::size_t end = key.rfind('\\');
  return end == std::string::npos ? std::string() : key.substr(0, end);
}

std::string LastPart(const std::string& key) {
  const std::size_t end = key.rfind('\\');
  return end == std::string::npos ? key : key.substr(end + 1);
}

void AppendCount(std::string& to, std::size_t count) {
  const auto number = static_cast<std::uint32_t>(count);
  to.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void AppendText(std::string& to, const std::string& text) {
  AppendCount(to, text.size());
  to += text;
}

// Takes apart what the above put together; past the end it gives nothing and says so.
class Taker {
 public:
  explicit Taker(const std::string& bytes) : rest_(bytes) {}
  std::uint32_t Count() {
    std::uint32_t number = 0;
    if (!Has(sizeof number)) return 0;
    std::memcpy(&number, rest_.data(), sizeof number);
    rest_.remove_prefix(sizeof number);
    return number;
  }
  std::string Text() {
    const std::size_t size = Count();
    if (!Has(size)) return {};
    std::string text(rest_.substr(0, size));
    rest_.remove_prefix(size);
    return text;
  }
  bool Good() const { return good_; }
  bool AtEnd() const { return rest_.empty(); }

 private:
  bool Has(std::size_t bytes) {
    good_ = good_ && rest_.size() >= bytes;
    return good_;
  }
  std::string_view rest_;
  bool good_ = true;
};

}  // namespace

bool RegistryChanges::IsOneCall() const {
  if (keys_.size() != 1) return false;
  const Change& change = keys_.begin()->second;
  return !change.deleted && !change.made && change.values.size() <= 1;
}

RegistryChanges::Change& RegistryChanges::At(const std::string& key) {
  Change& change = keys_[LowerCase(key)];
  if (change.key.empty()) change.key = key;
  return change;
}

const RegistryChanges::Change* RegistryChanges::Find(const std::string& key) const {
  if (keys_.empty()) return nullptr;
  const auto found = keys_.find(LowerCase(key));
  return found == keys_.end() ? nullptr : &found->second;
}

bool RegistryChanges::Hides(const std::string& key) const {
  if (keys_.empty()) return false;
  for (std::string at = LowerCase(key);; at = Parent(at)) {
    const auto found = keys_.find(at);
    if (found != keys_.end() && found->second.deleted) return true;
    if (at.empty()) return false;
  }
}

void RegistryChanges::Create(const RegistryTree& stored, const std::string& key) {
  for (std::string at = key;; at = Parent(at)) {
    const Change* change = Find(at);
    if (change != nullptr && change->made) return;
    const bool isThere = Exists(stored, at);
    At(at).made = true;
    if (isThere || at.empty()) return;
  }
}

void RegistryChanges::Write(const RegistryTree& stored, const std::string& key, RegistryValue value) {
  Create(stored, key);
  auto [at, isNew] = At(key).values.try_emplace(LowerCase(value.name));
  if (!isNew && !at->second.removed) value.name = at->second.value.name;
  at->second = {std::move(value), false};
}

void RegistryChanges::Remove(const std::string& key, const std::string& name) {
  At(key).values[LowerCase(name)] = {{name, 0, {}}, true};
}

void RegistryChanges::Delete(const std::string& key) {
  const std::string path = LowerCase(key);
  const std::string first = path.empty() ? path : path + '\\';
  // The character behind the separator: everything below a key sorts before key + this.
  const auto behind = path.empty() ? keys_.end() : keys_.lower_bound(path + static_cast<char>('\\' + 1));
  keys_.erase(keys_.lower_bound(first), behind);
  Change& change = At(key);
  change = {key, true, key.empty(), {}};
}

std::vector<const RegistryChanges::Change*> RegistryChanges::ChildrenOf(const std::string& key) const {
  std::vector<const Change*> children;
  const std::string path = LowerCase(key);
  const std::string start = path.empty() ? path : path + '\\';
  for (auto at = keys_.lower_bound(start); at != keys_.end() && at->first.starts_with(start); ++at)
    if (!at->first.empty() && at->first.find('\\', start.size()) == std::string::npos)
      children.push_back(&at->second);
  return children;
}

bool RegistryChanges::Exists(const RegistryTree& stored, const std::string& key) const {
  if (const Change* change = Find(key); change != nullptr && change->made) return true;
  return !Hides(key) && stored.Exists(key);
}

std::vector<std::string> RegistryChanges::SubKeys(const RegistryTree& stored, const std::string& key) const {
  std::map<std::string, std::string> names;
  if (!Hides(key))
    for (std::string& name : stored.SubKeys(key)) names[LowerCase(name)] = std::move(name);
  for (const Change* change : ChildrenOf(key)) {
    std::string name = LastPart(change->key);
    if (change->deleted) names.erase(LowerCase(name));
    if (change->made) names.try_emplace(LowerCase(name), name);
  }
  std::vector<std::string> sorted;
  for (auto& [lowered, name] : names) sorted.push_back(std::move(name));
  return sorted;
}

std::vector<RegistryValue> RegistryChanges::Values(const RegistryTree& stored, const std::string& key) const {
  std::map<std::string, RegistryValue> values;
  if (!Hides(key))
    for (RegistryValue& value : stored.Values(key)) values[LowerCase(value.name)] = std::move(value);
  if (const Change* change = Find(key))
    for (const auto& [name, pending] : change->values) {
      if (pending.removed) {
        values.erase(name);
        continue;
      }
      const auto [at, isNew] = values.try_emplace(name, pending.value);
      if (!isNew) at->second = {at->second.name, pending.value.kind, pending.value.data};
    }
  std::vector<RegistryValue> sorted;
  for (auto& [lowered, value] : values) sorted.push_back(std::move(value));
  return sorted;
}

std::optional<RegistryValue> RegistryChanges::Read(const RegistryTree& stored, const std::string& key,
                                                   const std::string& name) const {
  if (const Change* change = Find(key)) {
    const auto found = change->values.find(LowerCase(name));
    if (found != change->values.end())
      return found->second.removed ? std::nullopt : std::optional(found->second.value);
  }
  return Hides(key) ? std::nullopt : stored.Read(key, name);
}

void RegistryChanges::Capture(const RegistryTree& stored, const std::string& key) {
  Change& change = At(key);
  change.made = true;
  for (RegistryValue& value : stored.Values(key)) {
    std::string name = LowerCase(value.name);
    change.values[std::move(name)] = {std::move(value), false};
  }
  for (const std::string& name : stored.SubKeys(key)) Capture(stored, Below(key, name));
}

RegistryChanges RegistryChanges::Undoing(const RegistryTree& stored) const {
  RegistryChanges undoing;
  for (const auto& [path, change] : keys_) {
    if (undoing.Hides(change.key)) continue;  // captured with a key above
    const bool isThere = stored.Exists(change.key);
    if (change.deleted || (change.made && !isThere)) {
      if (!isThere && !change.made && change.values.empty()) continue;
      undoing.Delete(change.key);
      if (isThere) undoing.Capture(stored, change.key);
      continue;
    }
    if (!isThere || change.values.empty()) continue;
    Change& undone = undoing.At(change.key);
    for (const auto& [name, pending] : change.values)
      undone.values[name] = {{pending.value.name, 0, {}}, true};
    for (RegistryValue& value : stored.Values(change.key)) {
      const auto found = undone.values.find(LowerCase(value.name));
      if (found != undone.values.end()) found->second = {std::move(value), false};
    }
  }
  return undoing;
}

void RegistryChanges::ApplyTo(RegistryTree& tree) const {
  for (const auto& [path, change] : keys_) {
    if (change.deleted) tree.Delete(change.key);
    if (change.made) tree.Create(change.key);
    std::vector<RegistryValue> written;
    for (const auto& [name, pending] : change.values) {
      if (pending.removed)
        tree.Remove(change.key, pending.value.name);
      else
        written.push_back(pending.value);
    }
    tree.Write(change.key, written);
  }
}

std::string RegistryChanges::Bytes() const {
  std::string bytes;
  for (const auto& [path, change] : keys_) {
    AppendText(bytes, change.key);
    AppendCount(bytes, (change.deleted ? 1u : 0u) | (change.made ? 2u : 0u));
    AppendCount(bytes, change.values.size());
    for (const auto& [name, pending] : change.values) {
      AppendText(bytes, pending.value.name);
      AppendCount(bytes, pending.removed ? 1 : 0);
      AppendCount(bytes, pending.value.kind);
      AppendText(bytes, pending.value.data);
    }
  }
  return bytes;
}

std::optional<RegistryChanges> RegistryChanges::FromBytes(const std::string& bytes) {
  RegistryChanges changes;
  Taker taker(bytes);
  while (taker.Good() && !taker.AtEnd()) {
    std::string key = taker.Text();
    const std::uint32_t flags = taker.Count();
    Change& change = changes.keys_[LowerCase(key)];
    change = {std::move(key), (flags & 1) != 0, (flags & 2) != 0, {}};
    for (std::uint32_t left = taker.Count(); left > 0 && taker.Good(); --left) {
      std::string name = taker.Text();
      const bool removed = taker.Count() != 0;
      const unsigned long kind = taker.Count();
      change.values[LowerCase(name)] = {{name, kind, taker.Text()}, removed};
    }
  }
  return taker.Good() ? std::optional(std::move(changes)) : std::nullopt;
}

}  // namespace zeb
