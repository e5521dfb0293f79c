// AccessRules: who may ask for what.
//
//   way in          without a session      with a session
//   local socket    everything             everything
//   loopback        reading                everything but what is for commands of this machine
//   other address   the log-on only        the same
//
// A proxy on this machine comes from loopback and brings people from anywhere: what it says of them, or a
// name of DashboardNames, makes such a request one from another address.
//
// Pages of elsewhere, opened in the browser of somebody who may, are kept out: by the Host header on loopback
// (a name that somebody has pointed at this machine is not ours), and by the Origin of everything but
// reading.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "dashboard/HttpMessage.h"
#include "dashboard/Router.h"

namespace zeb {

class AccessRules {
 public:
  struct Verdict {
    int status = 0;  // 0: allowed
    std::string reason;
    bool Allowed() const { return status == 0; }
  };

  AccessRules() = default;
  // Names that the dashboard is reached under besides addresses and "localhost", through a proxy for example:
  // with commas between.
  explicit AccessRules(std::string_view names);

  // The way in that counts for it, given the one that it came by.
  WayIn WayOf(const HttpRequest& request) const;
  Verdict Check(const HttpRequest& request, Need need, bool hasSession) const;

 private:
  bool IsNamed(std::string_view host) const;
  bool IsOurs(std::string_view hostAndPort) const;
  bool IsOurPage(const HttpRequest& request) const;

  std::vector<std::string> names_;  // in small letters
};

}  // namespace zeb
