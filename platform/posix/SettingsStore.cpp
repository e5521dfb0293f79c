#include "platform/system/SettingsStore.h"

#include <utility>

#include "platform/posix/SqliteHive.h"
#include "platform/system/SettingsFile.h"
#include "text/Paths.h"

namespace zeb {
namespace {

std::string FileIn(const std::string& dataFolder) {
  return JoinPath(dataFolder, "settings.db");
}

Result<std::unique_ptr<StoredHive>> Plain(Result<std::unique_ptr<SqliteHive>> hive) {
  if (!hive) return hive.AsFailure();
  return std::unique_ptr<StoredHive>(std::move(hive.Value()));
}

}  // namespace

bool HasSettings(const std::string& dataFolder) {
  return FileExists(FileIn(dataFolder));
}

Result<std::unique_ptr<StoredHive>> OpenSettings(const std::string& dataFolder) {
  return Plain(SqliteHive::Open(FileIn(dataFolder)));
}

Result<std::unique_ptr<StoredHive>> OpenSettingsToPublish(const std::string& dataFolder) {
  return Plain(SqliteHive::OpenOrSetAside(FileIn(dataFolder)));
}

}  // namespace zeb
