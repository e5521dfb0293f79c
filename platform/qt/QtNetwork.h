// QtNetwork: TCP sockets for a QtLoop: the system's for what listens and is accepted, Qt Network's for
// clients.
//
// Names are looked up without blocking. Accepted and outgoing sockets send small pieces at once and find out
// about dead peers. TLS checks the server's certificate against the system's authorities and those of
// AddCaFile. It leaves a part of the process's descriptors to files and workers: past that, nobody may listen
// (with the reason), and who connects is turned away (onTrouble). The limit is the one in force when the
// network is made. Sockets may outlive the network, though not the loop.
#pragma once

#include <memory>
#include <string>

#include "platform/Tcp.h"

namespace zeb {

class QtLoop;
struct QtNetworkState;

class QtNetwork : public Network {
 public:
  explicit QtNetwork(QtLoop& loop);
  ~QtNetwork() override;

  // Trusts the certificates in a PEM file too, for later ConnectTls calls.
  Outcome AddCaFile(const std::string& path);

  std::unique_ptr<TcpListener> MakeListener() override;
  std::shared_ptr<TcpClientControl> MakeClient() override;

 private:
  std::shared_ptr<QtNetworkState> state_;  // shared with the sockets
};

}  // namespace zeb
