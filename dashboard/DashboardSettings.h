// DashboardSettings: what the settings root says about the ways in.
#pragma once

#include <cstdint>
#include <string>

#include "core/SettingFields.h"
#include "dashboard/HttpMessage.h"
#include "platform/SettingsHive.h"

namespace zeb {

inline constexpr char kDashboardPassword[] = "DashboardPassword";

struct DashboardSettings;
SettingTable<DashboardSettings> DashboardSettingTable();

struct DashboardSettings {
  std::int32_t port = 6980;           // 0: no web page
  std::string address = "127.0.0.1";  // to listen on; "0.0.0.0" and "::" are all
  std::string names;                  // that it is reached under, with commas between
  std::string passwordHash;           // "": none is set
  std::string socketGroup;            // who may use the local socket besides its owner

  // What the hive cannot do throws SettingsError.
  static DashboardSettings Read(SettingsHive& hive, const std::string& root);

  // kLoopback or kNetwork, by the address.
  WayIn Way() const;
  bool operator==(const DashboardSettings&) const = default;
};

}  // namespace zeb
