// What any LocalSockets must do, checked against both the simulated and the real one. A suite supplies the
// sockets, a path to listen on, and how to let events happen until a condition holds.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/LocalSockets.h"

namespace zeb {

struct LocalPeer {
  std::unique_ptr<TcpConnection> connection;
  std::string received;
  bool closed = false;

  explicit LocalPeer(std::unique_ptr<TcpConnection> given) : connection(std::move(given)) {
    if (!connection) return;
    connection->onData = [this](std::string_view bytes) { received += bytes; };
    connection->onClosed = [this] { closed = true; };
  }
};

struct LocalServer {
  std::unique_ptr<LocalListener> listener;
  std::vector<std::unique_ptr<LocalPeer>> peers;

  explicit LocalServer(LocalSockets& sockets) : listener(sockets.MakeLocalListener()) {
    listener->onConnection = [this](std::unique_ptr<TcpConnection> connection) {
      peers.push_back(std::make_unique<LocalPeer>(std::move(connection)));
    };
  }
};

template <class Fixture>
struct LocalSocketsContract : Fixture {};

TYPED_TEST_SUITE_P(LocalSocketsContract);

TYPED_TEST_P(LocalSocketsContract, BytesArriveBothWaysAndBeforeTheClose) {
  LocalServer server(this->Sockets());
  ASSERT_TRUE(server.listener->Listen(this->Path()));
  LocalLink link = this->Sockets().ConnectLocal(this->Path());
  ASSERT_TRUE(link.connection) << link.problem;
  LocalPeer client(std::move(link.connection));
  client.connection->Send("one ");
  client.connection->Send("two");
  ASSERT_TRUE(
      this->Until([&] { return server.peers.size() == 1 && server.peers[0]->received == "one two"; }));
  EXPECT_EQ(server.peers[0]->connection->PeerAddress(), "local");
  EXPECT_EQ(server.peers[0]->connection->PeerPort(), 0);
  server.peers[0]->connection->Send(std::string(3'000'000, 'x'));
  server.peers[0]->connection->Close();
  server.peers[0]->connection.reset();
  ASSERT_TRUE(this->Until([&] { return client.closed; }));
  EXPECT_EQ(client.received.size(), 3'000'000u);
  EXPECT_FALSE(server.peers[0]->closed) << "not after Close";
}

TYPED_TEST_P(LocalSocketsContract, NobodyListeningIsTold) {
  const LocalLink before = this->Sockets().ConnectLocal(this->Path());
  EXPECT_FALSE(before.connection);
  EXPECT_TRUE(before.nobodyListens);
  EXPECT_NE(before.problem.find(this->Path()), std::string::npos) << before.problem;
  LocalServer server(this->Sockets());
  ASSERT_TRUE(server.listener->Listen(this->Path()));
  server.listener->Close();
  EXPECT_TRUE(this->Sockets().ConnectLocal(this->Path()).nobodyListens);
  EXPECT_FALSE(server.listener->AdmitGroup("root"));
}

TYPED_TEST_P(LocalSocketsContract, TheSocketOfSomebodyWhoListensIsNotTakenAway) {
  LocalServer first(this->Sockets()), second(this->Sockets());
  ASSERT_TRUE(first.listener->Listen(this->Path()));
  const Outcome taken = second.listener->Listen(this->Path());
  EXPECT_EQ(taken.Reason(), "cannot listen on '" + this->Path() + "': another program does");
  second.listener.reset();
  LocalLink link = this->Sockets().ConnectLocal(this->Path());
  ASSERT_TRUE(link.connection) << link.problem;
  ASSERT_TRUE(this->Until([&] { return !first.peers.empty() && first.peers.back()->connection; }));
  first.listener->Close();
  LocalServer third(this->Sockets());
  EXPECT_TRUE(third.listener->Listen(this->Path()));
}

TYPED_TEST_P(LocalSocketsContract, CallbacksMayDestroyTheirObject) {
  auto listener = this->Sockets().MakeLocalListener();
  std::unique_ptr<TcpConnection> kept;
  listener->onConnection = [&](std::unique_ptr<TcpConnection> connection) {
    kept = std::move(connection);
    listener.reset();
  };
  ASSERT_TRUE(listener->Listen(this->Path()));
  LocalLink link = this->Sockets().ConnectLocal(this->Path());
  ASSERT_TRUE(link.connection) << link.problem;
  ASSERT_TRUE(this->Until([&] { return kept && !listener; }));
  kept->onData = [&](std::string_view) { kept.reset(); };
  link.connection->onClosed = [&] { link.connection.reset(); };
  link.connection->Send("x");
  EXPECT_TRUE(this->Until([&] { return !kept && !link.connection; }));
}

REGISTER_TYPED_TEST_SUITE_P(LocalSocketsContract, BytesArriveBothWaysAndBeforeTheClose, NobodyListeningIsTold,
                            TheSocketOfSomebodyWhoListensIsNotTakenAway, CallbacksMayDestroyTheirObject);

}  // namespace zeb
