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

using Peers = std::vector<std::unique_ptr<Peer>>;

int Open(const Peers& peers) {
  return static_cast<int>(
      std::count_if(peers.begin(), peers.end(), [](const auto& peer) { return !peer->closed; }));
}

TEST_F(ControlServer, ThirtyTwoConnectionsHaveAPlace) {
  Listen();
  Peers peers;
  for (int i = 0; i < 32; ++i) peers.push_back(std::make_unique<Peer>(ports));
  EXPECT_EQ(server->ConnectionCount(), 32);
  Peer first(ports), second(ports);
  EXPECT_TRUE(first.closed) << "one is waited for beyond them, the latest";
  EXPECT_FALSE(second.closed);
  ports.loop.RunFor(4999ms);
  EXPECT_FALSE(second.closed);
  ports.loop.RunFor(1ms);
  EXPECT_TRUE(second.closed);
  Peer third(ports);
  third.Send("STATUS?\r\n");
  EXPECT_TRUE(third.closed) << "waiting is for those that log on";
  EXPECT_EQ(third.Received(), "");
  EXPECT_EQ(Open(peers), 32);
  EXPECT_EQ(server->ConnectionCount(), 32);
  EXPECT_EQ(Notes("Demo FM: turned away 127.0.0.1, since 32 are connected"), 1);
  peers.erase(peers.begin());
  ports.loop.RunPosted();
  EXPECT_FALSE(Peer(ports).closed);
}

TEST_F(ControlServer, ALogOnAlwaysGetsAPlace) {
  Listen();
  Peers peers;
  for (int i = 0; i < 32; ++i) peers.push_back(std::make_unique<Peer>(ports));
  ports.loop.RunFor(1s);
  peers[0]->Ask("VERSION?");
  Peer playout(ports);
  EXPECT_EQ(playout.Ask("NET_CONTROL_LOGON Playout"), "NET_CONTROL_GRANTED\r\n");
  EXPECT_EQ(server->ConnectionCount(), 32);
  EXPECT_EQ(Open(peers), 31);
  EXPECT_FALSE(peers[0]->closed) << "the one that has been silent for longest makes room";
  EXPECT_TRUE(peers[1]->closed);
  playout.Send("UPDATE\r\n");
  EXPECT_EQ(Heard(), (Lines{"took Playout", "2:UPDATE"}));
  ports.loop.RunFor(10s);
  EXPECT_FALSE(playout.closed);

  // Its machine breaks down and comes back, while the old connection still stands and all places are taken.
  peers.push_back(std::make_unique<Peer>(ports));
  Peer other(ports);
  EXPECT_EQ(other.Ask("NET_CONTROL_LOGON Other"), "NET_CONTROL_REFUSED Playout\r\n");
  Peer again(ports);
  EXPECT_EQ(again.Ask("NET_CONTROL_LOGON Playout"), "NET_CONTROL_GRANTED\r\n");
  EXPECT_TRUE(playout.closed);
  EXPECT_EQ(server->ConnectionCount(), 32);
  again.Send("UPDATE\r\n");
  EXPECT_EQ(Heard(), (Lines{"took Playout", "2:UPDATE"}));
}

TEST_F(ControlServer, AConnectionWithoutControlMakesRoomAfterThirtySeconds) {
  Listen();
  Peer playout(ports);
  playout.Ask("NET_CONTROL_LOGON Playout");
  Peers peers;
  for (int i = 0; i < 31; ++i) peers.push_back(std::make_unique<Peer>(ports));
  ports.loop.RunFor(30s);
  peers[0]->Ask("NET_CONTROL_LOGON Second");
  for (int i = 0; i < 40; ++i) {
    peers.push_back(std::make_unique<Peer>(ports));
    ports.loop.RunFor(1s);
  }
  EXPECT_FALSE(playout.closed) << "the controller stays, however silent";
  EXPECT_EQ(server->ConnectionCount(), 32);
  EXPECT_FALSE(peers[30 + 39]->closed) << "and the new ones come in";
  EXPECT_EQ(Notes("Demo FM: closed the connection to 127.0.0.1, which had not taken control within 30 s, for "
                  "another; 32 are connected"),
            1);
}

TEST_F(ControlServer, TheControllerComesAgain) {
  Listen();
  Peer old(ports);
  old.Ask("NET_CONTROL_LOGON Playout");
  ports.network.SetClientAddress("10.0.0.7");
  Peer elsewhere(ports);
  EXPECT_EQ(elsewhere.Ask("NET_CONTROL_LOGON Playout"), "NET_CONTROL_REFUSED Playout\r\n");
  ports.network.SetClientAddress("127.0.0.1");
  Peer nameless(ports), fresh(ports);
  EXPECT_EQ(nameless.Ask("NET_CONTROL_LOGON"), "NET_CONTROL_REFUSED Playout\r\n");
  EXPECT_EQ(fresh.Ask("NET_CONTROL_LOGON Playout"), "NET_CONTROL_GRANTED\r\n");
  EXPECT_TRUE(old.closed);
  EXPECT_EQ(old.Received(), "NET_CONTROL_ENDED\r\n");
  EXPECT_EQ(Heard(), (Lines{"took Playout", "took Playout"})) << "the service asks it for everything again";
  EXPECT_EQ(server->ControllerName(), "Playout");
  // Without names, two that share an address are two.
  fresh.Ask("NET_CONTROL_LOGOFF");
  nameless.Ask("NET_CONTROL_LOGON");
  EXPECT_EQ(Peer(ports).Ask("NET_CONTROL_LOGON"), "NET_CONTROL_REFUSED 127.0.0.1\r\n");
}

TEST_F(ControlServer, APeerThatComesAndGoesIsToldOfSeldom) {
  Listen();
  Peer stays(ports);
  for (int i = 0; i < 100; ++i) {
    Peer(ports).Ask("NET_CONTROL_LOGON Script");
    ports.loop.RunFor(100ms);
  }
  EXPECT_EQ(Notes("took control"), 1);
  EXPECT_EQ(Notes("no longer has control"), 1);
  stays.Ask("NET_CONTROL_LOGON Playout");
  EXPECT_EQ(Notes("Demo FM: 'Playout' (127.0.0.1) took control"), 1) << "each peer is told of by itself";
  stays.Ask("NET_CONTROL_LOGOFF");
  Peer script(ports);
  script.Ask("NET_CONTROL_LOGON Script");
  EXPECT_EQ(Notes("'Script' (127.0.0.1) took control"), 1);
  ports.loop.RunFor(61s);
  EXPECT_EQ(Notes("Demo FM: 'Script' has control, after having come and gone"), 1)
      << "the last line must not stay wrong";
  script.Ask("NET_CONTROL_LOGOFF");
  EXPECT_EQ(Notes("Demo FM: 'Script' no longer has control (99 more since the last line)"), 1);
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
