// uNetControlClient: the client side of the network control component: connects, logs on as the controller
// under its name, reports what happens, and sends lines. Used by the bounce relay and by zebctl.
//
// Any event may destroy the client, connect it anew or disconnect it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/EventLoop.h"
#include "platform/Tcp.h"

namespace zeb {

class uNetControlClient {
 public:
  static constexpr std::size_t kMaxUnsentBytes = 4 * 1024 * 1024;
  enum class State { kDisconnected, kConnecting, kConnected, kHasControl, kRefused, kControlEnded };
  struct Events {
    std::function<void()> Connecting, Connected, ControlGranted, ControlEnded, Disconnected;
    std::function<void(const std::string& controller)> ControlRefused;
    std::function<void(std::string_view line)> Message;
  };

  uNetControlClient(EventLoop& loop, Network& network, Events events);
  ~uNetControlClient();

  void Connect(const std::string& host, std::uint16_t port, const std::string& name);
  // Logs off first when it has control. Raises no event: who asks for it knows.
  void Disconnect();
  // Gives control back and stays connected; ControlEnded then says that all that was sent has been taken.
  void LogOff();
  State CurrentState() const;
  std::string LastError() const;
  // A server that leaves more than kMaxUnsentBytes unread is disconnected.
  void Send(std::string_view line);
  std::size_t UnsentBytes() const;

 private:
  struct Impl;
  std::shared_ptr<Impl> impl_;
};

}  // namespace zeb
