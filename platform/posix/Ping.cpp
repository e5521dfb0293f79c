#include "platform/posix/Ping.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/ip_icmp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstring>

namespace zeb {
namespace {

constexpr std::size_t kDataBytes = 64;

// The system fills in identifier and checksum of such a socket, and hands over replies to it only.
class EchoSocket {
 public:
  EchoSocket() : handle_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_ICMP)) {}
  ~EchoSocket() {
    if (handle_ >= 0) close(handle_);
  }
  EchoSocket(const EchoSocket&) = delete;
  EchoSocket& operator=(const EchoSocket&) = delete;
  int Handle() const { return handle_; }

 private:
  int handle_;
};

}  // namespace

bool PingHost(const std::string& host, std::chrono::milliseconds limit) {
  addrinfo wanted{};
  wanted.ai_family = AF_INET;
  addrinfo* found = nullptr;
  if (getaddrinfo(host.c_str(), nullptr, &wanted, &found) != 0) return false;
  sockaddr_in address{};
  std::memcpy(&address, found->ai_addr, sizeof address);
  freeaddrinfo(found);

  const EchoSocket echo;
  std::array<char, sizeof(icmphdr) + kDataBytes> request{};
  icmphdr header{};
  header.type = ICMP_ECHO;
  std::memcpy(request.data(), &header, sizeof header);
  if (sendto(echo.Handle(), request.data(), request.size(), 0, reinterpret_cast<const sockaddr*>(&address),
             sizeof address) != static_cast<ssize_t>(request.size()))
    return false;
  pollfd answer{echo.Handle(), POLLIN, 0};
  if (poll(&answer, 1, static_cast<int>(limit.count())) != 1) return false;
  std::array<char, 256> reply{};
  if (recv(echo.Handle(), reply.data(), reply.size(), 0) < static_cast<ssize_t>(sizeof header)) return false;
  std::memcpy(&header, reply.data(), sizeof header);
  return header.type == ICMP_ECHOREPLY;
}

}  // namespace zeb
