// SocketConnection: an accepted connection. Private to QtNetwork.
//
// One call to the system for what arrives at once, and one for what is sent: the control link is the way of
// every item. It reads at most 64 KiB a turn, so that a peer that floods it gets no more than its turn.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Tcp.h"

namespace zeb {

class QtLoop;
struct QtNetworkState;

class SocketConnection : public TcpConnection {
 public:
  struct Peer {
    std::string address;
    std::uint16_t port = 0;
  };
  // What of the network's budget a connection has taken, given back with it.
  using Place = std::shared_ptr<void>;

  // Takes the descriptor over. Bytes are read from the next turn of the loop on.
  SocketConnection(std::shared_ptr<QtNetworkState> network, int descriptor, Peer peer, Place place);
  ~SocketConnection() override;

  void Send(std::string_view bytes) override;
  std::size_t UnsentBytes() const override;
  void Close() override;
  std::string PeerAddress() const override { return peer_.address; }
  std::uint16_t PeerPort() const override { return peer_.port; }

  class Stream;

 private:
  Peer peer_;
  std::shared_ptr<Stream> stream_;
};

}  // namespace zeb
