#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

#include "dashboard/EventHub.h"
#include "dashboard/HttpServer.h"
#include "tests/dashboard/HttpClient.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

struct HttpServerTest : testing::Test {
  TestEnvironment ports;
  std::vector<std::string> notes;
  std::vector<std::string> asked;
  std::optional<HttpReply> kept;
  EventHub hub{[this](const auto& reader) { hub.Send(*reader, "state", "all"); }};
  HttpServer server{ports.loop, WayIn::kLoopback,
                    [this](const HttpRequest& request, const HttpReply& reply) { Handle(request, reply); },
                    [this](const std::string& line) { notes.push_back(line); }};
  std::unique_ptr<TcpListener> listener = ports.network.MakeListener();

  HttpServerTest() {
    listener->onConnection = [this](std::unique_ptr<TcpConnection> connection) {
      server.Take(std::move(connection));
    };
    EXPECT_TRUE(listener->Listen("", 6980));
  }

  void Handle(const HttpRequest& request, const HttpReply& reply) {
    asked.push_back(request.path[0]);
    if (asked.back() == "later") {
      kept = reply;
    } else if (asked.back() == "events") {
      hub.Add(reply);
    } else if (asked.back() == "throws") {
      throw std::runtime_error("broken");
    } else if (asked.back() == "forgets") {
    } else if (asked.back() == "much") {
      reply.Send({200, "text/plain", std::string(1'000'000, 'x'), {}});
    } else {
      reply.Send({200, "text/plain", "you sent " + request.body, {}});
    }
  }
  HttpClient Connect() { return {ports.network, 6980}; }
  void RunPosted() { ports.loop.RunPosted(); }
};

TEST_F(HttpServerTest, RequestsInOneGoAreAnsweredInTheirOrder) {
  HttpClient client = Connect();
  RunPosted();
  client.Send(Get("/later") + Post("/a", "two") + Get("/b"));
  RunPosted();
  EXPECT_EQ(asked, (std::vector<std::string>{"later"})) << "one at a time";
  kept->Send({200, "text/plain", "one", {}});
  kept->Send({200, "text/plain", "not this", {}});
  RunPosted();
  const auto answers = client.Answers();
  ASSERT_EQ(answers.size(), 3u) << client.received;
  EXPECT_EQ(answers[0].body, "one");
  EXPECT_EQ(answers[1].body, "you sent two");
  EXPECT_FALSE(client.closed);
}

TEST_F(HttpServerTest, ARequestHasTenSecondsToComeInWhole) {
  HttpClient slow = Connect();
  RunPosted();
  ports.loop.RunFor(4s);
  const std::string request = Get("/");
  slow.Send(request.substr(0, 1));
  RunPosted();
  for (std::size_t second = 1; second < 10; ++second) {
    ports.loop.RunFor(1s);
    slow.Send(request.substr(second, 1));
  }
  ports.loop.RunFor(999ms);
  EXPECT_EQ(slow.received, "");
  ports.loop.RunFor(1ms);
  EXPECT_EQ(slow.Status(), 408);
  EXPECT_FALSE(slow.closed) << "the peer is to read it";
  ports.loop.RunFor(2s);
  EXPECT_TRUE(slow.closed);
  EXPECT_EQ(server.ConnectionCount(), 0u);
  EXPECT_EQ(notes, (std::vector<std::string>{"Dashboard: refused a request from 127.0.0.1: status 408"}));
}

TEST_F(HttpServerTest, WhoAsksNothingIsLetGoWithoutAWord) {
  HttpClient never = Connect(), once = Connect();
  RunPosted();
  once.Send(Get("/"));
  ports.loop.RunFor(10s - 1ms);
  EXPECT_FALSE(never.closed);
  ports.loop.RunFor(1ms);
  EXPECT_TRUE(never.closed);
  EXPECT_EQ(never.received, "");
  ports.loop.RunFor(50s - 1ms);
  EXPECT_FALSE(once.closed) << "60 s from its answer";
  ports.loop.RunFor(1ms);
  EXPECT_TRUE(once.closed);
  EXPECT_TRUE(notes.empty());
}

