// SettingsFile: the settings file as a file: who may read it, and where it goes when it is damaged.
#pragma once

#include <string>

#include "platform/Result.h"

namespace zeb {

// "Permission denied" and the like.
std::string SystemReason(int errorNumber);

bool FileExists(const std::string& path);
// Whether the file and its folder can be read and written (the journal is made in the folder).
Outcome CheckSettingsFile(const std::string& path);
// Creates the file, empty and for its owner only. When an administrator does it for a service, the owner of
// the folder becomes the owner of the file. `what` names the kind of file in the reason of a failure.
Outcome CreateSettingsFile(const std::string& path, const std::string& what = "settings file");
// Takes the rights of everyone but its owner away, from a backup put back, for example.
void RestrictSettingsFile(const std::string& path);
// Gives a complete new file its name, unless another process was faster.
Outcome PlaceSettingsFile(const std::string& from, const std::string& path);

Result<std::string> SetSettingsFileAside(const std::string& path, const std::string& what = "settings file");
// A file that was set aside earlier; "" when there is none.
std::string FindSettingsFileSetAside(const std::string& path);

}  // namespace zeb
