#include "outputs/test/ConnectionTest.h"

#include <cstdint>
#include <memory>

namespace zeb {

bool TestConnection(EventLoop& loop, Network& network, const RequestTarget& target, TestSteps& steps,
                    const std::string& what) {
  const std::string server = ServerText(target) + what;
  if (target.host.empty()) return steps.Add("connection", Failure{"no server is set"});
  if (target.port < 1 || target.port > 65535)
    return steps.Add("connection to " + server, Failure{"a port is a number from 1 to 65535"});
  const std::shared_ptr<TcpClientControl> client = network.MakeClient();
  const auto port = static_cast<std::uint16_t>(target.port);
  if (target.tls)
    client->ConnectTls(target.host, port);
  else
    client->Connect(target.host, port);
  const bool ended = loop.WaitUntil(
      [&client] {
        const TcpClientControl::State state = client->CurrentState();
        return state != TcpClientControl::kResolving && state != TcpClientControl::kConnecting;
      },
      kTestStepLimit);
  const TcpClientControl::Progress reached = client->Reached();
  std::string why = client->LastError();
  client->Close();
  if (why.empty()) why = ended ? "the server closed the connection" : "no answer within 10 seconds";
  const auto outcome = [&](TcpClientControl::Progress needed) {
    return reached >= needed ? Outcome() : Outcome(Failure{why});
  };
  if (!steps.Add("look-up of " + HostForHeader(target.host), outcome(TcpClientControl::kNameFound)))
    return false;
  if (!steps.Add("connection to " + server, outcome(TcpClientControl::kServerReached))) return false;
  return !target.tls || steps.Add("TLS with " + server, outcome(TcpClientControl::kReady));
}

}  // namespace zeb
