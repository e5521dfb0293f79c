// SettingsTree: a key with everything below it, as a plain value.
#pragma once

#include <string>
#include <vector>

#include "platform/SettingsHive.h"

namespace zeb {

// One key of a tree. The first of a tree is its top, and every key comes before those below it.
struct SettingsTreeKey {
  std::string path;  // "" for the top, else "\File", "\File\Pages"
  std::vector<SettingsValue> values;
};
using SettingsTree = std::vector<SettingsTreeKey>;

// Empty when the key does not exist.
SettingsTree ReadSettingsTree(SettingsHive& hive, const std::string& key);
// Adds the tree to what the key holds; equal names are overwritten.
void WriteSettingsTree(SettingsHive& hive, const std::string& key, const SettingsTree& tree);
void WriteSettingsValue(SettingsHive& hive, const std::string& key, const SettingsValue& value);

}  // namespace zeb
