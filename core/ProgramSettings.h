// ProgramSettings: what is set for the whole program, under the settings root. What one room alone reads is
// in that room's table (history, alarms, the control room).
#pragma once

#include <cstdint>
#include <string>

#include "core/SettingFields.h"

namespace zeb {

struct ProgramSettings {
  std::string ControlAllowedPeers;  // addresses and ranges with commas between; "": private ones
  std::string ControlBindAddress;   // "": all
  std::string TrustedCaFile;        // relative to the data folder
  std::string MediaFolders;         // with ";" between; "": anywhere
  std::int32_t RetrySeconds = 5;
  std::int32_t BounceRetrySeconds = 0;
  std::string Language;  // of windows; "": English
};
SettingTable<ProgramSettings> ProgramSettingTable();

// "CommPortDevice" and the number of a serial port is the device that it is.
inline constexpr char kCommPortDevice[] = "CommPortDevice";
inline constexpr std::int32_t kMostCommPorts = 16;
// What it is when nothing is set.
std::string UsualCommPortDevice(std::int32_t commPort);

}  // namespace zeb
