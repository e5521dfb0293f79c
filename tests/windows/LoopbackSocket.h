// A socket of the test's own on this machine. All waits have a limit, in milliseconds.
#pragma once

#include <winsock2.h>

#include <string>
#include <string_view>
#include <utility>

namespace zeb {

class LoopbackSocket {
 public:
  LoopbackSocket() = default;
  explicit LoopbackSocket(SOCKET socket) : socket_(socket) {}
  ~LoopbackSocket() { Close(); }
  LoopbackSocket(LoopbackSocket&& other) noexcept : socket_(std::exchange(other.socket_, INVALID_SOCKET)) {}
  LoopbackSocket& operator=(LoopbackSocket&& other) noexcept {
    std::swap(socket_, other.socket_);
    return *this;
  }

  static LoopbackSocket Listen();
  // Not Valid when nobody listens there.
  static LoopbackSocket Connect(int port);

  bool Valid() const { return socket_ != INVALID_SOCKET; }
  int Port() const;
  LoopbackSocket Accept(int limit) const;
  bool Send(std::string_view bytes) const;
  // Adds what comes; false at the limit, or when the peer has closed.
  bool Receive(std::string& to, int limit) const;
  bool ReceiveUntil(std::string& to, std::string_view text, int limit) const;
  bool Ended() const;  // the peer has closed, or the connection is broken
  void Close();

 private:
  bool Readable(int limit) const;
  SOCKET socket_ = INVALID_SOCKET;
};

}  // namespace zeb
