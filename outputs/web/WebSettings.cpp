#include "outputs/web/WebSettings.h"

#include <array>

#include "text/Paths.h"

namespace zeb {
namespace {

// With less the FTP library gives its data connections up before they stand.
constexpr std::int32_t kShortestTimeLimit = 2;
constexpr std::int32_t kLongestTimeLimit = 600;
constexpr std::int32_t kLongestKeep = 3600;

constexpr bool kSecret = true;
using Row = SettingRow<WebSettings>;
constexpr std::array kTable = {
    Row{"FTPServerName", &WebSettings::FTPServerName},
    Row{.name = "FTPServerPort", .member = &WebSettings::FTPServerPort, .entry = kPortEntry},
    Row{"FTPUsername", &WebSettings::FTPUsername},
    Row{"FTPPassword", &WebSettings::FTPPassword, StoredAs::kText, kSecret},
    Row{"FTPUseProxy", &WebSettings::FTPUseProxy},
    Row{"FTPProxyName", &WebSettings::FTPProxyName},
    Row{.name = "FTPProxyPort", .member = &WebSettings::FTPProxyPort, .entry = kPortEntry},
    Row{"FTPPassiveMode", &WebSettings::FTPPassiveMode, StoredAs::kNumber},
    Row{"FTPTimeoutSeconds", &WebSettings::FTPTimeoutSeconds, StoredAs::kNumber, !kSecret, kShortestTimeLimit,
        kLongestTimeLimit},
    Row{"FTPUseTLS", &WebSettings::FTPUseTLS, StoredAs::kNumber},
    Row{.name = "FTPCaFile", .member = &WebSettings::FTPCaFile, .entry = kNeededFileEntry},
    Row{"FTPKeepConnectionSeconds", &WebSettings::FTPKeepConnectionSeconds, StoredAs::kNumber, !kSecret, 0,
        kLongestKeep},
};

}  // namespace

SettingTable<WebSettings> WebSettingTable() {
  return kTable;
}

FtpTarget TargetOf(const WebSettings& settings, const std::string& dataFolder) {
  FtpTarget target;
  target.server = settings.FTPServerName;
  target.port = settings.FTPServerPort;
  target.user = settings.FTPUsername;
  target.password = settings.FTPPassword;
  target.passive = settings.FTPPassiveMode;
  target.tls = settings.FTPUseTLS;
  if (!settings.FTPCaFile.empty()) target.caFile = JoinPath(dataFolder, settings.FTPCaFile);
  target.useProxy = settings.FTPUseProxy;
  target.proxyName = settings.FTPProxyName;
  target.proxyPort = settings.FTPProxyPort;
  target.timeLimit = std::chrono::seconds(settings.FTPTimeoutSeconds);
  return target;
}

}  // namespace zeb
