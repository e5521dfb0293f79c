// Plain blocking sockets on loopback, with a deadline on every call, for tests that play a server's or a
// listener's part against a real program.
#pragma once

#include <cstdint>
#include <string>

namespace zeb {

class Socket {
 public:
  explicit Socket(int handle = -1) : handle_(handle) {}
  ~Socket();
  Socket(Socket&& other) noexcept;
  Socket& operator=(Socket&& other) noexcept;

  static Socket Listen();  // on a free port of 127.0.0.1
  static Socket Connect(int port);

  bool Valid() const { return handle_ >= 0; }
  int Port() const;
  Socket Accept(int milliseconds = 20000) const;
  bool Send(const std::string& bytes) const;
  // Appends what arrives within the time to `received`; false when nothing did, or the peer has closed.
  bool Receive(std::string& received, int milliseconds) const;
  bool Ended() const;  // the peer has closed, and all that it sent was received
  // Reads on until what was received holds `text`; false at the deadline.
  bool ReceiveUntil(std::string& received, const std::string& text, int milliseconds = 20000) const;

 private:
  bool Readable(int milliseconds) const;
  int handle_;
};

// A port that is free now, with the one above it free too.
int FreePortPair();

}  // namespace zeb
