#include "platform/system/Ping.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/ip_icmp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>

namespace zeb {
namespace {

constexpr std::size_t kDataBytes = 64;

// A datagram socket needs no rights where the system allows it (identifier and checksum are then the system's
// work); a raw one needs root's.
class EchoSocket {
 public:
  EchoSocket() : handle_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_ICMP)) {
    if (handle_ >= 0) return;
    raw_ = true;
    handle_ = socket(AF_INET, SOCK_RAW | SOCK_CLOEXEC, IPPROTO_ICMP);
  }
  ~EchoSocket() {
    if (handle_ >= 0) close(handle_);
  }
  EchoSocket(const EchoSocket&) = delete;
  EchoSocket& operator=(const EchoSocket&) = delete;
  int Handle() const { return handle_; }
  bool Raw() const { return raw_; }

 private:
  int handle_;
  bool raw_ = false;
};

std::uint16_t InternetChecksum(const char* bytes, std::size_t size) {
  std::uint32_t sum = 0;
  for (std::size_t i = 0; i + 1 < size; i += 2) {
    std::uint16_t word = 0;
    std::memcpy(&word, bytes + i, sizeof word);
    sum += word;
  }
  while (sum > 0xFFFF) sum = (sum & 0xFFFF) + (sum >> 16);
  return static_cast<std::uint16_t>(~sum);
}

// A raw socket hears every echo, the request itself among them on this machine, each behind its IP header.
bool IsReply(const char* bytes, std::size_t size, bool raw, std::uint16_t identifier) {
  const std::size_t start = raw && size > 0 ? static_cast<std::size_t>(bytes[0] & 0x0F) * 4 : 0;
  icmphdr header{};
  if (size < start + sizeof header) return false;
  std::memcpy(&header, bytes + start, sizeof header);
  return header.type == ICMP_ECHOREPLY && (!raw || header.un.echo.id == identifier);
}

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
  header.un.echo.id = static_cast<std::uint16_t>(getpid());
  std::memcpy(request.data(), &header, sizeof header);
  header.checksum = InternetChecksum(request.data(), request.size());
  std::memcpy(request.data(), &header, sizeof header);
  if (sendto(echo.Handle(), request.data(), request.size(), 0, reinterpret_cast<const sockaddr*>(&address),
             sizeof address) != static_cast<ssize_t>(request.size()))
    return false;
  const auto end = std::chrono::steady_clock::now() + limit;
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    pollfd answer{echo.Handle(), POLLIN, 0};
    if (left.count() <= 0 || poll(&answer, 1, static_cast<int>(left.count())) != 1) return false;
    std::array<char, 256> reply{};
    const ssize_t size = recv(echo.Handle(), reply.data(), reply.size(), 0);
    if (size > 0 && IsReply(reply.data(), static_cast<std::size_t>(size), echo.Raw(), header.un.echo.id))
      return true;
  }
}

}  // namespace zeb
