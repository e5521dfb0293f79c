// What any Network must do, checked against both the simulated and the real one. A suite supplies the loop,
// the network, a host name that reaches its listeners, and how to let events happen until a condition holds.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/EventLoop.h"
#include "platform/Tcp.h"

namespace zeb {

// A listener that keeps its connections and what they say.
struct RecordingServer {
  struct Peer {
    std::unique_ptr<TcpConnection> connection;
    std::string received;
    bool closed = false;
  };
  std::unique_ptr<TcpListener> listener;
  std::vector<std::unique_ptr<Peer>> peers;

  explicit RecordingServer(Network& network, const std::string& address = "")
      : listener(network.MakeListener()) {
    listener->onConnection = [this](std::unique_ptr<TcpConnection> connection) {
      Peer* peer = peers.emplace_back(std::make_unique<Peer>()).get();
      peer->connection = std::move(connection);
      peer->connection->onData = [peer](std::string_view bytes) { peer->received += bytes; };
      peer->connection->onClosed = [peer] { peer->closed = true; };
    };
    const Outcome listening = listener->Listen(address, 0);
    EXPECT_TRUE(listening) << listening.Reason();
  }
  std::uint16_t Port() const { return listener->Port(); }
};

// A client with a log of what happened to it.
struct RecordingClient {
  std::shared_ptr<TcpClientControl> control;
  std::string received;
  int connected = 0, closed = 0;

