#include <algorithm>
#include <random>

#include "platform/simulated/TestEnvironment.h"
#include "sources/uNetControlServer.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

constexpr std::uint16_t kPort = 6901;

// A bare peer that keeps what it is sent.
class Peer {
 public:
  explicit Peer(TestEnvironment& ports, std::uint16_t port = kPort)
      : ports_(ports), socket_(ports.network.MakeClient()) {
    socket_->onData = [this](std::string_view bytes) { received_ += bytes; };
    socket_->onClosed = [this] { closed = true; };
    socket_->Connect("station", port);
    ports_.loop.RunPosted();
  }
  void Send(std::string_view bytes) {
    socket_->SendData(bytes);
    ports_.loop.RunPosted();
  }
  // What came since the last look.
  std::string Received() { return std::exchange(received_, {}); }
  std::string Ask(std::string_view line) {
    Send(std::string(line) + "\r\n");
    return Received();
  }
  bool closed = false;

 private:
  TestEnvironment& ports_;
  std::shared_ptr<TcpClientControl> socket_;
  std::string received_;
};

struct ControlServer : testing::Test {
  ControlServer() {
    uNetControlServer::Events events;
    events.ControllerTookControl = [this](const std::string& name) { heard.push_back("took " + name); };
    events.ControlEnded = [this] {
      heard.emplace_back("ended");
      if (onEnded) onEnded();
    };
    events.MessageFromController = [this](int index, std::string_view line) {
      heard.push_back(std::to_string(index) + ":" + std::string(line));
      if (onMessage) onMessage(line);
    };
    events.HelpText = [] { return "-help\r\n"; };
    events.StatusText = [] { return "-Service Name       : Demo FM\r\n"; };
    events.ServiceName = [] { return "Demo FM"; };
    server = std::make_unique<uNetControlServer>(ports.environment, events);
  }
  void Listen() { ASSERT_TRUE(server->Listen(kPort)); }
  int Notes(std::string_view part) const {
    return static_cast<int>(
        std::count_if(ports.person.notes.begin(), ports.person.notes.end(),
                      [&](const std::string& note) { return note.find(part) != std::string::npos; }));
  }
  std::vector<std::string> Heard() { return std::exchange(heard, {}); }

  TestEnvironment ports;
  std::vector<std::string> heard;
  std::function<void(std::string_view)> onMessage;
  std::function<void()> onEnded;
  std::unique_ptr<uNetControlServer> server;
};

using Lines = std::vector<std::string>;

TEST_F(ControlServer, AConversation) {
  Listen();
  Peer peer(ports);
  struct Turn {
    std::string_view sends, answer;
  };
  const Turn turns[] = {
      {"NET_CONTROL?", "-No controller connected\r\n"},
      {"SET_CURRENT_ITEM ITitle=x", "NET_CONTROL_REQUIRED\r\n"},
      {"NET_CONTROL_LOGOFF", "NET_CONTROL_REQUIRED\r\n"},
      {"", "NET_CONTROL_REQUIRED\r\n"},
      {"help", "-help\r\n"},
      {"List", "-This is a test message\r\n"},
      {"SERVICE_NAME?", "-Service Name       : Demo FM\r\n"},
      {"VERSION?", "-Version            : " ZEB_VERSION "\r\n"},
      {"STATUS?", "-Service Name       : Demo FM\r\n-Connections        : 1\r\n-   127.0.0.1:50000\r\n"},
      {"net_control_logon Play out", "NET_CONTROL_GRANTED\r\n"},
      {"NET_CONTROL?", "-Controller         : Play out\r\n"},
      {"STATUS?",
       "-Service Name       : Demo FM\r\n-Connections        : 1\r\n-   127.0.0.1:50000 Play out "
       "(Controller)\r\n"},
      {"SET_CURRENT_ITEM ITitle=x", ""},
      {"LIST it", ""},
      {"NET_CONTROL_LOGON renamed", "NET_CONTROL_GRANTED\r\n"},
      {"NET_CONTROL?", "-Controller         : renamed\r\n"},
      {"NET_CONTROL_LOGOFF", "NET_CONTROL_ENDED\r\n"},
      {"NET_CONTROL?", "-No controller connected\r\n"},
      {"NET_CONTROL_LOGON", "NET_CONTROL_GRANTED\r\n"},
      {"NET_CONTROL?", "-Controller         : 127.0.0.1\r\n"},
  };
  std::string all, answers;
  for (const Turn& turn : turns) {
    EXPECT_EQ(peer.Ask(turn.sends), turn.answer) << turn.sends;
    all.append(turn.sends).append("\r\n");
    answers += turn.answer;
  }
  const Lines expected = {"took Play out", "1:SET_CURRENT_ITEM ITitle=x", "1:LIST it", "ended",
                          "took 127.0.0.1"};
  EXPECT_EQ(Heard(), expected);

  // The same again in pieces of every kind, without CR too.
  const std::string withoutCr = [&] {
    std::string text = all;
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
  }();
  std::mt19937 random(7);
  for (const std::size_t longest : {std::size_t{1}, std::size_t{5}, std::size_t{40}})
    for (const std::string& text : {all, withoutCr}) {
      server->Close();
      Heard();
      Listen();
      Peer again(ports);
      for (std::size_t at = 0; at < text.size();) {
        const std::size_t size = std::min(text.size() - at, 1 + random() % longest);
        again.Send(text.substr(at, size));
        at += size;
      }
      const std::string received = again.Received();
      EXPECT_EQ(received.size(), answers.size());  // the ports' digits differ, nothing else
      EXPECT_EQ(Heard(), expected);
    }
}

