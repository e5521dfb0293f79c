#include <gtest/gtest.h>

#include "platform/simulated/TestEnvironment.h"
#include "sources/BounceRelay.h"
#include "sources/uNetControlServer.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

// A service that relays, and the remote instance's control server.
struct Bounce : testing::Test, private IntakeWindow, private ServiceEvents {
  Bounce() {
    service.settings.ServiceName = " Radio One";
    service.settings.UseBounce = true;
    service.settings.BounceServer = "second-site";
    service.settings.BouncePort = 2;
    StartRemote();
  }
  void StartRemote() {
    uNetControlServer::Events events;
    events.MessageFromController = [this](int, std::string_view line) { arrived.emplace_back(line); };
    remote = std::make_unique<uNetControlServer>(ports.environment, events);
    ASSERT_TRUE(remote->Listen(6902));
  }
  void Apply() {
    relay.ApplySettings();
    ports.loop.RunPosted();
  }
  Lines Panels() { return std::exchange(panels, {}); }
  // What the relaying service wrote, not the remote.
  Lines Notes() const {
    Lines own;
    for (const std::string& note : ports.person.notes)
      if (note.starts_with(service.settings.ServiceName)) own.push_back(note);
    return own;
  }

  void SetPanel(Panel panel, const std::string& text) override {
    EXPECT_EQ(panel, Panel::kBounceControl);
    panels.push_back(text);
  }
  void RefreshItemList() override {}
  void UpdateOutputsNow() override {}
  bool UpdateRunning() const override { return false; }
  void InformationReceived() override {}
  void SendTravelFlag(bool) override {}

  TestEnvironment ports;
  clsZEBService service{ports.environment, [](OutputType) { return nullptr; }, *this};
  std::unique_ptr<uNetControlServer> remote;
  Lines arrived, panels;
  int asked = 0;
  BounceRelay relay{service, *this, [this] { ++asked; }};
};

TEST_F(Bounce, RelaysWhileItHasControl) {
  EXPECT_FALSE(relay.Relay("UPDATE", true)) << "nothing before the link is open";
  Apply();
  EXPECT_EQ(Panels(), (Lines{"Bounce Connecting..", "Bounce Connected..", "Have Bounce Control.."}));
  EXPECT_EQ(remote->ControllerName(), "ZEB.Radio");
  EXPECT_EQ(asked, 1) << "the playout is to send all it knows";
  EXPECT_TRUE(relay.PanelVisible());

  EXPECT_TRUE(relay.Relay("UNKNOWN caf\xE9 {0D}", true));
  remote->SendToController("SET_CURRENT_ITEM ITitle=No");
  ports.loop.RunPosted();
  EXPECT_EQ(arrived, Lines{"UNKNOWN caf\xE9 {0D}"}) << "unknown commands too, byte for byte";

  Apply();
  EXPECT_EQ(Panels(), Lines{}) << "the same settings leave the link alone";
  service.settings.UseBounce = false;
  Apply();
  EXPECT_EQ(Panels(), Lines{""});
  EXPECT_FALSE(relay.PanelVisible());
  EXPECT_FALSE(relay.Relay("UPDATE", true));
  EXPECT_EQ(remote->ControllerName(), "");
}

TEST_F(Bounce, RelaysNothingWhenRefused) {
  uNetControlClient other(ports.loop, ports.network, {});
  other.Connect("second-site", 6902, "Playout");
  ports.loop.RunPosted();
  Apply();
  EXPECT_EQ(Panels().back(), "Bounce has refused Control..");
  EXPECT_FALSE(relay.Relay("UPDATE", true));
  EXPECT_EQ(asked, 0);
}

TEST_F(Bounce, StaysDisconnectedUnlessToldToRetry) {
  Apply();
  remote.reset();
  ports.loop.RunPosted();
  EXPECT_EQ(Panels(), (Lines{"Bounce Connecting..", "Bounce Connected..", "Have Bounce Control..",
                             "Bounce Disconnected.."}));
  StartRemote();
  ports.loop.RunFor(1h);
  EXPECT_EQ(Panels(), Lines{});
  EXPECT_FALSE(relay.Relay("UPDATE", true));
  Apply();
  EXPECT_EQ(Panels().back(), "Have Bounce Control..") << "applying the settings opens it again";
}

