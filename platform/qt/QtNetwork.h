// QtNetwork: TCP sockets on Qt Network, for a QtLoop.
//
// Names are looked up without blocking. Accepted and outgoing sockets send small pieces at once and find out
// about dead peers. TLS checks the server's certificate against the system's authorities and those of
// AddCaFile. Sockets may outlive the network, though not the loop.
#pragma once

#include <memory>
#include <string>

#include "platform/EventLoop.h"
#include "platform/Tcp.h"

namespace zeb {

class QtNetwork : public Network {
 public:
  explicit QtNetwork(EventLoop& loop);
  ~QtNetwork() override;

  // Trusts the certificates in a PEM file too, for later ConnectTls calls.
  Outcome AddCaFile(const std::string& path);

  std::unique_ptr<TcpListener> MakeListener() override;
  std::shared_ptr<TcpClientControl> MakeClient() override;

  struct State;  // shared by the sockets

 private:
  std::shared_ptr<State> state_;
};

}  // namespace zeb
