#include "app/DemoStation.h"

#include <exception>
#include <optional>
#include <utility>

#include "core/RegFile.h"
#include "core/SettingsPaths.h"
#include "platform/EventLoop.h"
#include "platform/FileSystem.h"
#include "platform/SettingsHive.h"
#include "platform/WorkLane.h"
#include "text/Paths.h"

namespace zeb {
namespace {

constexpr const char* kSettingsFile = "demo.reg";
constexpr std::uint64_t kMostTemplateBytes = 1024u * 1024;

Outcome CopyTemplates(FileSystem& files, const std::string& from, const std::string& to) {
  if (Outcome made = files.CreateFolders(to); !made) return made;
  const Result<std::vector<std::string>> names = files.List(from);
  if (!names) return names.AsFailure();
  for (const std::string& name : names.Value()) {
    const std::string path = JoinPath(to, name);
    if (files.Stat(path)) continue;
    const Result<std::string> bytes = files.Read(JoinPath(from, name), kMostTemplateBytes);
    if (!bytes) return bytes.AsFailure();
    const auto target = files.FindTarget(path, {});
    if (!target) return target.AsFailure();
    if (Outcome written = target.Value()->Replace(bytes.Value()); !written) return written;
  }
  return {};
}

// On a worker: the settings file's bytes, once all else is in place.
Result<std::string> PutFilesInPlace(FileSystem& files, const std::string& folder, const std::string& data) {
  Result<std::string> settings = files.Read(JoinPath(folder, kSettingsFile), kMaxRegFileBytes);
  if (!settings) return settings;
  if (const Outcome made = files.CreateFolders(JoinPath(data, "www")); !made) return made.AsFailure();
  const Outcome copied = CopyTemplates(files, JoinPath(folder, "templates"), JoinPath(data, "templates"));
  if (!copied) return copied.AsFailure();
  return settings;
}

}  // namespace

std::string DemoStationFolder(const Environment& environment) {
  if (environment.programFolder.empty()) return "";
  for (const char* place : {"examples", "../share/zeb/examples"}) {
    std::string folder = JoinPath(environment.programFolder, place);
    if (environment.files.Stat(JoinPath(folder, kSettingsFile))) return folder;
  }
  return "";
}

Outcome StoreDemoStation(Environment& environment, const std::string& folder) {
  const std::optional<Result<std::string>> settings = environment.loop.RunBlocking(
      [&files = environment.files, folder, data = environment.dataFolder] {
        return PutFilesInPlace(files, folder, data);
      },
      kFileWorkLimit);
  if (!settings) return Failure{"the files of the demo station could not be copied in time"};
  if (!*settings) return settings->AsFailure();
  try {
    environment.hive.Transaction([&] {
      if (ReadNumberServices(environment.hive, environment.settingsRoot) > 0)
        throw SettingsError("there is a service already");
      const Result<RegSummary> stored = ImportRegFile(environment.hive, settings->Value());
      if (!stored) throw SettingsError(stored.Reason());
    });
  } catch (const std::exception& error) {
    return Failure{error.what()};
  }
  return {};
}

}  // namespace zeb
