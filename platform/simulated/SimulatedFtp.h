// SimulatedFtp: an FTP server in memory, with failures on request. Used on one thread.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/FtpSession.h"

namespace zeb {

class SimulatedFtp : public FtpSessions {
 public:
  std::unique_ptr<FtpSession> Make() override;

  std::map<std::string, std::string> files;  // by server path
  std::vector<std::string> log;              // "Upload /a.tmp", "Rename /a.tmp /a"
  int connections = 0;
  FtpTarget lastTarget;
  // Asked before each operation ("Open", "Connect", "Upload", "Exists", "Rename", "Delete", "Download") with
  // its path (the source of a rename). A non-empty answer fails it and is the server's reply; one that begins
  // with "421" also ends the connection.
  std::function<std::string(const std::string& operation, const std::string& path)> fail;
};

}  // namespace zeb