TEST_F(HttpServerTest, HandlersThatFailAreTold) {
  HttpClient throwing = Connect(), forgetting = Connect(), slow = Connect();
  RunPosted();
  throwing.Send(Get("/throws"));
  forgetting.Send(Get("/forgets"));
  slow.Send(Get("/later") + Get("/a"));
  RunPosted();
  EXPECT_EQ(throwing.Status(), 500);
  EXPECT_EQ(forgetting.Status(), 500);
  ports.loop.RunFor(30s - 1ms);
  EXPECT_EQ(slow.received, "");
  ports.loop.RunFor(1ms);
  const auto answers = slow.Answers();
  ASSERT_EQ(answers.size(), 2u);
  EXPECT_EQ(answers[0].status, 503);
  EXPECT_EQ(answers[1].status, 200);
  kept->Send({200, "text/plain", "too late", {}});
  RunPosted();
  EXPECT_EQ(slow.Answers().size(), 2u);
}

TEST_F(HttpServerTest, TheHeadIsSentWithoutTheBody) {
  HttpClient client = Connect();
  RunPosted();
  client.Send("HEAD /much HTTP/1.1\r\nHost: a\r\n\r\n" + Get("/a"));
  RunPosted();
  EXPECT_NE(client.received.find("Content-Length: 1000000\r\n"), std::string::npos);
  EXPECT_TRUE(client.received.ends_with("\r\n\r\nyou sent "));
  EXPECT_LT(client.received.size(), 3000u);
}

TEST_F(HttpServerTest, AClientThatWaitsIsToldToContinue) {
  HttpClient client = Connect();
  RunPosted();
  client.Send("POST /a HTTP/1.1\r\nHost: a\r\nExpect: 100-continue\r\nContent-Length: 2\r\n\r\n");
  RunPosted();
  EXPECT_EQ(client.received, "HTTP/1.1 100 Continue\r\n\r\n");
  client.Send("hi");
  RunPosted();
  EXPECT_TRUE(client.received.ends_with("you sent hi"));
}

TEST_F(HttpServerTest, OldClientsAreAnsweredAndLetGo) {
  HttpClient client = Connect();
  RunPosted();
  client.Send("GET /a HTTP/1.0\r\n\r\n");
  RunPosted();
  EXPECT_EQ(client.Status(), 200);
  EXPECT_TRUE(client.closed);
}

TEST_F(HttpServerTest, MoreInAdvanceThanOneRequestEndsTheConnectionBehindTheAnswer) {
  HttpClient client = Connect();
  RunPosted();
  client.Send(Get("/later"));
  RunPosted();
  for (int i = 0; i < 3000; ++i) client.Send(Get("/a"));
  RunPosted();
  kept->Send({200, "text/plain", "one", {}});
  ports.loop.RunFor(3s);
  EXPECT_EQ(client.Answers().size(), 1u);
  EXPECT_TRUE(client.closed);
  EXPECT_EQ(asked.size(), 1u);
}

TEST_F(HttpServerTest, AnAnswerThatIsNotTakenEndsTheConnection) {
  HttpClient client = Connect();
  RunPosted();
  client.Send(Get("/much") + Get("/a"));
  ports.loop.Post([&] { ports.network.StopReading(true); });
  RunPosted();
  ASSERT_EQ(asked.size(), 1u) << "the next request waits until there is room";
  // 10 s and one more for each 8 KiB of the million and its header, looked at every quarter of a second.
  ports.loop.RunFor(10s + 122s - 1ms);
  EXPECT_EQ(server.ConnectionCount(), 1u);
  ports.loop.RunFor(501ms);
  EXPECT_EQ(server.ConnectionCount(), 0u);
  EXPECT_EQ(notes.size(), 1u);
}

TEST_F(HttpServerTest, SlowPeersMakeRoomAndBusyOnesDoNot) {
  std::vector<std::unique_ptr<HttpClient>> clients;
  const auto connect = [&] {
    clients.push_back(std::make_unique<HttpClient>(ports.network, std::uint16_t{6980}));
    RunPosted();
    return clients.back().get();
  };
  for (std::size_t i = 0; i < kMostHttpConnections; ++i) connect()->Send("GET");
  RunPosted();
  HttpClient* early = connect();
  EXPECT_EQ(early->Status(), 503) << "all of them have only just begun";
  EXPECT_TRUE(early->closed);
  ports.loop.RunFor(1s);
  HttpClient* served = connect();
  served->Send(Get("/a"));
  RunPosted();
  EXPECT_EQ(served->Status(), 200);
  EXPECT_TRUE(clients[0]->closed);
  EXPECT_FALSE(clients[1]->closed);
  EXPECT_EQ(server.ConnectionCount(), kMostHttpConnections);
  EXPECT_EQ(notes.size(), 1u);
}