TEST_F(ControlServer, ControlPassesFromOneToTheNext) {
  Listen();
  Peer first(ports);
  auto second = std::make_unique<Peer>(ports);
  EXPECT_EQ(first.Ask("NET_CONTROL_LOGON One"), "NET_CONTROL_GRANTED\r\n");
  EXPECT_EQ(second->Ask("NET_CONTROL_LOGON Two"), "NET_CONTROL_REFUSED One\r\n");
  EXPECT_EQ(second->Ask("UPDATE"), "NET_CONTROL_REQUIRED\r\n");
  server->SendToController("GET_INFORMATION");
  ports.loop.RunPosted();
  EXPECT_EQ(first.Received(), "GET_INFORMATION\r\n");
  EXPECT_EQ(second->Received(), "");
  first.Ask("NET_CONTROL_LOGOFF");
  EXPECT_EQ(second->Ask("NET_CONTROL_LOGON Two"), "NET_CONTROL_GRANTED\r\n");
  EXPECT_EQ(first.Ask("NET_CONTROL_LOGOFF"), "NET_CONTROL_REQUIRED\r\n");
  EXPECT_EQ(server->ControllerName(), "Two");
  second.reset();  // its connection goes, and control with it
  ports.loop.RunPosted();
  EXPECT_EQ(server->ControllerName(), "");
  EXPECT_EQ(server->ConnectionCount(), 1);
  EXPECT_EQ(Heard(), (Lines{"took One", "ended", "took Two", "ended"}));
  server->SendToController("nobody hears this");
  EXPECT_EQ(Notes("Demo FM: 'Two' (127.0.0.1) took control"), 1);
  EXPECT_EQ(Notes("Demo FM: 'Two' no longer has control"), 1);
}

TEST_F(ControlServer, TakesThirtyTwoConnections) {
  Listen();
  std::vector<std::unique_ptr<Peer>> peers;
  for (int i = 0; i < 32; ++i) peers.push_back(std::make_unique<Peer>(ports));
  EXPECT_EQ(server->ConnectionCount(), 32);
  for (int i = 0; i < 5; ++i) EXPECT_TRUE(Peer(ports).closed);
  EXPECT_EQ(Notes("turned away"), 1);
  EXPECT_EQ(Notes("Demo FM: turned away 127.0.0.1, since 32 are connected"), 1);
  ports.loop.RunFor(61s);
  EXPECT_TRUE(Peer(ports).closed);
  EXPECT_EQ(Notes("(4 more since the last line)"), 1);
  EXPECT_FALSE(std::any_of(peers.begin(), peers.end(), [](const auto& peer) { return peer->closed; }));
  peers.erase(peers.begin());
  ports.loop.RunPosted();
  EXPECT_FALSE(Peer(ports).closed);
}

