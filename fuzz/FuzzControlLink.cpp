// The byte stream from the network into the control server and the control link behind it. The input's first
// byte says in what pieces the rest arrives.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "platform/simulated/TestEnvironment.h"
#include "sources/ControlLink.h"
#include "sources/SilentWindow.h"
#include "sources/uNetControlServer.h"

namespace {

using namespace zeb;

struct Station : ServiceEvents {
  Station() {
    service.SetItemCount(kMaxNextItems);
    uNetControlServer::Events events;
    events.MessageFromController = [this](int index, std::string_view line) {
      link.MessageFromController(index, line);
    };
    events.ControllerTookControl = [this](const std::string&) {
      server->SendToController("GET_INFORMATION");
    };
    events.HelpText = [] { return ControlLink::HelpText(); };
    events.ServiceName = [] { return "Demo FM"; };
    server = std::make_unique<uNetControlServer>(ports.environment, events);
    if (!server->Listen(6901)) std::abort();
  }

  TestEnvironment ports;
  clsZEBService service{ports.environment, nullptr, *this};
  SilentWindow window;
  ItemIntake intake{service, window};
  ControlLink link{intake, ports.carts};
  std::unique_ptr<uNetControlServer> server;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  Station station;
  const std::size_t piece = data[0] + std::size_t{1};
  const std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
  const auto client = station.ports.network.MakeClient();
  std::string received;
  client->onData = [&](std::string_view part) { received += part; };
  client->Connect("station", 6901);
  station.ports.loop.RunPosted();
  client->SendData("NET_CONTROL_LOGON fuzz\r\n");
  for (std::size_t at = 0; at < bytes.size(); at += piece) {
    client->SendData(bytes.substr(at, piece));
    station.ports.loop.RunPosted();
  }
  station.ports.loop.RunPosted();
  // No line of a client ends the server or its own connection, and all of the server's lines are whole.
  if (!received.starts_with("NET_CONTROL_GRANTED\r\nGET_INFORMATION\r\n")) std::abort();
  if (!received.ends_with("\r\n") || station.server->ConnectionCount() != 1) std::abort();
  return 0;
}
