#include "dashboard/DashboardSettings.h"

#include <vector>

#include "sources/PeerRanges.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"

namespace zeb {

namespace {

using S = DashboardSettings;

const SettingRow<S> kRows[] = {
    {.name = "DashboardPort", .member = &S::port, .storedAs = StoredAs::kNumber, .least = 0, .most = 65535},
    {.name = "DashboardAddress", .member = &S::address},
    {.name = "DashboardNames", .member = &S::names},
    {.name = kDashboardPassword, .member = &S::passwordHash, .secret = true},
    {.name = "ControlSocketGroup", .member = &S::socketGroup},
};

}  // namespace

SettingTable<DashboardSettings> DashboardSettingTable() {
  return kRows;
}

DashboardSettings DashboardSettings::Read(SettingsHive& hive, const std::string& root) {
  DashboardSettings settings;
  ReadSettings(hive, root, "", DashboardSettingTable(), settings);
  settings.address = TrimBlanks(settings.address);
  settings.socketGroup = TrimBlanks(settings.socketGroup);
  // An empty value means the default, not everybody.
  if (settings.address.empty() || EqualIgnoringAsciiCase(settings.address, "localhost"))
    settings.address = S().address;
  return settings;
}

WayIn DashboardSettings::Way() const {
  std::vector<std::string> bad;
  return PeerRanges::Parse("127.0.0.0/8,::1", bad).Contains(address) ? WayIn::kLoopback : WayIn::kNetwork;
}

}  // namespace zeb
