#include "platform/system/DescriptorLimit.h"

#include <winsock2.h>

namespace zeb {

// Sockets are not counted here.
SocketNumber OpenSocketWithinLimit(int family, int type, int protocol, bool& noneLeft) {
  const SOCKET made = socket(family, type, protocol);
  noneLeft = made == INVALID_SOCKET && WSAGetLastError() == WSAEMFILE;
  return made == INVALID_SOCKET ? kNoSocket : static_cast<SocketNumber>(made);
}

}  // namespace zeb
