#include "tests/net/Sockets.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <utility>

namespace zeb {
namespace {

sockaddr_in Loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

Socket ListenOn(int port) {
  Socket none;
  const int handle = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_in address = Loopback(port);
  if (::bind(handle, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(handle, 8) != 0) {
    ::close(handle);
    return none;
  }
  return Socket(handle);
}

}  // namespace

Socket::~Socket() {
  if (handle_ >= 0) ::close(handle_);
}

Socket::Socket(Socket&& other) noexcept : handle_(std::exchange(other.handle_, -1)) {}

Socket& Socket::operator=(Socket&& other) noexcept {
  std::swap(handle_, other.handle_);
  return *this;
}

Socket Socket::Listen() {
  return ListenOn(0);
}

Socket Socket::Connect(int port) {
  Socket made(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_in address = Loopback(port);
  if (::connect(made.handle_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    return Socket();
  return made;
}

int Socket::Port() const {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  ::getsockname(handle_, reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

bool Socket::Readable(int milliseconds) const {
  pollfd waiting{handle_, POLLIN, 0};
  return ::poll(&waiting, 1, milliseconds) == 1;
}

Socket Socket::Accept(int milliseconds) const {
  return Readable(milliseconds) ? Socket(::accept4(handle_, nullptr, nullptr, SOCK_CLOEXEC)) : Socket();
}

bool Socket::Send(const std::string& bytes) const {
  return ::send(handle_, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

bool Socket::Receive(std::string& received, int milliseconds) const {
  if (!Readable(milliseconds)) return false;
  char piece[65536];
  const ssize_t size = ::recv(handle_, piece, sizeof piece, 0);
  if (size <= 0) return false;
  received.append(piece, static_cast<std::size_t>(size));
  return true;
}

bool Socket::Ended() const {
  char byte = 0;
  return Readable(0) && ::recv(handle_, &byte, 1, MSG_PEEK) <= 0;
}

bool Socket::ReceiveUntil(std::string& received, const std::string& text, int milliseconds) const {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (received.find(text) == std::string::npos) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0 || !Receive(received, static_cast<int>(left.count()))) return false;
  }
  return true;
}

// Below the ports that the system gives to those who connect: whoever tries a port of theirs until a server
// answers may in the end be connected to itself, and hold the port. Several tests run at a time: each process
// begins its search somewhere else.
int FreePortPair() {
  constexpr int kFirst = 27200, kPairs = 2700;
  static int candidate = static_cast<int>(::getpid()) * 37;
  for (;;) {
    const int port = kFirst + ++candidate % kPairs * 2;
    if (ListenOn(port).Valid() && ListenOn(port + 1).Valid()) return port;
  }
}

}  // namespace zeb