TEST_F(HttpServerTest, TenThousandRequestsLeaveNothingBehind) {
  HttpClient client = Connect();
  RunPosted();
  std::size_t answered = 0;
  client.control->onData = [&](std::string_view) { ++answered; };
  for (int i = 0; i < 10000; ++i) {
    client.Send(Get("/a"));
    RunPosted();
  }
  EXPECT_EQ(answered, 10000u);
  EXPECT_EQ(server.ConnectionCount(), 1u);
  EXPECT_TRUE(notes.empty());
}

TEST_F(HttpServerTest, BadRequestsAreOneLineAMinute) {
  for (int i = 0; i < 100; ++i) {
    HttpClient client = Connect();
    RunPosted();
    client.Send("nonsense\r\n\r\n");
    ports.loop.RunFor(1s);
    EXPECT_EQ(client.Status(), 400);
  }
  EXPECT_EQ(notes.size(), 2u);
  EXPECT_NE(notes[1].find("(59 more since the last line)"), std::string::npos) << notes[1];
}

TEST_F(HttpServerTest, EventsAreSentAsTheyHappenBehindThePresentState) {
  HttpClient client = Connect();
  RunPosted();
  client.Send(Get("/events", "Last-Event-ID: 77\r\n"));
  RunPosted();
  EXPECT_NE(client.received.find("Content-Type: text/event-stream\r\n"), std::string::npos);
  EXPECT_TRUE(client.received.ends_with("\r\n\r\nevent: state\nid: 1\ndata: all\n\n"));
  client.received.clear();
  hub.Publish("item", "one\ntwo");
  RunPosted();
  EXPECT_EQ(client.received, "event: item\nid: 2\ndata: one\ndata: two\n\n");
  client.received.clear();
  ports.loop.RunFor(15s);
  EXPECT_EQ(client.received, ":\n\n");
  ports.loop.RunFor(24h * 7);
  EXPECT_FALSE(client.closed) << "a tab that stays open";
  EXPECT_EQ(hub.ReaderCount(), 1u);
  client.control->Close();
  RunPosted();
  EXPECT_EQ(hub.ReaderCount(), 0u);
  EXPECT_EQ(server.ConnectionCount(), 0u);
}

TEST_F(HttpServerTest, AReaderThatDoesNotReadIsDropped) {
  HttpClient silent = Connect();
  RunPosted();
  silent.Send(Get("/events"));
  RunPosted();
  ports.network.StopReading(true);
  for (int i = 0; i < 10; ++i) hub.Publish("item", std::string(100'000, 'x'));
  EXPECT_EQ(hub.ReaderCount(), 1u);
  hub.Publish("item", std::string(100'000, 'x'));
  EXPECT_EQ(hub.ReaderCount(), 0u) << "1 MiB";
  EXPECT_EQ(server.ConnectionCount(), 0u);
}

TEST_F(HttpServerTest, AReaderThatHangsIsDroppedByTheHeartbeat) {
  HttpClient silent = Connect();
  RunPosted();
  silent.Send(Get("/events"));
  RunPosted();
  ports.network.StopReading(true);
  hub.Publish("item", "x");
  ports.loop.RunFor(30s - 1ms);
  EXPECT_EQ(hub.ReaderCount(), 1u);
  ports.loop.RunFor(1ms);
  EXPECT_EQ(hub.ReaderCount(), 0u);
}

TEST_F(HttpServerTest, ReadersOfEventsLeaveRoomForOthers) {
  std::vector<std::unique_ptr<HttpClient>> readers;
  for (std::size_t i = 0; i <= kMostEventReaders; ++i) {
    readers.push_back(std::make_unique<HttpClient>(ports.network, std::uint16_t{6980}));
    RunPosted();
    readers.back()->Send(Get("/events"));
    RunPosted();
  }
  EXPECT_EQ(hub.ReaderCount(), kMostEventReaders);
  EXPECT_EQ(readers.back()->Status(), 503);
}

TEST_F(HttpServerTest, TheServerMayGoBeforeAnAnswer) {
  HttpClient client = Connect();
  RunPosted();
  client.Send(Get("/later"));
  RunPosted();
  server.CloseAll();
  EXPECT_EQ(server.ConnectionCount(), 0u);
  kept->Send({200, "text/plain", "late", {}});
  kept.reset();
  RunPosted();
  EXPECT_EQ(client.received, "");
  EXPECT_TRUE(client.closed);
}

}  // namespace
}  // namespace zeb
