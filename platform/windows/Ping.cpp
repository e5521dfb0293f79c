#include "platform/system/Ping.h"

#include <winsock2.h>
// After winsock2.h.
#include <iphlpapi.h>
#include <ws2tcpip.h>
// After iphlpapi.h.
#include <icmpapi.h>

#include <array>

#include "platform/windows/WideText.h"

namespace zeb {
namespace {

// The IPv4 address of a host; 0 when it has none.
IPAddr AddressOf(const std::string& host) {
  WSADATA started{};
  if (WSAStartup(MAKEWORD(2, 2), &started) != 0) return 0;
  ADDRINFOW wanted{};
  wanted.ai_family = AF_INET;
  ADDRINFOW* found = nullptr;
  IPAddr address = 0;
  if (GetAddrInfoW(Wide(host).c_str(), nullptr, &wanted, &found) == 0) {
    address = reinterpret_cast<const sockaddr_in*>(found->ai_addr)->sin_addr.s_addr;
    FreeAddrInfoW(found);
  }
  WSACleanup();
  return address;
}

}  // namespace

bool PingHost(const std::string& host, std::chrono::milliseconds limit) {
  const IPAddr address = AddressOf(host);
  const HANDLE echo = address != 0 ? IcmpCreateFile() : INVALID_HANDLE_VALUE;
  if (echo == INVALID_HANDLE_VALUE) return false;
  std::array<char, 32> data{};
  std::array<char, sizeof(ICMP_ECHO_REPLY) + 32 + 64> reply{};
  const DWORD count =
      IcmpSendEcho(echo, address, data.data(), static_cast<WORD>(data.size()), nullptr, reply.data(),
                   static_cast<DWORD>(reply.size()), static_cast<DWORD>(limit.count()));
  const bool came = count > 0 && reinterpret_cast<const ICMP_ECHO_REPLY*>(reply.data())->Status == IP_SUCCESS;
  IcmpCloseHandle(echo);
  return came;
}

}  // namespace zeb
