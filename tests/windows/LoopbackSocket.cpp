#include "tests/windows/LoopbackSocket.h"

#include <ws2tcpip.h>

namespace zeb {
namespace {

SOCKET NewSocket() {
  static const int started = [] {
    WSADATA data;
    return WSAStartup(MAKEWORD(2, 2), &data);
  }();
  return started == 0 ? socket(AF_INET, SOCK_STREAM, IPPROTO_TCP) : INVALID_SOCKET;
}

sockaddr_in Loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<u_short>(port));
  return address;
}

}  // namespace

LoopbackSocket LoopbackSocket::Listen() {
  LoopbackSocket made(NewSocket());
  const sockaddr_in address = Loopback(0);
  if (bind(made.socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(made.socket_, 5) != 0)
    made.Close();
  return made;
}

LoopbackSocket LoopbackSocket::Connect(int port) {
  LoopbackSocket made(NewSocket());
  const sockaddr_in address = Loopback(port);
  if (connect(made.socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) made.Close();
  return made;
}

int LoopbackSocket::Port() const {
  sockaddr_in address{};
  int size = sizeof address;
  return getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size) == 0 ? ntohs(address.sin_port)
                                                                                 : 0;
}

bool LoopbackSocket::Readable(int limit) const {
  WSAPOLLFD asked{socket_, POLLRDNORM, 0};
  return Valid() && WSAPoll(&asked, 1, limit) > 0;
}

LoopbackSocket LoopbackSocket::Accept(int limit) const {
  return LoopbackSocket(Readable(limit) ? accept(socket_, nullptr, nullptr) : INVALID_SOCKET);
}

bool LoopbackSocket::Send(std::string_view bytes) const {
  while (!bytes.empty()) {
    const int sent = send(socket_, bytes.data(), static_cast<int>(bytes.size()), 0);
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

bool LoopbackSocket::Receive(std::string& to, int limit) const {
  char bytes[4096];
  const int got = Readable(limit) ? recv(socket_, bytes, sizeof bytes, 0) : 0;
  if (got > 0) to.append(bytes, static_cast<std::size_t>(got));
  return got > 0;
}

bool LoopbackSocket::ReceiveUntil(std::string& to, std::string_view text, int limit) const {
  while (to.find(text) == std::string::npos)
    if (!Receive(to, limit)) return false;
  return true;
}

bool LoopbackSocket::Ended() const {
  char next;
  return !Valid() || (Readable(0) && recv(socket_, &next, 1, MSG_PEEK) <= 0);
}

void LoopbackSocket::Close() {
  if (Valid()) closesocket(std::exchange(socket_, INVALID_SOCKET));
}

}  // namespace zeb
