// What only a settings file needs that is one file for all settings.
#pragma once

#include <string>

#include "platform/system/SettingsFile.h"

namespace zeb {

// Whether the file and its folder can be read and written (the journal is made in the folder).
Outcome CheckSettingsFile(const std::string& path);
// Gives a complete new file its name, unless another process was faster.
Outcome PlaceSettingsFile(const std::string& from, const std::string& path);

}  // namespace zeb