TEST_F(Bounce, StopsWhenTheRemoteEndsItsControl) {
  Apply();
  Panels();
  EXPECT_TRUE(relay.Relay("NET_CONTROL_LOGOFF",
                          true));  // relayed like anything else; the remote takes it at its word
  ports.loop.RunPosted();
  EXPECT_EQ(Panels(), Lines{"Bounce Control Ended.."});
  EXPECT_FALSE(relay.Relay("UPDATE", true));
  uNetControlClient other(ports.loop, ports.network, {});
  other.Connect("second-site", 6902, "Play\x1Bout");
  ports.loop.RunPosted();
  ports.hive.WriteNumber(ports.environment.settingsRoot, "BounceRetrySeconds", 5);
  Apply();
  EXPECT_EQ(Panels().back(), "Bounce has refused Control..");
  other.Disconnect();
  ports.loop.RunFor(5s);
  EXPECT_EQ(Panels().back(), "Have Bounce Control..");
}

TEST_F(Bounce, RetriesAfterTheSecondsThatAreSet) {
  ports.hive.WriteNumber(ports.environment.settingsRoot, "BounceRetrySeconds", 5);
  Apply();
  remote.reset();
  ports.loop.RunFor(12s);  // two tries find nobody
  EXPECT_EQ(Panels().back(), "Bounce Disconnected..");
  EXPECT_EQ(Notes(), (Lines{" Radio One: relays to second-site, control port 2",
                            " Radio One: does not relay to second-site, control port 2: the link was closed",
                            " Radio One: does not relay to second-site, control port 2: cannot connect to "
                            "second-site:6902: connection refused"}))
      << "the same failure is told once";
  StartRemote();
  Panels();
  ports.loop.RunFor(2900ms);
  EXPECT_EQ(Panels(), Lines{});
  ports.loop.RunFor(200ms);
  EXPECT_EQ(Panels().back(), "Have Bounce Control..");
  EXPECT_EQ(asked, 2);
  relay.Close();
  ports.loop.RunFor(1h);
  EXPECT_EQ(Panels(), Lines{""}) << "closing ends the retries";
}

// A carriage return ends a line for some receivers.
TEST_F(Bounce, WhatIsOneLineHereIsOneLineThere) {
  Apply();
  EXPECT_TRUE(relay.Relay(std::string("SET_CURRENT_ITEM ITitle=x\rNET_CONTROL_LOGOFF\0y", 46), true));
  ports.loop.RunPosted();
  EXPECT_EQ(arrived, Lines{"SET_CURRENT_ITEM ITitle=x NET_CONTROL_LOGOFF y"});
}

TEST_F(Bounce, AnUnreadLinkIsClosedAtItsBound) {
  Apply();
  Panels();
  ports.network.StopReading(true);
  const std::string megabyte(1000 * 1000, 'x');
  int taken = 0;
  while (taken < 20 && relay.Relay(megabyte, true)) ++taken;
  EXPECT_EQ(taken, 4) << "the line that passes 4 MiB is lost";
  EXPECT_EQ(Panels().back(), "Bounce Disconnected.. (the remote does not take the information)");
  EXPECT_EQ(
      ports.person.notes.back(),
      " Radio One: does not relay to second-site, control port 2: the server does not read what it is sent");
  ports.network.StopReading(false);
  ports.loop.RunPosted();
  EXPECT_EQ(arrived, Lines{}) << "what was queued is dropped with the link";
  EXPECT_EQ(remote->ControllerName(), "");
  Apply();
  EXPECT_EQ(Panels().back(), "Have Bounce Control..");
}

TEST_F(Bounce, SettingsThatLeadNowhereAreNoted) {
  service.settings.BounceServer.clear();
  Apply();
  EXPECT_EQ(Panels(), Lines{"Bounce Disconnected.."});
  EXPECT_EQ(ports.person.notes.back(),
            " Radio One: relays nothing: BounceServer is empty, or BouncePort is not 1 to 58635");
  service.settings.BounceServer = "second-site";
  for (const std::int32_t port : {0, -1, 58636, 2147483647}) {
    service.settings.BouncePort = port;
    Apply();
    EXPECT_EQ(Panels(), Lines{"Bounce Disconnected.."}) << port;
  }
}

}  // namespace
}  // namespace zeb
