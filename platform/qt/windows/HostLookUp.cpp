#include "platform/qt/HostLookUp.h"

#include <winsock2.h>
// After winsock2.h.
#include <ws2tcpip.h>

#include <array>

namespace zeb {
namespace {

std::string Reason(int code) {
  switch (code) {
    case WSAHOST_NOT_FOUND:
    case WSANO_DATA:
      return "its name is not known";
    case WSATRY_AGAIN:
      return "no name server answers";
    default:
      return "looking its name up failed (error " + std::to_string(code) + ")";
  }
}

}  // namespace

// Names are in ASCII here: those of other scripts come in their ASCII form.
HostAddresses LookUpHost(const std::string& name) {
  HostAddresses found;
  WSADATA started{};
  if (const int code = WSAStartup(MAKEWORD(2, 2), &started); code != 0) {
    found.problem = Reason(code);
    return found;
  }
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_ADDRCONFIG;
  addrinfo* list = nullptr;
  if (const int code = getaddrinfo(name.c_str(), nullptr, &hints, &list); code != 0) {
    found.problem = Reason(code);
  } else {
    for (const addrinfo* one = list; one; one = one->ai_next) {
      std::array<char, NI_MAXHOST> text{};
      if (getnameinfo(one->ai_addr, static_cast<socklen_t>(one->ai_addrlen), text.data(),
                      static_cast<DWORD>(text.size()), nullptr, 0, NI_NUMERICHOST) == 0)
        found.addresses.emplace_back(text.data());
    }
    freeaddrinfo(list);
    if (found.addresses.empty()) found.problem = "it has no address";
  }
  WSACleanup();
  return found;
}

}  // namespace zeb
