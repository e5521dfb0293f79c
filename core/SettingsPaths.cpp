#include "core/SettingsPaths.h"

#include <algorithm>

#include "diagnostics/hxGeneral.h"

namespace zeb {
namespace {

constexpr char kToolsKey[] = "Software\\Hexmoor\\Tolvan v3\\Tools";
constexpr char kProfilesKey[] = "Software\\Hexmoor\\ZEB v3\\Profiles\\";
constexpr char kNumberServices[] = "NumberServices";

}  // namespace

SettingsRoot ChooseSettingsRoot(SettingsHive& hive) {
  WriteDebugLine("Getting Profile Name");
  std::string profile = hive.ReadText(kToolsKey, "LastProfile", "");
  if (profile.empty()) profile = "Profile1";

  SettingsRoot root;
  root.profile = kProfilesKey + profile;
  root.migrate = !hive.HasValue(root.profile, kNumberServices) &&
                 hive.HasValue(std::string(kPreviousSettingsRoot), kNumberServices);
  root.inUse = root.migrate ? std::string(kPreviousSettingsRoot) : root.profile;
  return root;
}

int ReadNumberServices(SettingsHive& hive, const std::string& root) {
  return std::clamp(hive.ReadNumber(root, kNumberServices, 0), 0, kMaxServices);
}

void WriteNumberServices(SettingsHive& hive, const std::string& root, int number) {
  hive.WriteNumber(root, kNumberServices, number);
}

}  // namespace zeb
