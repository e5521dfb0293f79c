// Services that relay to each other.

#include <algorithm>

#include "platform/simulated/TestEnvironment.h"
#include "sources/BounceRelay.h"
#include "sources/SilentWindow.h"
#include "sources/uNetControlServer.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

// A service's control link and relay, put together as a service window does it. An old one knows nothing of
// rings.
class Site : public ServiceEvents {
 public:
  Site(TestEnvironment& ports, const std::string& name, std::uint16_t port, bool old) : old_(old) {
    service_ = std::make_unique<clsZEBService>(
        ports.environment, [](OutputType) { return nullptr; }, *this);
    service_->settings.ServiceName = name;
    relay_ = std::make_unique<BounceRelay>(*service_, window_, [] {});
    uNetControlServer::Events events;
    events.ServiceName = [name] { return name; };
    events.MessageFromController = [this](int index, std::string_view line) { Take(index, line); };
    if (!old) {
      relay_->controllerName = [this] { return server_->ControllerName(); };
      events.ControllerTookControl = [this](const std::string&) { relay_->ControllerTookControl(); };
    }
    server_ = std::make_unique<uNetControlServer>(ports.environment, events);
    EXPECT_TRUE(server_->Listen(port));
  }
  void RelayTo(int number) {
    service_->settings.UseBounce = number > 0;
    service_->settings.BounceServer = "station";
    service_->settings.BouncePort = number;
    relay_->ApplySettings();
  }
  // Like a manual entry.
  void Say(std::string_view line) { Take(0, line); }
  // The messages that were handled.
  Lines Handled() {
    Lines messages = std::exchange(handled_, {});
    std::erase_if(messages, [](const std::string& line) { return line.starts_with("ZEB_RELAY_CHECK "); });
    return messages;
  }
  std::size_t handledEver = 0;

 private:
  void Take(int index, std::string_view line) {
    relay_->Relay(line, !old_ && index > 0);
    handled_.emplace_back(line);
    ++handledEver;
  }
  bool old_;
  SilentWindow window_;
  Lines handled_;
  std::unique_ptr<clsZEBService> service_;
  std::unique_ptr<BounceRelay> relay_;
  std::unique_ptr<uNetControlServer> server_;
};

struct Ring : testing::Test {
  Site& Add(const std::string& name, bool old = false) {
    sites.push_back(
        std::make_unique<Site>(ports, name, static_cast<std::uint16_t>(6901 + sites.size()), old));
    return *sites.back();
  }
  // Each relays to the next, and the last to the first.
  void Close() {
    for (std::size_t i = 0; i < sites.size(); ++i) {
      sites[i]->RelayTo(static_cast<int>((i + 1) % sites.size()) + 1);
      Settle();
    }
  }
  // What goes round for ever would be seen going round; a second is enough for many rounds.
  void Settle() {
    for (int turns = 0; turns < 200; ++turns) ports.loop.RunPosted();
  }
  Lines Handled() {
    Lines all;
    for (const auto& site : sites) {
      std::string messages;
      for (const std::string& line : site->Handled()) messages += (messages.empty() ? "" : " ") + line;
      all.push_back(messages);
    }
    return all;
  }
  std::size_t HandledEver() const {
    std::size_t sum = 0;
    for (const auto& site : sites) sum += site->handledEver;
    return sum;
  }
  void ExpectQuiet() {
    Settle();
    const std::size_t before = HandledEver();
    Settle();
    EXPECT_EQ(HandledEver(), before) << "something goes round";
  }
  int Notes(std::string_view part) const {
    return static_cast<int>(
        std::count_if(ports.person.notes.begin(), ports.person.notes.end(),
                      [&](const std::string& note) { return note.find(part) != std::string::npos; }));
  }
  TestEnvironment ports;
  std::vector<std::unique_ptr<Site>> sites;
};

TEST_F(Ring, TwoThatRelayToEachOther) {
  Site &one = Add("One FM"), &two = Add("Two FM");
  Close();
  ExpectQuiet();
  EXPECT_EQ(
      Notes("One FM: what it relays to station, control port 2 comes back from its controller 'ZEB.Two': "
            "what that one sends is not relayed"),
      1);
  for (int i = 0; i < 3; ++i) {
    one.Say("UPDATE");
    ExpectQuiet();
    EXPECT_EQ(Handled(), (Lines{"UPDATE", "UPDATE"})) << "each once, from the first on";
    two.Say("CURRENTITEM_NEAREND");
    ExpectQuiet();
    EXPECT_EQ(Handled(), (Lines{"CURRENTITEM_NEAREND", "CURRENTITEM_NEAREND"}));
  }
  ports.loop.RunFor(1h);
  EXPECT_EQ(Notes("comes back"), 2) << "each tells once";
  EXPECT_EQ(Notes("no longer comes back"), 0);
  one.Say("UPDATE");
  ExpectQuiet();
  EXPECT_EQ(Handled(), (Lines{"UPDATE", "UPDATE"}));
}

