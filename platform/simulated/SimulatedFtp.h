// SimulatedFtp: an FTP server in memory, with failures on request. Used on one thread.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/FtpSession.h"

namespace zeb {

class SimulatedFtp : public FtpSessions {
 public:
  std::unique_ptr<FtpSession> Make() override;

  std::map<std::string, std::string> files;  // by server path
  std::set<std::string> folders = {"/", "/w/", "/www/"};
  bool replaces = true;          // a rename may put a file in the place of another
  std::vector<std::string> log;  // "Upload /a.tmp", "Rename /a.tmp /a"
  int connections = 0;
  bool cancelled = false;  // some session was
  FtpTarget lastTarget;

  // Asked before each operation ("Open", "Connect", "Probe", "Upload" (and "Block" before each of its
  // blocks), "Exists", "Rename", "Delete", "Download", "Close") with its path (the source of a rename). A
  // non-empty answer fails it and is the server's reply; one that begins with "421" also ends the connection.
  // "LOST" lets the server do it, and ends the connection in place of the reply. A server that hangs is one
  // that waits in here (EventLoop::Wait).
  std::function<std::string(const std::string& operation, const std::string& path)> fail;
};

}  // namespace zeb
