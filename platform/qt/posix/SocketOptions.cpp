#include "platform/qt/SocketOptions.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace zeb {

namespace {

// A peer that lost its power is found out after about two minutes rather than the system's two hours.
constexpr int kKeepAliveIdle = 60;
constexpr int kKeepAliveInterval = 15;
constexpr int kKeepAliveProbes = 4;

void Set(int descriptor, int level, int option, int value) {
  setsockopt(descriptor, level, option, &value, sizeof value);
}

}  // namespace

void TuneSocket(int descriptor) {
  Set(descriptor, IPPROTO_TCP, TCP_NODELAY, 1);
  Set(descriptor, SOL_SOCKET, SO_KEEPALIVE, 1);
  Set(descriptor, IPPROTO_TCP, TCP_KEEPIDLE, kKeepAliveIdle);
  Set(descriptor, IPPROTO_TCP, TCP_KEEPINTVL, kKeepAliveInterval);
  Set(descriptor, IPPROTO_TCP, TCP_KEEPCNT, kKeepAliveProbes);
}

}  // namespace zeb