  explicit RecordingClient(Network& network) : control(network.MakeClient()) {
    control->onConnected = [this] { ++connected; };
    control->onData = [this](std::string_view bytes) { received += bytes; };
    control->onClosed = [this] { ++closed; };
  }
};

template <class Fixture>
struct NetworkContract : Fixture {};

TYPED_TEST_SUITE_P(NetworkContract);

TYPED_TEST_P(NetworkContract, BytesArriveBothWaysAndInOrder) {
  RecordingServer server(this->Net());
  RecordingClient client(this->Net());
  client.control->Connect(this->Host(), server.Port());
  EXPECT_EQ(client.connected, 0) << "not from inside the call";
  ASSERT_TRUE(this->Until([&] { return client.connected == 1 && server.peers.size() == 1; }));
  EXPECT_EQ(client.control->CurrentState(), TcpClientControl::kConnected);
  TcpConnection& connection = *server.peers[0]->connection;
  EXPECT_EQ(connection.PeerAddress(), "127.0.0.1");
  EXPECT_NE(connection.PeerPort(), 0);
  client.control->SendData("one ");
  client.control->SendData("two");
  connection.Send("three");
  EXPECT_EQ(client.control->UnsentBytes(), 7u);
  ASSERT_TRUE(
      this->Until([&] { return server.peers[0]->received == "one two" && client.received == "three"; }));
  EXPECT_EQ(client.control->UnsentBytes(), 0u);
}

TYPED_TEST_P(NetworkContract, MuchDataArrivesWhole) {
  RecordingServer server(this->Net());
  RecordingClient client(this->Net());
  std::size_t largest = 0, total = 0;
  client.control->onData = [&](std::string_view bytes) {
    largest = std::max(largest, bytes.size());
    total += bytes.size();
  };
  client.control->Connect(this->Host(), server.Port());
  ASSERT_TRUE(this->Until([&] { return server.peers.size() == 1; }));
  server.peers[0]->connection->Send(std::string(5'000'000, 'x'));
  server.peers[0]->connection->Close();
  ASSERT_TRUE(this->Until([&] { return client.closed == 1; })) << "bytes come before the close";
  EXPECT_EQ(total, 5'000'000u);
  EXPECT_LE(largest, 64u * 1024);
  EXPECT_EQ(client.control->CurrentState(), TcpClientControl::kClosed);
  EXPECT_EQ(client.control->LastError(), "");
}

TYPED_TEST_P(NetworkContract, CloseSendsWhatIsQueuedEvenWhenTheConnectionGoes) {
  RecordingServer server(this->Net());
  RecordingClient client(this->Net());
  client.control->Connect(this->Host(), server.Port());
  ASSERT_TRUE(this->Until([&] { return client.connected == 1 && server.peers.size() == 1; }));
  auto peer = std::move(server.peers[0]);
  peer->connection->Send("-Good bye\r\n");
  peer->connection->Close();
  peer->connection.reset();
  ASSERT_TRUE(this->Until([&] { return client.closed == 1; }));
  EXPECT_EQ(client.received, "-Good bye\r\n");
  EXPECT_FALSE(peer->closed) << "not after Close";
}

TYPED_TEST_P(NetworkContract, AClientIsReusable) {
  RecordingServer server(this->Net());
  RecordingClient client(this->Net());
  for (std::size_t round = 1; round <= 3; ++round) {
    client.control->Connect(this->Host(), server.Port());
    ASSERT_TRUE(this->Until([&] { return client.connected == static_cast<int>(round); }));
    client.control->SendData("round");
    client.control->Close();
    ASSERT_TRUE(this->Until([&] {
      return server.peers.size() == round && server.peers.back()->closed &&
             client.control->CurrentState() == TcpClientControl::kClosed;
    }));
    EXPECT_EQ(server.peers.back()->received, "round");
  }
  EXPECT_EQ(client.closed, 0) << "not after Close";
}

TYPED_TEST_P(NetworkContract, AConnectRightAfterCloseDoesNotTakeBackWhatWasSent) {
  RecordingServer server(this->Net());
  RecordingClient client(this->Net());
  client.control->Connect(this->Host(), server.Port());
  ASSERT_TRUE(this->Until([&] { return client.connected == 1; }));
  client.control->SendData("first");
  client.control->Close();
  client.control->Connect(this->Host(), server.Port());
  ASSERT_TRUE(this->Until([&] { return client.connected == 2 && server.peers.size() == 2; }));
  client.control->SendData("second");
  ASSERT_TRUE(this->Until([&] { return server.peers[0]->closed && server.peers[1]->received == "second"; }));
  EXPECT_EQ(server.peers[0]->received, "first");
}

TYPED_TEST_P(NetworkContract, ARefusedConnectionSaysSoInOneLine) {
  std::uint16_t port = 0;
  {
    RecordingServer server(this->Net());
    port = server.Port();
  }
  RecordingClient client(this->Net());
  client.control->Connect(this->Host(), port);
  ASSERT_TRUE(this->Until([&] { return client.closed == 1; }));
  EXPECT_EQ(client.connected, 0);
  EXPECT_EQ(client.control->CurrentState(), TcpClientControl::kError);
  EXPECT_NE(client.control->LastError().find("refused"), std::string::npos) << client.control->LastError();
  EXPECT_EQ(client.control->LastError().find('\n'), std::string::npos);
  RecordingServer server(this->Net());
  client.control->Connect(this->Host(), server.Port());
  EXPECT_EQ(client.control->LastError(), "");
  EXPECT_TRUE(this->Until([&] { return client.connected == 1; }));
}

TYPED_TEST_P(NetworkContract, AnAttemptGivenUpIsNotHeardOfAgain) {
  RecordingServer server(this->Net());
  RecordingClient client(this->Net()), other(this->Net());
  client.control->Connect(this->Host(), server.Port());
  client.control->Close();
  EXPECT_EQ(client.control->CurrentState(), TcpClientControl::kClosed);
  other.control->Connect(this->Host(), server.Port());
  ASSERT_TRUE(this->Until([&] { return other.connected == 1; }));
  EXPECT_EQ(client.connected + client.closed, 0);
}

TYPED_TEST_P(NetworkContract, CallbacksMayDestroyTheirObject) {
  RecordingServer server(this->Net());
  RecordingClient data(this->Net()), connected(this->Net()), closed(this->Net());
  data.control->onData = [&](std::string_view) { data.control.reset(); };
  connected.control->onConnected = [&] { connected.control.reset(); };
  closed.control->onClosed = [&] { closed.control.reset(); };
  data.control->Connect(this->Host(), server.Port());
  ASSERT_TRUE(this->Until([&] { return server.peers.size() == 1; }));
  connected.control->Connect(this->Host(), server.Port());
  ASSERT_TRUE(this->Until([&] { return server.peers.size() == 2; }));
  closed.control->Connect(this->Host(), server.Port());
  ASSERT_TRUE(this->Until([&] { return server.peers.size() == 3 && closed.connected == 1; }));
  server.peers[0]->connection->Send("x");
  server.peers[2]->connection->onData = [&](std::string_view) { server.peers[2]->connection.reset(); };
  closed.control->SendData("x");
  EXPECT_TRUE(this->Until([&] {
    return !data.control && !connected.control && !closed.control && server.peers[0]->closed &&
           server.peers[1]->closed && !server.peers[2]->connection;
  }));
}

TYPED_TEST_P(NetworkContract, AListenerMayCloseInItsCallbackAndItsPortIsFreeAgain) {
  std::unique_ptr<TcpListener> listener = this->Net().MakeListener();
  std::unique_ptr<TcpConnection> kept;
  listener->onConnection = [&](std::unique_ptr<TcpConnection> connection) {
    kept = std::move(connection);
    listener.reset();
  };
  ASSERT_TRUE(listener->Listen("127.0.0.1", 0));
  const std::uint16_t port = listener->Port();
  const std::unique_ptr<TcpListener> second = this->Net().MakeListener();
  const Outcome taken = second->Listen("127.0.0.1", port);
  EXPECT_FALSE(taken);
  EXPECT_NE(taken.Reason().find(std::to_string(port)), std::string::npos) << taken.Reason();
  RecordingClient client(this->Net());
  client.control->Connect(this->Host(), port);
  ASSERT_TRUE(this->Until([&] { return kept && client.connected == 1; }));
  EXPECT_FALSE(listener);
  kept->Send("still open");
  EXPECT_TRUE(this->Until([&] { return client.received == "still open"; }));
  const Outcome freed = second->Listen("127.0.0.1", port);
  EXPECT_TRUE(freed) << freed.Reason();
}

REGISTER_TYPED_TEST_SUITE_P(NetworkContract, BytesArriveBothWaysAndInOrder, MuchDataArrivesWhole,
                            CloseSendsWhatIsQueuedEvenWhenTheConnectionGoes, AClientIsReusable,
                            AConnectRightAfterCloseDoesNotTakeBackWhatWasSent,
                            ARefusedConnectionSaysSoInOneLine, AnAttemptGivenUpIsNotHeardOfAgain,
                            CallbacksMayDestroyTheirObject,
                            AListenerMayCloseInItsCallbackAndItsPortIsFreeAgain);

}  // namespace zeb
