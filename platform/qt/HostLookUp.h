// HostLookUp: the addresses of a host's name. Private to platform/qt.
//
// Qt's own look-up ends the program when there is no descriptor for its threads; this one fails.
#pragma once

#include <string>
#include <vector>

namespace zeb {

struct HostAddresses {
  std::vector<std::string> addresses;  // numeric, the preferred one first
  std::string problem;                 // when there are none
};

// Blocks for as long as the name servers take; on any thread.
HostAddresses LookUpHost(const std::string& name);

}  // namespace zeb
