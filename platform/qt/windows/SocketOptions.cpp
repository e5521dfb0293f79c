#include "platform/qt/SocketOptions.h"

#include <winsock2.h>
// After winsock2.h.
#include <mstcpip.h>

namespace zeb {
namespace {

// A peer that lost its power is found out after about two minutes rather than the system's two hours.
constexpr ULONG kKeepAliveIdleMilliseconds = 60'000;
constexpr ULONG kKeepAliveIntervalMilliseconds = 6'000;  // ten probes, always

}  // namespace

void TuneSocket(int descriptor) {
  const auto socket = static_cast<SOCKET>(descriptor);
  const BOOL on = TRUE;
  setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
  tcp_keepalive probes{1, kKeepAliveIdleMilliseconds, kKeepAliveIntervalMilliseconds};
  DWORD answered = 0;
  WSAIoctl(socket, SIO_KEEPALIVE_VALS, &probes, sizeof probes, nullptr, 0, &answered, nullptr, nullptr);
}

}  // namespace zeb
