#include "platform/qt/HostLookUp.h"

#include <netdb.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace zeb {

HostAddresses LookUpHost(const std::string& name) {
  HostAddresses found;
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_ADDRCONFIG;
  addrinfo* list = nullptr;
  const int code = getaddrinfo(name.c_str(), nullptr, &hints, &list);
  if (code != 0) {
    found.problem = code == EAI_SYSTEM ? std::generic_category().message(errno) : gai_strerror(code);
    return found;
  }
  for (const addrinfo* one = list; one; one = one->ai_next) {
    std::array<char, NI_MAXHOST> text{};
    if (getnameinfo(one->ai_addr, one->ai_addrlen, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST) == 0)
      found.addresses.emplace_back(text.data());
  }
  freeaddrinfo(list);
  if (found.addresses.empty()) found.problem = "it has no address";
  return found;
}

}  // namespace zeb
