// SettingsPaths: where in the hive this program's settings are, and how many services they hold.
//
// What the hive cannot do throws SettingsError.
#pragma once

#include <string>
#include <string_view>

#include "platform/SettingsHive.h"

namespace zeb {

// The previous version's root, read when there is nothing under the present one yet.
inline constexpr std::string_view kPreviousSettingsRoot = "Software\\Hexmoor\\ZEB";
inline constexpr int kMaxServices = 10000;

struct SettingsRoot {
  std::string inUse;     // what to load from: the profile's root, or the previous version's
  std::string profile;   // "Software\Hexmoor\ZEB v3\Profiles\" and the profile that the playout tools use
  bool migrate = false;  // `inUse` is the previous version's: MigrateServices should copy it
};

// Logs "Getting Profile Name". The previous version's root is used when it has a "NumberServices" and the
// profile's root has none.
SettingsRoot ChooseSettingsRoot(SettingsHive& hive);

// "NumberServices" under the root, held within 0..kMaxServices.
int ReadNumberServices(SettingsHive& hive, const std::string& root);
void WriteNumberServices(SettingsHive& hive, const std::string& root, int number);

}  // namespace zeb
