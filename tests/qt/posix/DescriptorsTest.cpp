// What the network does when the process has no descriptors left, or nearly none.

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <ctime>
#include <deque>

#include "platform/qt/DescriptorBudget.h"
#include "platform/qt/QtNetwork.h"
#include "tests/platform/NetworkContract.h"
#include "tests/posix/FewDescriptors.h"
#include "tests/qt/QtFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

TEST(DescriptorBudgetTest, KeepsAPartForFilesAndHalfOfItForConnections) {
  DescriptorBudget budget(1024);
  EXPECT_EQ(budget.Reserve(), 128u);
  EXPECT_EQ(DescriptorBudget(100).Reserve(), 25u);
  struct {
    std::size_t taken;
    int descriptor;
    bool listener, connection, client;
  } const cases[] = {
      {0, 10, true, true, true},    {894, 10, true, true, true},    {895, 10, false, true, true},
      {959, 10, false, true, true}, {960, 10, false, false, false}, {0, 895, true, true, true},
      {0, 896, false, true, true},  {0, 960, false, false, true},
  };
  for (const auto& one : cases) {
    budget.Take(one.taken);
    EXPECT_EQ(budget.AllowsListener(one.descriptor), one.listener) << one.taken << ' ' << one.descriptor;
    EXPECT_EQ(budget.AllowsConnection(one.descriptor), one.connection) << one.taken << ' ' << one.descriptor;
    EXPECT_EQ(budget.AllowsClient(), one.client) << one.taken;
    budget.GiveBack(one.taken);
  }
  EXPECT_EQ(budget.Reason(), "too many open files, the limit is 1024: raise LimitNOFILE");
  EXPECT_TRUE(DescriptorBudget(0).AllowsListener(1'000'000)) << "no limit";
}

sockaddr_in Loopback(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  return address;
}

// Takes connections and never looks at them.
class SilentServer {
 public:
  SilentServer() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = Loopback(0);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(socket_, reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_EQ(listen(socket_, 128), 0);
    getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
  }
  ~SilentServer() { close(socket_); }
  SilentServer(const SilentServer&) = delete;
  SilentServer& operator=(const SilentServer&) = delete;
  std::uint16_t Port() const { return port_; }

 private:
  int socket_;
  std::uint16_t port_ = 0;
};

struct DescriptorsTest : QtFixture {
  static constexpr rlim_t kLimit = 80;
  FewDescriptors descriptors{kLimit};
  QtNetwork network{loop};
};

TEST_F(DescriptorsTest, AListenerWaitsForDescriptorsToComeBackAndDoesNotSpin) {
  RecordingServer server(network);
  // Listening ends once before, too, for the sanitizer's sake.
  MeetTimers();
  server.listener->Close();
  ASSERT_TRUE(server.listener->Listen("", 0));
  std::vector<std::string> troubles;
  server.listener->onTrouble = [&](const std::string& what) { troubles.push_back(what); };
  sockaddr_in address = Loopback(server.Port());
  const auto connectTo = [&address](int client) {
    EXPECT_EQ(connect(client, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  };
  const int first = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int second = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  connectTo(first);
  ASSERT_TRUE(Until([&] { return server.peers.size() == 1; }));
  descriptors.TakeAllBut(0);
  connectTo(second);

  const MonotonicTime began = loop.Monotonic();
  const std::clock_t work = std::clock();
  EXPECT_TRUE(Until([&] { return troubles.size() == 2; }));
  EXPECT_GE(loop.Monotonic() - began, 1s) << "it asks once a second";
  EXPECT_LT(std::clock() - work, CLOCKS_PER_SEC / 4) << "of processor time";
  EXPECT_EQ(troubles.front(), "cannot take connections: too many open files, the limit is " +
                                  std::to_string(kLimit) + ": raise LimitNOFILE");
  EXPECT_EQ(server.peers.size(), 1u);
  descriptors.GiveBack();
  EXPECT_TRUE(Until([&] { return server.peers.size() == 2; }));
  close(first);
  close(second);
}

TEST_F(DescriptorsTest, WhatDoesNotFitIsRefusedWithTheReasonAndFitsOnceOthersHaveGone) {
  const std::string reason =
      "too many open files, the limit is " + std::to_string(kLimit) + ": raise LimitNOFILE";
  const SilentServer server;
  std::vector<std::unique_ptr<TcpListener>> listeners;
  Outcome outcome;
  while (outcome && listeners.size() < kLimit) {
    listeners.push_back(network.MakeListener());
    outcome = listeners.back()->Listen("127.0.0.1", 0);
  }
  EXPECT_EQ(outcome.Reason(), "cannot listen on 127.0.0.1:0: " + reason);
  EXPECT_GE(listeners.size(), 20u);
  // Connections of ours may go into the reserve, but not use it up.
  std::deque<RecordingClient> clients;
  do {
    clients.emplace_back(network);
    clients.back().control->Connect("127.0.0.1", server.Port());
    ASSERT_TRUE(Until([&] { return clients.back().connected + clients.back().closed > 0; }));
  } while (clients.back().connected == 1 && clients.size() < kLimit);
  EXPECT_GT(clients.size(), 1u);
  EXPECT_EQ(clients.back().control->CurrentState(), TcpClientControl::kError);
  EXPECT_NE(clients.back().control->LastError().find(": " + reason), std::string::npos)
      << clients.back().control->LastError();
  const int file = open("/dev/null", O_RDONLY | O_CLOEXEC);
  EXPECT_GE(file, 0);
  close(file);
  // Each that goes makes room.
  clients.front().control->Close();
  ASSERT_TRUE(Until([&] { return clients.front().control->CurrentState() == TcpClientControl::kClosed; }));
  clients.back().control->Connect("127.0.0.1", server.Port());
  EXPECT_TRUE(Until([&] { return clients.back().connected == 1; })) << clients.back().control->LastError();
}

}  // namespace
}  // namespace zeb
