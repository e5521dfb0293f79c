// SettingsCommands: `zebctl settings ...`: shows and changes settings from a shell.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

#include "platform/FileSystem.h"
#include "platform/SettingsHive.h"

namespace zeb {

struct SettingsOptions {
  enum class Action { kList, kGet, kSet, kDelete, kImport, kExport };
  Action action = Action::kList;
  // A path below the machine-wide hive when it begins with "Software\" (in any case), else below the settings
  // root; "/" is taken for "\". "" is the settings root, which is not deleted.
  std::string key;
  std::optional<std::string> name;     // of a value; without one a key is deleted
  std::string data;                    // what is set,
  std::optional<std::int32_t> number;  // unless this is
  std::string file;                    // to import

  bool MakesSettings() const { return action == Action::kSet || action == Action::kImport; }
};

// The exit status: 0, or 1 when it failed. A failure is one line on `err` that begins with "zebctl: ".
// Nothing is thrown.
int RunSettingsCommand(SettingsHive& hive, FileSystem& files, const SettingsOptions& options,
                       std::ostream& out, std::ostream& err);

}  // namespace zeb
