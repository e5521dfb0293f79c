// RegDifference: what would be different in the settings once a `.reg` file had been taken over; for a person
// to look through before it is.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/RegFile.h"
#include "platform/SettingsHive.h"

namespace zeb {

// A value, or a key without values (then `name` is nothing), before and after.
struct RegDifference {
  std::string key;                  // as it is written in the settings, or in the file when it is new
  std::optional<std::string> name;  // "" is the key's own value
  std::optional<SettingsData> before, after;

  enum class Kind { kAdded, kChanged, kRemoved };
  Kind What() const;
  bool operator==(const RegDifference& other) const = default;

  bool keyBefore = true;  // of a key without values: whether it was there
};

// By key and name. What the file sets as it is already is left out. What the hive cannot do throws
// SettingsError.
std::vector<RegDifference> CompareRegChanges(SettingsHive& hive, const RegChanges& changes);

}  // namespace zeb
