#include "platform/system/SettingsStore.h"

#include <utility>

#include "platform/windows/RegistryHive.h"

namespace zeb {
namespace {

constexpr char kTopKey[] = "Software\\Hexmoor";

}  // namespace

// The registry is the machine's, whatever the data folder.
bool HasSettings(const std::string&) {
  const auto hive = RegistryHive::Open(RegistryPlace::Machine());
  return hive && hive.Value()->KeyExists(kTopKey);
}

Result<std::unique_ptr<StoredHive>> OpenSettings(const std::string&) {
  auto hive = RegistryHive::Open(RegistryPlace::Machine());
  if (!hive) return hive.AsFailure();
  return std::unique_ptr<StoredHive>(std::move(hive.Value()));
}

// The registry mends itself.
Result<std::unique_ptr<StoredHive>> OpenSettingsToPublish(const std::string& dataFolder) {
  return OpenSettings(dataFolder);
}

}  // namespace zeb
