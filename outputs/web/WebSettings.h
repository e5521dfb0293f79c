// WebSettings: what a web output has of its own beside its pairs.
#pragma once

#include <cstdint>
#include <string>

#include "core/SettingFields.h"
#include "platform/FtpSession.h"

namespace zeb {

struct WebSettings {
  std::string FTPServerName;
  std::int32_t FTPServerPort = 21;
  std::string FTPUsername, FTPPassword;
  bool FTPUseProxy = false;
  std::string FTPProxyName;
  std::int32_t FTPProxyPort = 21;
  bool FTPPassiveMode = true;
  std::int32_t FTPTimeoutSeconds = 30;  // of each step
  bool FTPUseTLS = false;
  std::string FTPCaFile;                      // relative to the data folder; "": the system's authorities
  std::int32_t FTPKeepConnectionSeconds = 0;  // for the next update
};

SettingTable<WebSettings> WebSettingTable();

FtpTarget TargetOf(const WebSettings& settings, const std::string& dataFolder);

}  // namespace zeb
