#include <QTcpServer>
#include <QTcpSocket>

#include "platform/qt/HostLookUp.h"
#include "platform/qt/QtNetwork.h"
#include "tests/platform/NetworkContract.h"
#include "tests/qt/QtFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

struct Real : QtFixture {
  QtNetwork network{loop};
  Network& Net() { return network; }
  std::string Host() { return "127.0.0.1"; }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Real, NetworkContract, Real);

using QtNetworkTest = Real;

TEST_F(QtNetworkTest, NamesAndIpv6LiteralsReachAListenerOnAllInterfaces) {
  RecordingServer server(network);
  for (const char* host : {"localhost", "::1", "[::1]", "127.0.0.1"}) {
    RecordingClient client(network);
    client.control->Connect(host, server.Port());
    EXPECT_NE(client.control->CurrentState(), TcpClientControl::kConnected);
    ASSERT_TRUE(Until([&] { return client.connected == 1; })) << host << ": " << client.control->LastError();
  }
  ASSERT_TRUE(Until([&] { return server.peers.size() == 4; }));
  EXPECT_EQ(server.peers[1]->connection->PeerAddress(), "::1");
  EXPECT_EQ(server.peers[3]->connection->PeerAddress(), "127.0.0.1");
}

// On most machines the name stands for 127.0.0.1 and ::1.
TEST_F(QtNetworkTest, EachAddressOfANameIsTried) {
  std::uint16_t closed = 0;
  const HostAddresses localhost = LookUpHost("localhost");
  ASSERT_FALSE(localhost.addresses.empty()) << localhost.problem;
  for (const std::string& address : localhost.addresses) {
    RecordingServer server(network, address);
    RecordingClient client(network);
    client.control->Connect("localhost", server.Port());
    ASSERT_TRUE(Until([&] { return client.connected == 1; }))
        << address << ": " << client.control->LastError();
    ASSERT_TRUE(Until([&] { return server.peers.size() == 1; }));
    EXPECT_EQ(server.peers[0]->connection->PeerAddress(), address);
    EXPECT_EQ(client.closed, 0);
    closed = server.Port();
  }
  RecordingClient client(network);
  client.control->Connect("localhost", closed);
  ASSERT_TRUE(Until([&] { return client.closed == 1; }));
  EXPECT_EQ(client.connected, 0);
  EXPECT_EQ(client.control->LastError(),
            "cannot connect to localhost:" + std::to_string(closed) + ": Connection refused");
}

TEST_F(QtNetworkTest, ALookUpWhoseUserHasGoneTellsNobody) {
  for (int i = 0; i < 50; ++i) {
    RecordingClient client(network);
    client.control->Connect("localhost", 9);
    if (i % 2 == 0) client.control->Close();
    EXPECT_EQ(client.connected + client.closed, 0);
  }
  RecordingServer server(network);
  RecordingClient client(network);
  client.control->Connect("localhost", server.Port());
  EXPECT_TRUE(Until([&] { return client.connected == 1; })) << client.control->LastError();
}

TEST_F(QtNetworkTest, AnUnknownNameFailsWithoutBlocking) {
  RecordingClient client(network);
  client.control->Connect("no-such-host.invalid", 80);
  EXPECT_EQ(client.control->CurrentState(), TcpClientControl::kResolving);
  ASSERT_TRUE(Until([&] { return client.closed == 1; }));
  EXPECT_EQ(client.control->CurrentState(), TcpClientControl::kError);
  EXPECT_NE(client.control->LastError().find("no-such-host.invalid"), std::string::npos);
}

TEST_F(QtNetworkTest, WhatIsNoAddressCannotBeListenedOn) {
  const auto listener = network.MakeListener();
  const Outcome outcome = listener->Listen("everywhere", 0);
  EXPECT_EQ(outcome.Reason(), "cannot listen on 'everywhere': not an address");
  EXPECT_EQ(listener->Port(), 0);
}

TEST_F(QtNetworkTest, AConnectionThatBreaksWithBytesOnTheWaySaysSo) {
  RecordingServer server(network);
  RecordingClient client(network);
  client.control->Connect("127.0.0.1", server.Port());
  ASSERT_TRUE(Until([&] { return client.connected == 1 && server.peers.size() == 1; }));
  server.peers[0]->connection->onData = [&](std::string_view) { server.peers[0]->connection.reset(); };
  client.control->SendData(std::string(20'000'000, 'x'));
  ASSERT_TRUE(Until([&] { return client.closed == 1; }));
  EXPECT_EQ(client.control->CurrentState(), TcpClientControl::kError);
  // The system may be quicker to say why than we are to see that bytes are left.
  const std::string lost = "lost the connection to 127.0.0.1:" + std::to_string(server.Port()) + ": ";
  EXPECT_TRUE(client.control->LastError().starts_with(lost)) << client.control->LastError();
}

TEST_F(QtNetworkTest, APeerThatDoesNotReadKeepsBytesUnsent) {
  QTcpServer server;  // accepts and never reads
  ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
  RecordingClient client(network);
  client.control->Connect("127.0.0.1", server.serverPort());
  ASSERT_TRUE(Until([&] { return client.connected == 1 && server.hasPendingConnections(); }));
  const std::unique_ptr<QTcpSocket> peer(server.nextPendingConnection());
  peer->setReadBufferSize(1);
  client.control->SendData(std::string(20'000'000, 'x'));
  EXPECT_FALSE(Until([&] { return client.control->UnsentBytes() == 0; }, 200ms));
  client.control->Close();
  EXPECT_EQ(client.control->CurrentState(), TcpClientControl::kClosing);
  peer->setReadBufferSize(0);
  QObject::connect(peer.get(), &QTcpSocket::readyRead, peer.get(), [&] { peer->readAll(); });
  peer->readAll();
  EXPECT_TRUE(Until([&] { return client.control->CurrentState() == TcpClientControl::kClosed; }));
}

}  // namespace
}  // namespace zeb