TEST_F(ControlServer, ConnectsOnlyAllowedPeers) {
  Listen();
  ports.network.SetClientAddress("203.0.113.9");
  EXPECT_TRUE(Peer(ports).closed);
  EXPECT_EQ(Notes("turned away 203.0.113.9, which ControlAllowedPeers does not name"), 1);
  ports.hive.WriteText(ports.environment.settingsRoot, "ControlAllowedPeers", "lan,203.0.113.0/24");
  Listen();  // reads it anew, and keeps the port
  EXPECT_FALSE(Peer(ports).closed);
  ports.network.SetClientAddress("127.0.0.1");
  EXPECT_TRUE(Peer(ports).closed);
  Listen();
  EXPECT_EQ(Notes("ControlAllowedPeers: 'lan' is no address or range"), 1);
  EXPECT_EQ(Notes("listening on port 6901"), 1);
}

TEST_F(ControlServer, ALineThatDoesNotEndEndsTheConnection) {
  Listen();
  Peer peer(ports);
  const std::string longest(1024 * 1024, 'x');
  EXPECT_EQ(peer.Ask(longest), "NET_CONTROL_REQUIRED\r\n");
  peer.Send(longest + "x");
  EXPECT_FALSE(peer.closed);  // a CR might have been the last
  peer.Send("x");
  EXPECT_TRUE(peer.closed);
  EXPECT_EQ(Notes("closed the connection to 127.0.0.1, which sent a line of more than 1 MiB"), 1);
  Peer whole(ports);
  whole.Send(longest + "x\r\nHELP\r\n");
  EXPECT_TRUE(whole.closed);
  EXPECT_EQ(whole.Received(), "");
}

TEST_F(ControlServer, APeerThatDoesNotReadIsClosed) {
  Listen();
  Peer peer(ports);
  peer.Ask("NET_CONTROL_LOGON slow");
  ports.network.StopReading(true);
  for (int i = 0; i < 1000 && server->ConnectionCount() > 0; ++i)
    server->SendToController(std::string(2000, 'x'));
  EXPECT_EQ(server->ConnectionCount(), 0);
  EXPECT_EQ(Heard(), (Lines{"took slow", "ended"}));
  EXPECT_EQ(Notes("which does not read what it is sent"), 1);
}

TEST_F(ControlServer, OddBytesAreHarmless) {
  Listen();
  Peer peer(ports);
  EXPECT_EQ(peer.Ask(std::string("\0\x01\xFF\r", 4)), "NET_CONTROL_REQUIRED\r\n");
  EXPECT_EQ(peer.Ask(std::string("NET_CONTROL_LOGON a\0b\x1B\xE9", 23)), "NET_CONTROL_GRANTED\r\n");
  EXPECT_EQ(server->ControllerName(), "a b \u00e9");
  peer.Ask("NET_CONTROL_LOGON " + std::string(100000, 'n'));
  EXPECT_EQ(server->ControllerName(), std::string(64, 'n'));
  peer.Ask(std::string("A\0B", 3));
  EXPECT_EQ(Heard().back(), "1:" + std::string("A\0B", 3));
}

TEST_F(ControlServer, AnEventMayCloseOrDestroyTheServer) {
  for (const bool destroy : {false, true}) {
    Listen();
    Heard();
    Peer peer(ports);
    onMessage = [&](std::string_view) { destroy ? server.reset() : server->Close(); };
    peer.Send("NET_CONTROL_LOGON a\r\none\r\ntwo\r\nSTATUS?\r\n");
    EXPECT_TRUE(peer.closed);
    EXPECT_EQ(Heard(), destroy ? (Lines{"took a", "1:one"}) : (Lines{"took a", "1:one", "ended"}));
  }
}

TEST_F(ControlServer, ClosingFromTheEndOfControl) {
  Listen();
  Peer peer(ports);
  onEnded = [&] { server.reset(); };
  peer.Send("NET_CONTROL_LOGON a\r\nNET_CONTROL_LOGOFF\r\nHELP\r\n");
  EXPECT_FALSE(server);
  EXPECT_EQ(Heard(), (Lines{"took a", "ended"}));
}

TEST_F(ControlServer, ATakenPortIsToldOfOnce) {
  ports.network.BlockPort(kPort);
  EXPECT_FALSE(server->Listen(kPort));
  EXPECT_FALSE(server->Listen(kPort));
  EXPECT_FALSE(server->Listening());
  EXPECT_EQ(Notes("Demo FM: cannot listen on port 6901"), 1);
  ports.hive.failure = "locked";
  EXPECT_TRUE(server->Listen(kPort + 1)) << "settings that cannot be read must not take the link away";
  EXPECT_EQ(server->Port(), kPort + 1);
}

}  // namespace
}  // namespace zeb
