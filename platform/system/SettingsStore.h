// SettingsStore: where this system keeps settings: a file in the data folder, or the machine's registry.
#pragma once

#include <memory>
#include <string>

#include "platform/Result.h"
#include "platform/StoredHive.h"

namespace zeb {

// Whether there are any yet.
bool HasSettings(const std::string& dataFolder);
// Makes the store where there is none.
Result<std::unique_ptr<StoredHive>> OpenSettings(const std::string& dataFolder);
// For the publisher, which must not run without its settings: a damaged store is set aside, if it can be, and
// the reason tells where.
Result<std::unique_ptr<StoredHive>> OpenSettingsToPublish(const std::string& dataFolder);

}  // namespace zeb
