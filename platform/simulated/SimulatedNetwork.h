// SimulatedNetwork: sockets without a network, and local ones without files, on a SimulatedLoop.
//
// A client made here that connects to ("any host", port) reaches a listener made here that listens on the
// port. Tests script the rest: hosts that do not resolve, refuse, or hang; peers that stop reading.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "platform/LocalSockets.h"
#include "platform/Tcp.h"
#include "platform/simulated/SimulatedLoop.h"

namespace zeb {

class SimulatedNetwork : public Network, public LocalSockets {
 public:
  explicit SimulatedNetwork(EventLoop& loop);
  ~SimulatedNetwork() override;
  std::unique_ptr<TcpListener> MakeListener() override;
  std::shared_ptr<TcpClientControl> MakeClient() override;
  std::unique_ptr<LocalListener> MakeLocalListener() override;
  LocalLink ConnectLocal(const std::string& path) override;

  enum class HostBehaviour {
    kNormal,
    kUnknownName,
    kNeverFound,  // its name server does not answer
    kRefuses,
    kHangs,            // never connects, never fails
    kWrongCertificate  // connects, but not with TLS
  };
  void SetHost(const std::string& host, HostBehaviour behaviour);
  // Listen on this port fails ("in use").
  void BlockPort(std::uint16_t port);
  // While on, no receiver takes bytes: they count as unsent.
  void StopReading(bool on);
  // The address that listeners see of later connections; "127.0.0.1" at first.
  void SetClientAddress(std::string address);

  struct State;  // shared by the sockets

 private:
  std::shared_ptr<State> state_;
};

}  // namespace zeb
