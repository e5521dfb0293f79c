#include "platform/simulated/SimulatedLoop.h"
#include "platform/simulated/SimulatedNetwork.h"
#include "tests/platform/NetworkContract.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

struct Simulated : testing::Test {
  SimulatedLoop loop;
  SimulatedNetwork network{loop};
  Network& Net() { return network; }
  std::string Host() { return "www.example.org"; }
  bool Until(const std::function<bool()>& condition) { return loop.RunUntil(condition, 0s); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Simulated, NetworkContract, Simulated);

using SimulatedNetworkTest = Simulated;

TEST_F(SimulatedNetworkTest, HostsBehaveAsSet) {
  RecordingServer server(network);
  network.SetHost("unknown", SimulatedNetwork::HostBehaviour::kUnknownName);
  network.SetHost("refuses", SimulatedNetwork::HostBehaviour::kRefuses);
  network.SetHost("hangs", SimulatedNetwork::HostBehaviour::kHangs);
  RecordingClient unknown(network), refuses(network), hangs(network);
  unknown.control->Connect("unknown", server.Port());
  refuses.control->Connect("refuses", server.Port());
  hangs.control->Connect("hangs", server.Port());
  loop.RunFor(1h);
  EXPECT_EQ(unknown.control->LastError(), "cannot find the host 'unknown'");
  EXPECT_NE(refuses.control->LastError().find("refused"), std::string::npos);
  EXPECT_EQ(hangs.control->CurrentState(), TcpClientControl::kConnecting);
  EXPECT_EQ(unknown.closed + refuses.closed * 10 + hangs.closed * 100, 11);
  EXPECT_TRUE(server.peers.empty());
}

TEST_F(SimulatedNetworkTest, APeerThatDoesNotReadKeepsBytesUnsentAndAClosePending) {
  RecordingServer server(network);
  RecordingClient client(network);
  network.SetClientAddress("192.0.2.7");
  client.control->Connect("host", server.Port());
  loop.RunPosted();
  EXPECT_EQ(server.peers.at(0)->connection->PeerAddress(), "192.0.2.7");
  network.StopReading(true);
  client.control->SendData("12345");
  client.control->Close();
  loop.RunFor(1h);
  EXPECT_EQ(client.control->UnsentBytes(), 5u);
  EXPECT_EQ(client.control->CurrentState(), TcpClientControl::kClosing);
  EXPECT_FALSE(server.peers[0]->closed);
  network.StopReading(false);
  loop.RunPosted();
  EXPECT_EQ(server.peers[0]->received, "12345");
  EXPECT_TRUE(server.peers[0]->closed);
  EXPECT_EQ(client.control->CurrentState(), TcpClientControl::kClosed);
}

TEST_F(SimulatedNetworkTest, ABlockedPortCannotBeListenedOn) {
  network.BlockPort(6901);
  const auto listener = network.MakeListener();
  EXPECT_FALSE(listener->Listen("", 6901));
  EXPECT_TRUE(listener->Listen("", 6902));
}

}  // namespace
}  // namespace zeb
