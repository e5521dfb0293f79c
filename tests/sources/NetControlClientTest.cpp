#include "platform/simulated/TestEnvironment.h"
#include "sources/uNetControlClient.h"
#include "sources/uNetControlServer.h"

namespace zeb {
namespace {

using Lines = std::vector<std::string>;
using State = uNetControlClient::State;

struct ControlClient : testing::Test {
  ControlClient() {
    uNetControlServer::Events events;
    events.MessageFromController = [this](int, std::string_view line) { arrived.emplace_back(line); };
    server = std::make_unique<uNetControlServer>(ports.environment, events);
    EXPECT_TRUE(server->Listen(6901));
  }
  std::unique_ptr<uNetControlClient> Make() {
    uNetControlClient::Events events;
    const auto note = [this](const char* what) { return [this, what] { Hear(what); }; };
    events.Connecting = note("connecting");
    events.Connected = note("connected");
    events.ControlGranted = note("granted");
    events.ControlEnded = note("ended");
    events.Disconnected = note("disconnected");
    events.ControlRefused = [this](const std::string& by) { Hear("refused by " + by); };
    events.Message = [this](std::string_view line) { Hear("message " + std::string(line)); };
    return std::make_unique<uNetControlClient>(ports.loop, ports.network, events);
  }
  void Hear(const std::string& what) {
    heard.push_back(what);
    if (onEvent) onEvent(what);
  }
  void Connect(uNetControlClient& client, const std::string& name) {
    client.Connect("station", 6901, name);
    ports.loop.RunPosted();
  }
  Lines Heard() { return std::exchange(heard, {}); }

  TestEnvironment ports;
  Lines arrived, heard;
  std::function<void(const std::string&)> onEvent;
  std::unique_ptr<uNetControlServer> server;
};

TEST_F(ControlClient, TakesAndLosesControl) {
  const auto client = Make();
  client->Send("too early");
  Connect(*client, "ZEB.Radio");
  EXPECT_EQ(Heard(), (Lines{"connecting", "connected", "granted"}));
  EXPECT_EQ(server->ControllerName(), "ZEB.Radio");
  server->SendToController("GET_INFORMATION");
  client->Send("UPDATE");
  ports.loop.RunPosted();
  EXPECT_EQ(arrived, Lines{"UPDATE"});
  EXPECT_EQ(Heard(), Lines{"message GET_INFORMATION"});

  const auto other = Make();
  Connect(*other, "Two");
  EXPECT_EQ(Heard(), (Lines{"connecting", "connected", "refused by ZEB.Radio"}));
  EXPECT_EQ(other->CurrentState(), State::kRefused);
  other->Send("without control");
  ports.loop.RunPosted();
  EXPECT_EQ(Heard(), Lines{});

  client->Send("NET_CONTROL_LOGOFF");
  ports.loop.RunPosted();
  EXPECT_EQ(client->CurrentState(), State::kControlEnded);
  server->Close();
  ports.loop.RunPosted();
  EXPECT_EQ(Heard(), (Lines{"ended", "disconnected", "disconnected"}));
  EXPECT_EQ(client->CurrentState(), State::kDisconnected);
}

TEST_F(ControlClient, LogsOffWhenItLeaves) {
  const auto client = Make();
  Connect(*client, "One");
  client->Disconnect();
  ports.loop.RunPosted();
  EXPECT_EQ(server->ControllerName(), "");
  EXPECT_EQ(Heard(), (Lines{"connecting", "connected", "granted"}));
  Connect(*client, "One more");  // and may come back
  client->Connect("station", 6901, "Line\r\nBreak");
  ports.loop.RunPosted();
  EXPECT_EQ(server->ControllerName(), "Line Break");
}

TEST_F(ControlClient, TellsWhyItFailed) {
  const auto client = Make();
  ports.network.SetHost("station", SimulatedNetwork::HostBehaviour::kRefuses);
  Connect(*client, "One");
  EXPECT_EQ(Heard(), (Lines{"connecting", "disconnected"}));
  EXPECT_NE(client->LastError().find("refused"), std::string::npos);
  ports.network.SetHost("station", SimulatedNetwork::HostBehaviour::kNormal);
  Connect(*client, "One");
  EXPECT_EQ(client->LastError(), "");
  ports.network.StopReading(true);
  for (int i = 0; i < 5; ++i) client->Send(std::string(1024 * 1024, 'x'));
  EXPECT_EQ(client->CurrentState(), State::kDisconnected);
  EXPECT_NE(client->LastError().find("does not read"), std::string::npos);
}

TEST_F(ControlClient, AnyEventMayDestroyIt) {
  for (const char* last : {"connecting", "connected", "granted", "message x"}) {
    auto client = Make();
    onEvent = [&](const std::string& what) {
      if (what == last) client.reset();
    };
    client->Connect("station", 6901, "One");
    ports.loop.RunPosted();
    server->SendToController("x");
    server->SendToController("y");
    ports.loop.RunPosted();
    EXPECT_FALSE(client) << last;
    EXPECT_EQ(Heard().back(), last);
    EXPECT_EQ(server->ConnectionCount(), 0);
  }
  auto client = Make();
  onEvent = [&](const std::string& what) {
    if (what == "disconnected") client.reset();
  };
  Connect(*client, "One");
  server.reset();
  ports.loop.RunPosted();
  EXPECT_FALSE(client);
}

}  // namespace
}  // namespace zeb
