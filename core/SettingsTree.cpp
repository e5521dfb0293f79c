#include "core/SettingsTree.h"

#include <utility>

namespace zeb {

SettingsTree ReadSettingsTree(SettingsHive& hive, const std::string& key) {
  SettingsTree tree;
  if (!hive.KeyExists(key)) return tree;
  // Without recursion, since nothing but the length of a path bounds how deep keys nest.
  std::vector<std::string> paths = {""};
  while (!paths.empty()) {
    std::string path = std::move(paths.back());
    paths.pop_back();
    std::vector<std::string> below = hive.SubKeys(key + path);
    for (auto name = below.rbegin(); name != below.rend(); ++name) paths.push_back(path + "\\" + *name);
    std::vector<SettingsValue> values = hive.Values(key + path);
    tree.push_back({std::move(path), std::move(values)});
  }
  return tree;
}

void WriteSettingsTree(SettingsHive& hive, const std::string& key, const SettingsTree& tree) {
  for (const SettingsTreeKey& part : tree) {
    hive.CreateKey(key + part.path);
    for (const SettingsValue& value : part.values) WriteSettingsValue(hive, key + part.path, value);
  }
}

void WriteSettingsValue(SettingsHive& hive, const std::string& key, const SettingsValue& value) {
  if (const auto* text = std::get_if<std::string>(&value.data))
    hive.WriteText(key, value.name, *text);
  else
    hive.WriteNumber(key, value.name, static_cast<std::int32_t>(std::get<std::uint32_t>(value.data)));
}

}  // namespace zeb
