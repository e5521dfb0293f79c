// OptionsSheet: the dialog of what is set for the whole program, without the drawing. For the desktop
// program.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "core/ProgramSettings.h"
#include "core/PropertySheet.h"
#include "dashboard/DashboardSettings.h"
#include "platform/HistoryStore.h"
#include "platform/Result.h"
#include "platform/SettingsHive.h"
#include "status/Alarms.h"

namespace zeb {

// Of the debug log, which is set for all programs of the station.
struct DebugSettings {
  std::int32_t DebugMode = 0;
  std::string DebugPath;
};

struct ProgramOptions {
  ProgramSettings program;
  HistoryLimits history;
  AlarmSettings alarms;
  DashboardSettings dashboard;
  DebugSettings debug;
  std::array<std::string, kMostCommPorts> devices;  // of port 1 on; "": the usual one
};

// What the hive cannot do throws SettingsError.
ProgramOptions ReadOptions(SettingsHive& hive, const std::string& root);
// Writes what `after` has otherwise than `before`, all of it or nothing.
Outcome StoreOptions(SettingsHive& hive, const std::string& root, const ProgramOptions& before,
                     const ProgramOptions& after);

// The devices are fields of the kind kSuggested, named as they are stored ("CommPortDevice1").
PropertySheet OptionsSheet(ProgramOptions& draft);

}  // namespace zeb
