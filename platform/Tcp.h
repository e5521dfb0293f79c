// The TCP ports: a listener, an accepted connection, and a client control.
//
// Callbacks run on the loop's thread, never from inside the call that caused them. A callback may destroy the
// object that calls it. Nothing here blocks: Send queues what the peer does not take yet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Control.h"
#include "platform/Result.h"

namespace zeb {

// An accepted byte stream. Destroying it closes it at once.
class TcpConnection {
 public:
  virtual ~TcpConnection() = default;
  std::function<void(std::string_view bytes)> onData;
  std::function<void()> onClosed;  // the peer closed, or the connection broke; not after Close()

  virtual void Send(std::string_view bytes) = 0;
  virtual std::size_t UnsentBytes() const = 0;
  virtual void Close() = 0;                     // what was queued is still sent, as far as the peer takes it
  virtual std::string PeerAddress() const = 0;  // "192.0.2.7", "2001:db8::7"; IPv4-mapped ones as IPv4
  virtual std::uint16_t PeerPort() const = 0;
};

class TcpListener {
 public:
  virtual ~TcpListener() = default;
  std::function<void(std::unique_ptr<TcpConnection>)> onConnection;
  // Somebody could not be let in for want of descriptors or memory: why, in one line. May come often.
  std::function<void(const std::string& what)> onTrouble;

  // An empty address listens on all interfaces, IPv4 and IPv6. Port 0 takes a free one (see Port).
  virtual Outcome Listen(const std::string& address, std::uint16_t port) = 0;
  virtual void Close() = 0;
  virtual std::uint16_t Port() const = 0;
};

// A client connection with the states of the field's classic socket control. Reusable after Close.
class TcpClientControl : public Control {
 public:
  enum State { kClosed = 0, kResolving = 4, kConnecting = 6, kConnected = 7, kClosing = 8, kError = 9 };

  std::function<void()> onConnected;
  std::function<void(std::string_view bytes)> onData;
  std::function<void()> onClosed;  // refused, broken, or closed by the peer; not after Close()

  virtual State CurrentState() const = 0;
  virtual void Connect(const std::string& host, std::uint16_t port) = 0;
  // As Connect, then TLS with the server's certificate checked against `host`; connected when both stand.
  virtual void ConnectTls(const std::string& host, std::uint16_t port) = 0;
  virtual void SendData(std::string_view bytes) = 0;
  virtual std::size_t UnsentBytes() const = 0;
  // Sends what is queued, then closes: kClosing until it is sent, kClosed at once when nothing is. A Connect
  // meanwhile does not take it back, nor does destroying the control. Destroying an open one closes it at
  // once.
  virtual void Close() = 0;
  virtual std::string LastError() const = 0;  // why the last connection failed or broke; "" when it did not

  // How far the last attempt to connect has got; kept when it fails or the connection ends.
  enum Progress { kNowhere, kNameFound, kServerReached, kReady };
  virtual Progress Reached() const = 0;
};

// Makes sockets.
class Network {
 public:
  virtual ~Network() = default;
  virtual std::unique_ptr<TcpListener> MakeListener() = 0;
  virtual std::shared_ptr<TcpClientControl> MakeClient() = 0;
};

}  // namespace zeb
