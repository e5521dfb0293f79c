#include "app/OptionsSheet.h"

#include <exception>

#include "diagnostics/hxGeneral.h"
#include "history/HistoryRecorder.h"

namespace zeb {
namespace {

constexpr SettingRow<DebugSettings> kDebugRows[] = {
    {.name = "DebugMode",
     .member = &DebugSettings::DebugMode,
     .storedAs = StoredAs::kNumber,
     .entry = {.least = -1, .most = 10}},
    {"DebugPath", &DebugSettings::DebugPath},
};
constexpr SettingTable<DebugSettings> kDebugTable = kDebugRows;

// The tables, each with where its values are.
template <class Visit>
void ForEachTable(const std::string& root, const Visit& visit) {
  visit(root, ProgramSettingTable(), &ProgramOptions::program);
  visit(root, HistorySettingTable(), &ProgramOptions::history);
  visit(root, AlarmSettingTable(), &ProgramOptions::alarms);
  visit(root, DashboardSettingTable(), &ProgramOptions::dashboard);
  visit(std::string(DebugLog::kRootKey), kDebugTable, &ProgramOptions::debug);
}

std::string DeviceName(std::size_t index) {
  return kCommPortDevice + std::to_string(index + 1);
}

constexpr std::string_view kAtStart = "Comes into use when the program is started again.";

constexpr FieldText kControl[] = {
    {.group = "Control links",
     .name = "ControlAllowedPeers",
     .caption = "Who may connect:",
     .help = "Addresses and ranges such as 10.0.0.0/8, with commas between; empty: private addresses."},
    {.name = "ControlBindAddress", .caption = "Listen on the address:", .help = "Empty: on all."},
    {.name = "BounceRetrySeconds",
     .caption = "Try a broken relay again after (seconds):",
     .help = "0: not before there is something to relay."},
};
constexpr FieldText kOutputs[] = {
    {.group = "Outputs",
     .name = "RetrySeconds",
     .caption = "Try a failed output again after (seconds):",
     .help = "Then after twice as long each time, once a minute at last; 0: with the next information only."},
    {.name = "MediaFolders",
     .caption = "Pictures come from these folders only:",
     .help = "With ; between; empty: from anywhere."},
    {.name = "TrustedCaFile", .caption = "Further certificate authorities:", .help = kAtStart},
};
constexpr FieldText kHistory[] = {
    {.group = "History", .name = "HistoryDays", .caption = "Keep it for (days):", .help = "0: none is kept."},
    {.name = "HistoryMegabytes", .caption = "At most (megabytes):", .help = "0: none is kept."},
};
constexpr FieldText kAlarms[] = {
    {.group = "Alarms", .name = "AlarmAfterSeconds", .caption = "After a failure of (seconds):"},
    {.name = "AlarmCommand", .caption = "Run the program:", .kind = FieldKind::kFile},
    {.name = "AlarmURL", .caption = "Post to the address:"},
};
constexpr FieldText kDashboard[] = {
    {.group = "Control room (web page)", .name = "DashboardPort", .caption = "Port (0: none):"},
    {.name = "DashboardAddress",
     .caption = "Listen on the address:",
     .help = "0.0.0.0 is all addresses, and needs a password: zebctl dashboard password."},
    {.name = "DashboardNames", .caption = "Names it is reached under:"},
    {.name = "ControlSocketGroup",
     .caption = "Group that may use the local socket:",
     .help = "Its members have all rights."},
};
constexpr FieldText kDebug[] = {
    {.group = "Debug log",
     .name = "DebugMode",
     .caption = "Level (0: off, -1: everything):",
     .help = kAtStart},
    {.name = "DebugPath",
     .caption = "Folder:",
     .kind = FieldKind::kFolder,
     .help = "Empty: DebugFiles in the data folder."},
};
constexpr FieldText kLanguage{.group = "Windows",
                              .name = "Language",
                              .caption = "Language:",
                              .kind = FieldKind::kSuggested,
                              .help = "The name of a language file; empty: English."};

void AddDevices(PropertySheet& sheet, ProgramOptions& draft) {
  for (std::size_t i = 0; i < draft.devices.size(); ++i) {
    const auto port = static_cast<std::int32_t>(i + 1);
    PropertyField& field =
        AddField(sheet,
                 {.group = i == 0 ? "Serial ports" : "",
                  .name = kCommPortDevice,
                  .kind = FieldKind::kSuggested,
                  .help = "Empty: the usual one. tcp:host:port is an encoder on the network."},
                 &draft.devices[i]);
    field.name = DeviceName(i);
    field.caption = "Com Port " + std::to_string(port) + " (" + UsualCommPortDevice(port) + "):";
  }
}

}  // namespace

ProgramOptions ReadOptions(SettingsHive& hive, const std::string& root) {
  ProgramOptions options;
  hive.ReadTransaction([&] {
    ForEachTable(root, [&](const std::string& key, auto table, auto member) {
      ReadSettings(hive, key, "", table, options.*member);
    });
    for (std::size_t i = 0; i < options.devices.size(); ++i)
      options.devices[i] = hive.ReadText(root, DeviceName(i), "");
  });
  return options;
}

Outcome StoreOptions(SettingsHive& hive, const std::string& root, const ProgramOptions& before,
                     const ProgramOptions& after) {
  try {
    hive.Transaction([&] {
      ForEachTable(root, [&](const std::string& key, auto table, auto member) {
        WriteChanges(hive, key, table, before.*member, after.*member);
      });
      for (std::size_t i = 0; i < after.devices.size(); ++i)
        if (before.devices[i] != after.devices[i]) hive.WriteText(root, DeviceName(i), after.devices[i]);
    });
  } catch (const std::exception& error) {
    return Failure{std::string("The options could not be saved: ") + error.what()};
  }
  return {};
}

PropertySheet OptionsSheet(ProgramOptions& draft) {
  PropertySheet sheet;
  sheet.caption = "Options";
  AddFields(sheet, ProgramSettingTable(), draft.program, std::span(&kLanguage, 1));
  AddFields(sheet, ProgramSettingTable(), draft.program, kControl);
  AddFields(sheet, ProgramSettingTable(), draft.program, kOutputs);
  AddFields(sheet, HistorySettingTable(), draft.history, kHistory);
  AddFields(sheet, AlarmSettingTable(), draft.alarms, kAlarms);
  AddFields(sheet, DashboardSettingTable(), draft.dashboard, kDashboard);
  AddFields(sheet, kDebugTable, draft.debug, kDebug);
  AddDevices(sheet, draft);
  return sheet;
}

}  // namespace zeb
