// SocketListener: a listening socket. Private to QtNetwork.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/Tcp.h"

namespace zeb {

struct QtNetworkState;

class SocketListener : public TcpListener {
 public:
  explicit SocketListener(std::shared_ptr<QtNetworkState> network);
  ~SocketListener() override;

  Outcome Listen(const std::string& address, std::uint16_t port) override;
  void Close() override;
  std::uint16_t Port() const override;

 private:
  class Places;
  struct Open;

  void Watch();
  void Accept(const std::weak_ptr<Open>& open);
  bool AcceptOne();
  void Pause(int error);
  void TellTrouble(const std::string& what);

  std::shared_ptr<QtNetworkState> network_;
  std::shared_ptr<Open> open_;  // from Listen to Close
};

}  // namespace zeb