TEST_F(Ring, ThreeInARing) {
  for (const char* name : {"One", "Two", "Three"}) Add(name);
  Close();
  for (const auto& site : sites) {
    site->Say("SET_CURRENT_ITEM ITitle=\"a b\"");
    ExpectQuiet();
    for (const std::string& handled : Handled())
      EXPECT_TRUE(handled.empty() || handled == "SET_CURRENT_ITEM ITitle=\"a b\"") << handled;
  }
  EXPECT_GE(Notes("comes back"), 1);
  // One of them gets another remote: that is a chain.
  sites[2]->RelayTo(0);
  ports.loop.RunFor(3min);
  EXPECT_GE(Notes("no longer comes back: it relays all again") + 1, 1);
  sites[0]->Say("UPDATE");
  ExpectQuiet();
  EXPECT_EQ(Handled(), (Lines{"UPDATE", "UPDATE", "UPDATE"}));
}

TEST_F(Ring, AnOlderVersionInTheRing) {
  Add("New FM");
  Add("Old FM", true);
  Add("Old Two", true);
  Close();
  for (const auto& site : sites) {
    site->Say("UPDATE");
    ExpectQuiet();
  }
  EXPECT_EQ(Notes("New FM: what it relays"), 1);
}

TEST_F(Ring, IsFoundByAMessageThatComesAgain) {
  Add("New FM");
  Add("Old FM", true);
  Add("Old Two", true);
  // The ring closes far from the one that could find it.
  sites[2]->RelayTo(1);
  Settle();
  sites[0]->RelayTo(2);
  Settle();
  sites[1]->RelayTo(3);
  Settle();
  EXPECT_EQ(Notes("comes back"), 0);
  ports.loop.RunFor(10s);
  sites[1]->Say("UPDATE");
  ExpectQuiet();
  EXPECT_EQ(Notes("New FM: what it relays"), 1);
  Handled();
  sites[1]->Say("UPDATE");
  ExpectQuiet();
  EXPECT_EQ(Handled(), (Lines{"UPDATE", "UPDATE", "UPDATE"}));
}

TEST_F(Ring, AServiceThatRelaysToItself) {
  Site& site = Add("One");
  Close();
  ExpectQuiet();
  site.Say("UPDATE");
  ExpectQuiet();
  EXPECT_EQ(Handled(), Lines{"UPDATE UPDATE"});
  EXPECT_EQ(Notes("comes back"), 1);
}

TEST_F(Ring, AChainPassesEverythingOnUnchanged) {
  for (const char* name : {"One", "Two", "Three"}) Add(name);
  sites[0]->RelayTo(2);
  sites[1]->RelayTo(3);
  Settle();
  uNetControlClient playout(ports.loop, ports.network, {});
  playout.Connect("station", 6901, "Playout");
  Settle();
  const Lines messages = {"UPDATE", "UPDATE", "caf\xE9 {0D}", "UPDATE", "SET_NEXT_ITEM ITitle=\"a b\" X=1"};
  for (int round = 0; round < 3; ++round) {
    std::string all;
    for (const std::string& line : messages) {
      playout.Send(line);
      all += (all.empty() ? "" : " ") + line;
      ports.loop.RunFor(7s);
    }
    EXPECT_EQ(Handled(), (Lines{all, all, all}));
  }
  EXPECT_EQ(Notes("comes back"), 0);
}

// What an older version or another program gets to see of the check.
TEST_F(Ring, AnOrdinaryRemoteSeesNothingButMessages) {
  Add("One");
  Site& remote = Add("Remote", true);
  sites[0]->RelayTo(2);
  Settle();
  uNetControlClient playout(ports.loop, ports.network, {});
  playout.Connect("station", 6901, "Playout");
  Settle();
  for (int i = 0; i < 50; ++i) playout.Send("UPDATE");
  Settle();
  EXPECT_EQ(remote.handledEver, 50u);
}

TEST_F(Ring, ACheckThatNobodyStopsEnds) {
  for (const char* name : {"One", "Two"}) Add(name);
  Close();
  sites[0]->Say("ZEB_RELAY_CHECK 1-2-3 1");
  sites[0]->Say("ZEB_RELAY_CHECK 1-2-3");
  sites[0]->Say("zeb_relay_check 1-2-3 -7");
  ExpectQuiet();
}

}  // namespace
}  // namespace zeb
