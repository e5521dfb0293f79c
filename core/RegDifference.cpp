#include "core/RegDifference.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>

#include "core/SettingsTree.h"
#include "text/LetterCase.h"

namespace zeb {
namespace {

// A key as it was, or will be; by the name without regard to case.
struct Key {
  std::string path;
  bool there = false;
  std::map<std::string, SettingsValue> values;
};
using Keys = std::map<std::string, Key>;

// The keys that the file touches, beside the store: first as they are, then as they will be.
class Comparison {
 public:
  explicit Comparison(SettingsHive& hive) : hive_(hive) {}

  void Take(const RegChange& change) {
    switch (change.kind) {
      case RegChange::kCreateKey:
        Touch(change.key).there = true;
        return;
      case RegChange::kDeleteKey:
        return Delete(change.key);
      case RegChange::kWriteValue: {
        Key& key = Touch(change.key);
        key.there = true;
        SettingsValue& value = key.values[LowerCase(change.value.name)];
        if (value.name.empty()) value.name = change.value.name;
        value.data = change.value.data;
        return;
      }
      case RegChange::kDeleteValue:
        Touch(change.key).values.erase(LowerCase(change.value.name));
        return;
    }
  }

  std::vector<RegDifference> Differences() const {
    std::vector<RegDifference> all;
    for (const auto& [lower, after] : after_) Compare(before_.at(lower), after, all);
    return all;
  }

 private:
  Key& Touch(const std::string& path) {
    const std::string normal = NormalSettingsKey(path);
    const std::string lower = LowerCase(normal);
    if (const auto found = after_.find(lower); found != after_.end()) return found->second;
    Key key{normal, hive_.KeyExists(normal), {}};
    if (key.there)
      for (SettingsValue& value : hive_.Values(normal))
        key.values.emplace(LowerCase(value.name), std::move(value));
    before_.emplace(lower, key);
    return after_.emplace(lower, std::move(key)).first->second;
  }

  void Delete(const std::string& path) {
    const std::string top = NormalSettingsKey(path);
    Touch(top);
    for (const SettingsTreeKey& below : ReadSettingsTree(hive_, top)) Touch(top + below.path);
    const std::string lower = LowerCase(top);
    for (auto& [name, key] : after_)
      if (name == lower || name.starts_with(lower + "\\")) key = {key.path, false, {}};
  }

  static void Compare(const Key& before, const Key& after, std::vector<RegDifference>& all) {
    const std::size_t already = all.size();
    for (const auto& [lower, value] : before.values) {
      const auto kept = after.values.find(lower);
      if (kept == after.values.end())
        all.push_back({before.path, value.name, value.data, {}});
      else if (kept->second.data != value.data)
        all.push_back({before.path, value.name, value.data, kept->second.data});
    }
    for (const auto& [lower, value] : after.values)
      if (!before.values.contains(lower)) all.push_back({after.path, value.name, {}, value.data});
    std::sort(all.begin() + static_cast<std::ptrdiff_t>(already), all.end(),
              [](const RegDifference& a, const RegDifference& b) {
                return LowerCase(*a.name) < LowerCase(*b.name);
              });
    if (all.size() == already && before.there != after.there)
      all.push_back({after.path, {}, {}, {}, before.there});
  }

  SettingsHive& hive_;
  Keys before_, after_;
};

}  // namespace

RegDifference::Kind RegDifference::What() const {
  if (!name) return keyBefore ? Kind::kRemoved : Kind::kAdded;
  if (!before) return Kind::kAdded;
  return after ? Kind::kChanged : Kind::kRemoved;
}

std::vector<RegDifference> CompareRegChanges(SettingsHive& hive, const RegChanges& changes) {
  std::vector<RegDifference> differences;
  hive.ReadTransaction([&] {
    Comparison comparison(hive);
    for (const RegChange& change : changes.changes) comparison.Take(change);
    differences = comparison.Differences();
  });
  return differences;
}

}  // namespace zeb
