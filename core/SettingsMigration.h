// SettingsMigration: copies the previous version's services to the profile's root at the first start.
#pragma once

#include "core/SettingsPaths.h"
#include "core/clsZEBService.h"
#include "platform/Result.h"

namespace zeb {

// Loads each of the `numberServices` services from the previous root and saves it under the profile's root,
// with "NumberServices", in one transaction; settings of types that are not built come along. Logs "Loaded
// Services OK" and sets environment.settingsRoot to the profile's root. On failure nothing is stored and
// environment.settingsRoot is the previous root, from which the services still load; the next start tries
// again. The previous root is left as it is.
Outcome MigrateServices(Environment& environment, const OutputFactory& makeOutput, const SettingsRoot& root,
                        int numberServices);

}  // namespace zeb
