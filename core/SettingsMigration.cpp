#include "core/SettingsMigration.h"

#include <stdexcept>
#include <string>

#include "core/SettingsTree.h"
#include "diagnostics/hxGeneral.h"

namespace zeb {
namespace {

void MigrateService(Environment& environment, const OutputFactory& makeOutput, const SettingsRoot& root,
                    int number) {
  ServiceEvents nobody;
  clsZEBService service(environment, makeOutput, nobody);
  environment.settingsRoot = root.inUse;
  const SettingsTree before = ReadSettingsTree(environment.hive, environment.ServiceKey(number));
  service.SetServiceNumber(number);

  environment.settingsRoot = root.profile;
  // Copies what the service does not know; saving the service replaces the rest.
  WriteSettingsTree(environment.hive, environment.ServiceKey(number), before);
  if (!service.StoreServiceInformation())
    throw SettingsError("service " + std::to_string(number) + " could not be saved");
}

}  // namespace

Outcome MigrateServices(Environment& environment, const OutputFactory& makeOutput, const SettingsRoot& root,
                        int numberServices) {
  try {
    environment.hive.Transaction([&] {
      WriteNumberServices(environment.hive, root.profile, numberServices);
      for (int i = 1; i <= numberServices; ++i) MigrateService(environment, makeOutput, root, i);
    });
  } catch (const std::exception& error) {
    environment.settingsRoot = root.inUse;
    return Failure{"cannot copy the services under '" + root.inUse + "' to '" + root.profile +
                   "': " + error.what()};
  }
  environment.settingsRoot = root.profile;
  WriteDebugLine("Loaded Services OK");
  return {};
}

}  // namespace zeb
