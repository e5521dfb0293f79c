// The settings and the history as files: who may read them, and where they go when they are damaged. posix/
// and windows/ each have an implementation.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/Result.h"

namespace zeb {

// "Permission denied" and the like.
std::string SystemReason(int errorNumber);

bool FileExists(const std::string& path);

// Which file has a name; another one that takes its place is not the same.
struct FoundFile {
  std::uint64_t device = 0, number = 0;
  std::int64_t bytes = 0;
  bool isRegular = false;
  bool IsSameAs(const FoundFile& other) const { return device == other.device && number == other.number; }
};
std::optional<FoundFile> FindFile(const std::string& path);

// False when it is still there.
bool RemoveFile(const std::string& path);

// Creates the file, empty and for its owner only. When an administrator does it for a service, the owner of
// the folder becomes the owner of the file. `what` names the kind of file in the reason of a failure.
Outcome CreateSettingsFile(const std::string& path, const std::string& what = "settings file");
// Takes the rights of everyone but its owner away, from a backup put back, for example.
void RestrictSettingsFile(const std::string& path);

Result<std::string> SetSettingsFileAside(const std::string& path, const std::string& what = "settings file");
// A file that was set aside earlier; "" when there is none.
std::string FindSettingsFileSetAside(const std::string& path);

}  // namespace zeb
