#include <gtest/gtest.h>

#include <algorithm>

#include "app/frmService.h"
#include "platform/simulated/TestEnvironment.h"
#include "sources/uNetControlServer.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

// What all outputs of a test do, and what they were asked.
struct Script {
  Duration updateTime{}, startTime{};
  std::string problem;
  bool throws = false;
  bool sends = true;  // strings and travel flags leave
  Lines lines;
};

class FakeOutput : public clsZEBTemplate, public StringOutput, public ScriptCommandOutput {
 public:
  FakeOutput(Environment& environment, Script& script) : clsZEBTemplate(environment), script_(script) {
    SetStatus(kStatusOK);
  }
  ~FakeOutput() override { *alive_ = false; }

  bool StartOutput(std::shared_ptr<Control> control) override {
    Wait(script_.startTime);
    return Write(control ? "start with control" : "start");
  }
  bool StopOutput() override { return Write("stop"); }
  void Cancel() override { Write("cancel"); }
  bool UpdateOutput(const SnapshotPtr& snapshot) override {
    const std::string title = snapshot->currentItem->ItemName;
    Wait(script_.updateTime);
    Write("'" + title + "'");
    if (script_.throws) throw std::runtime_error("cannot");
    SetStatus(script_.problem.empty() ? kStatusOK : kStatusError);
    return true;
  }
  std::vector<Problem> Problems() const override {
    if (!script_.problem.empty()) return {{"", script_.problem}};
    return clsZEBTemplate::Problems();
  }
  void SendScriptCommand(const std::string&, const std::string& text) override { Write("command " + text); }
  bool SendString(const ServiceSnapshot&, const std::string& text) override {
    return Write("string " + text);
  }
  bool SetTravelFlagActivated(const ServiceSnapshot&) override { return Write("travel on") && script_.sends; }
  bool SetTravelFlagCleared(const ServiceSnapshot&) override { return Write("travel off") && script_.sends; }

 private:
  void Wait(Duration time) {
    const auto alive = alive_;
    if (time > Duration::zero()) environment_.loop.Wait(time);
    EXPECT_TRUE(*alive) << "an output in use was destroyed";
  }
  bool Write(const std::string& line) {
    const auto at = std::chrono::duration_cast<std::chrono::milliseconds>(environment_.loop.Monotonic());
    script_.lines.push_back(std::to_string(at.count()) + " " + line);
    return true;
  }
  Script& script_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

class frmServiceTest : public testing::Test {
 protected:
  frmServiceTest() {
    ports.hive.WriteText(Key(), "ServiceName", "Demo FM");
    ports.hive.WriteNumber(Key(), "TolvanTCPControlPort", 1);
    Outputs("File", 1);
  }
  ~frmServiceTest() override {
    if (window) Close();
  }
  std::string Key() const { return ports.environment.ServiceKey(1); }
  std::int32_t Stored(const std::string& name) { return ports.hive.ReadNumber(Key(), name, -1); }
  void Outputs(const std::string& type, int count, int interval = 0) {
    ports.hive.WriteText(Key() + "\\" + type, "NumberOutputs", std::to_string(count));
    ports.hive.WriteText(Key() + "\\" + type, "UpdateInterval", std::to_string(interval));
  }
  void Open() {
    window = frmService::Create(ports.environment, [this](OutputType) {
      return std::make_shared<FakeOutput>(ports.environment, script);
    });
    window->Open(1);
    ports.loop.RunPosted();
    if (script.startTime == Duration::zero()) script.lines.clear();
  }
  void Close() {
    window->Close();
    EXPECT_TRUE(ports.loop.RunUntil([this] { return window->Closed(); }, 10min));
  }
  void Say(std::string_view line) { window->SetZEBInformation(line); }
  void At(Duration moment) { ports.loop.RunFor(moment - ports.loop.Monotonic()); }
  Lines Take() { return std::exchange(script.lines, {}); }
  std::string Panel() const { return window->PanelText(Panel::kInformation); }
  Lines Notes() { return std::exchange(ports.person.notes, {}); }

  TestEnvironment ports;
  Script script;
  std::shared_ptr<frmService> window;
};

TEST_F(frmServiceTest, PublishesOneAndAHalfSecondsAfterTheLastInformation) {
  Open();
  At(300ms);
  Say("SET_CURRENT_ITEM ITitle=a");
  EXPECT_EQ(Panel(), "Information Update received, waiting..");
  At(1000ms);
  Say("SET_CURRENT_ITEM ITitle=b");
  Say("SET_PRESENTER PRESENTER=p");
  At(2499ms);
  EXPECT_EQ(Take(), Lines{});
  EXPECT_EQ(Panel(), "Information Update received, waiting..");
  At(2500ms);
  EXPECT_EQ(Take(), Lines{"2500 'b'"});
  EXPECT_EQ(Panel(), "");
  Say("SET_CURRENT_ITEM ITitle=b");  // the same
  At(60s);
  EXPECT_EQ(Take(), Lines{});
  window->ForceUpdate();
  EXPECT_EQ(Panel(), "Forcing Information Update, waiting..");
  At(70s);
  EXPECT_EQ(Take(), Lines{"61500 'b'"});
  Say("UPDATE");
  At(80s);
  EXPECT_EQ(Take(), Lines{"71500 'b'"});
}

TEST_F(frmServiceTest, InstantUpdateAndWhatArrivesMeanwhile) {
  ports.hive.WriteNumber(Key(), "InstantUpdate", 1);
  script.updateTime = 2s;
  Open();
  At(100ms);
  Say("SET_CURRENT_ITEM ITitle=a");
  EXPECT_EQ(Panel(), "Information Update received, updating..");
  EXPECT_TRUE(window->service().UpdateInProgress());
  At(200ms);
  Say("SET_CURRENT_ITEM ITitle=b");  // due at 1.7 s, while the first update still runs
  At(2100ms);
  EXPECT_EQ(Take(), Lines{"2100 'a'"});
  At(3500ms);
  Say("SET_CURRENT_ITEM ITitle=c");
  Say("SET_CURRENT_ITEM ITitle=d");
  EXPECT_EQ(Panel(), "Information Update received, updating..");
  At(20s);
  EXPECT_EQ(Take(), (Lines{"4100 'b'", "6100 'd'"})) << "the newest, as soon as the output is free";
  EXPECT_EQ(Panel(), "");
}

TEST_F(frmServiceTest, PeriodicUpdatesGoOnBetweenInformation) {
  Outputs("Web", 1, 3);
  Open();
  Say("SET_CURRENT_ITEM ITitle=x0");
  for (int i = 1; i <= 10; ++i) {  // a source that never falls silent for as long as an update waits
    At(i * 1s + 1ms);
    Say("SET_CURRENT_ITEM ITitle=x" + std::to_string(i));
  }
  EXPECT_EQ(Take(), (Lines{"1000 'x0'", "5000 'x4'", "9000 'x8'", "10000 'x9'", "10000 'x9'"}))
      << "only the web output has an interval; ten seconds after the first all are updated";
  EXPECT_EQ(Panel(), "Information Update received, waiting..");
  At(20s);
  EXPECT_EQ(Take(), (Lines{"11501 'x10'", "11501 'x10'", "15000 'x10'", "19000 'x10'"}));
}

TEST_F(frmServiceTest, AnIdleServiceStartsNoTasks) {
  Open();
  Say("SET_CURRENT_ITEM ITitle=a");
  At(10s);
  Take();
  const int version = window->ItemListVersion();
  At(24h);
  EXPECT_EQ(Take(), Lines{});
  EXPECT_EQ(window->ItemListVersion(), version);
}

TEST_F(frmServiceTest, BulkLoadIsOneUpdate) {
  Open();
  Say("SET LOG CURRENTITEMS,ITitle=a,ITitle=b");
  EXPECT_EQ(Take(), Lines{"0 'a'"});
  EXPECT_EQ((*window->service().NextItem(1))->ItemName, "b");
  EXPECT_EQ(window->service().ItemCount(), 50);
  At(10s);
  EXPECT_EQ(Take(), Lines{});
  EXPECT_EQ(Panel(), "");
}

TEST_F(frmServiceTest, TravelFlagAndNearEnd) {
  Outputs("File", 0);
  Outputs("Serial", 1);
  Outputs("Encoder", 1);
  ports.hive.WriteText(Key(), "TravelFlagActivateString", "TRAVEL");
  ports.hive.WriteNumber(Key(), "TravelFlagDeactivateTimeout", 20);
  script.updateTime = 30s;
  Open();
  Say("SET_CURRENT_ITEM ITitle=\"Travel news\"");
  EXPECT_EQ(window->PanelText(Panel::kTravel), "TA");
  EXPECT_EQ(Take(), Lines{"0 travel on"});
  Say("CURRENTITEM_NEAREND");
  EXPECT_EQ(Take(), (Lines{"0 command SAE\r\n", "0 string SAE\r\n"}));
  At(19900ms);
  EXPECT_EQ(window->PanelText(Panel::kTravel), "TA");
  At(20s);  // the update that began at 1.5 s runs still
  EXPECT_EQ(window->PanelText(Panel::kTravel), "");
  EXPECT_EQ(Stored("TravelFlagActive"), 1) << "its end has not left yet";
  Say("CURRENTITEM_NEAREND");
  Say("CURRENTITEM_NEAREND");  // the same end again
  At(2min);
  EXPECT_EQ(Take(), (Lines{"31500 'Travel news'", "31500 command SAE\r\n", "31500 'Travel news'",
                           "31500 travel off", "31500 string SAE\r\n"}));
  EXPECT_EQ(Stored("TravelFlagActive"), 0);
}

TEST_F(frmServiceTest, TheTravelFlagEndsWithTheServiceOrAtTheNextStart) {
  Outputs("File", 0);
  Outputs("Serial", 1);
  ports.hive.WriteText(Key(), "TravelFlagActivateString", "TRAVEL");
  Open();
  Say("SET_CURRENT_ITEM ITitle=\"Travel news\"");
  EXPECT_EQ(Stored("TravelFlagActive"), 1);
  EXPECT_EQ(Take(), Lines{"0 travel on"});
  script.sends = false;  // the encoder's cable is out
  Close();
  EXPECT_EQ(Take(), (Lines{"0 travel off", "0 stop"}));
  EXPECT_EQ(Stored("TravelFlagActive"), 1);
  script.sends = true;
  Open();
  ports.loop.RunFor(1s);
  EXPECT_EQ(script.lines, Lines{});
  EXPECT_EQ(Stored("TravelFlagActive"), 0);
  Close();
}

TEST_F(frmServiceTest, TheControllerIsGreetedAndShown) {
  Open();
  EXPECT_EQ(window->PanelText(Panel::kNetControl), "No controller connected");
  std::string received;
  auto socket = ports.network.MakeClient();
  socket->onData = [&](std::string_view bytes) { received += bytes; };
  socket->onConnected = [&] {
    socket->SendData("NET_CONTROL_LOGON Desk 1\r\nSET_CURRENT_ITEM ITitle=net\r\n");
  };
  socket->Connect("here", 6901);
  ports.loop.RunPosted();
  EXPECT_EQ(received, "NET_CONTROL_GRANTED\r\nGET_INFORMATION\r\n");
  EXPECT_EQ(window->PanelText(Panel::kNetControl), "Desk 1 has Control");
  EXPECT_EQ(window->service().CurrentItem()->ItemName, "net");
  EXPECT_TRUE(window->Reload());  // the port is the same, so the controller stays
  ports.loop.RunPosted();
  EXPECT_EQ(window->PanelText(Panel::kNetControl), "Desk 1 has Control");
  ports.hive.WriteNumber(Key(), "TolvanTCPControlPort", 2);
  EXPECT_TRUE(window->Reload());
  ports.loop.RunPosted();
  EXPECT_EQ(window->PanelText(Panel::kNetControl), "No controller connected");
  EXPECT_EQ(socket->CurrentState(), TcpClientControl::kClosed);
}

TEST_F(frmServiceTest, RelaysWhatItsControllerSends) {
  ports.hive.WriteNumber(Key(), "UseBounce", 1);
  ports.hive.WriteText(Key(), "BounceServer", "second-site");
  ports.hive.WriteNumber(Key(), "BouncePort", 7);
  Lines relayed;
  uNetControlServer::Events events;
  events.MessageFromController = [&](int, std::string_view line) { relayed.emplace_back(line); };
  uNetControlServer remote(ports.environment, events);
  ASSERT_TRUE(remote.Listen(6907));
  Open();
  EXPECT_TRUE(window->PanelVisible(Panel::kBounceControl));
  EXPECT_EQ(window->PanelText(Panel::kBounceControl), "Have Bounce Control..");
  EXPECT_EQ(remote.ControllerName(), "ZEB.Demo");
  std::string received;
  auto playout = ports.network.MakeClient();
  playout->onData = [&](std::string_view bytes) { received += bytes; };
  playout->onConnected = [&] {
    playout->SendData("NET_CONTROL_LOGON Desk\r\nNO_SUCH {0D}\xE9\r\nSET_CURRENT_ITEM ITitle=a\r\n");
  };
  playout->Connect("here", 6901);
  ports.loop.RunPosted();
  Say("SET_CURRENT_ITEM ITitle=a");  // by hand, and nothing new: relayed all the same
  ports.loop.RunPosted();
  EXPECT_EQ(relayed, (Lines{"NO_SUCH {0D}\xE9", "SET_CURRENT_ITEM ITitle=a", "SET_CURRENT_ITEM ITitle=a"}));
  EXPECT_EQ(window->service().CurrentItem()->ItemName, "a");

  received.clear();
  remote.Close();
  ports.loop.RunPosted();
  EXPECT_EQ(window->PanelText(Panel::kBounceControl), "Bounce Disconnected..");
  ASSERT_TRUE(remote.Listen(6907));
  EXPECT_TRUE(window->Reload());
  ports.loop.RunPosted();
  EXPECT_EQ(received, "GET_INFORMATION\r\n") << "so that the remote hears everything again";
  ports.hive.WriteNumber(Key(), "UseBounce", 0);
  EXPECT_TRUE(window->Reload());
  ports.loop.RunPosted();
  EXPECT_FALSE(window->PanelVisible(Panel::kBounceControl));
  EXPECT_TRUE(window->PanelVisible(Panel::kNetControl));
  EXPECT_EQ(remote.ControllerName(), "");
}

TEST_F(frmServiceTest, ListensOnlyWhereItShould) {
  struct Case {
    int source, number;
    bool listens;
  };
  for (const Case& c : {Case{0, 1, true},
                        {0, 0, false},
                        {0, -1, false},
                        {11, 1, false},
                        {0, 58635, true},
                        {0, 58636, false},
                        {0, 2147483647, false}}) {
    ports.hive.WriteNumber(Key(), "InfoSourceType", c.source);
    ports.hive.WriteNumber(Key(), "TolvanTCPControlPort", c.number);
    Open();
    const Lines notes = Notes();
    ASSERT_EQ(notes.size(), 1U) << c.number;
    if (c.listens)
      EXPECT_EQ(notes[0], "Demo FM: listening on port " + std::to_string(6900 + c.number));
    else
      EXPECT_TRUE(notes[0].ends_with("so nothing will be received")) << notes[0];
    Close();
  }
}

TEST_F(frmServiceTest, TriesATakenPortAgain) {
  auto other = ports.network.MakeListener();
  ASSERT_TRUE(other->Listen("", 6901));
  Open();
  At(100s);
  EXPECT_EQ(Notes(), Lines{"Demo FM: cannot listen on port 6901: address already in use"});
  SourceState source = window->Board().State().source;
  EXPECT_FALSE(source.healthy);
  EXPECT_EQ(source.text, "cannot listen on port 6901: address already in use; tried again every 30 s");
  other.reset();
  At(121s);
  EXPECT_EQ(Notes(), Lines{"Demo FM: listening on port 6901"});
  const auto playout = ports.network.MakeClient();
  playout->Connect("here", 6901);
  ports.loop.RunPosted();
  source = window->Board().State().source;
  EXPECT_TRUE(source.healthy);
  EXPECT_EQ(source.text, "port 6901");
  EXPECT_EQ(source.connections, 1);
}

TEST_F(frmServiceTest, TheJournalTellsOfUpdatesAndChanges) {
  Outputs("File", 2);
  Outputs("HTTP", 0);
  Outputs("Web", 1, 10);
  script.updateTime = 500us;
  Open();
  Notes();
  Say("SET_CURRENT_ITEM ITitle=\"One{0D}{0A}two\" AName1=Band");
  At(10s);
  EXPECT_EQ(Notes(), Lines{"Demo FM: updated 2 files, 1 web page in 0.5 ms: 'One two' by 'Band'"});
  script.problem = "cannot write '/srv/now.html': no space left";
  At(1min);  // several periodic updates of the web output
  EXPECT_EQ(Notes(), Lines{"Demo FM: Web 1: cannot write '/srv/now.html': no space left"});
  script.problem.clear();
  At(2min);
  EXPECT_EQ(Notes(), Lines{"Demo FM: Web 1 works again"});
  script.throws = true;
  Say("SET_CURRENT_ITEM ITitle=b");
  At(122s);
  EXPECT_EQ(Notes(), (Lines{"Demo FM: File 1: cannot", "Demo FM: File 2: cannot", "Demo FM: Web 1: cannot",
                            "Demo FM: updated nothing, 3 failing in 0.5 ms: 'b' by ''"}));
}

TEST_F(frmServiceTest, OutputsGetTheirControls) {
  for (const char* type : {"Web", "HTTPRequest", "Serial", "Encoder", "DAB"}) Outputs(type, 1);
  script.startTime = 1s;
  Open();
  Say("SET LOG CURRENTITEMS,ITitle=early");  // no update of an output that is not started yet
  At(30s);
  Lines starts, updates;
  for (const std::string& line : Take())
    (line.find("start") == std::string::npos ? updates : starts).push_back(line);
  EXPECT_EQ(starts, (Lines{"1000 start", "1000 start with control", "1000 start", "1000 start with control",
                           "1000 start", "1000 start with control"}))
      << "none waits for another";
  EXPECT_EQ(updates, Lines(6, "1000 'early'"));
}

TEST_F(frmServiceTest, ReloadRestartsWhatChangedAndNothingElse) {
  script.updateTime = 5s;
  Open();
  Say("SET_CURRENT_ITEM ITitle=a");
  Say("SET_SHOW SHOW=s");
  window->service().settings.LastUpdateOnServerIndex = 7;
  At(2s);
  const OutputPtr running = window->service().Output(OutputType::kFile, 1);
  ports.hive.WriteText(Key(), "ServiceName", "Demo Two");
  Outputs("File", 2);
  ports.hive.WriteNumber(Key() + "\\File", "DelaySeconds1", 3);  // a new one in front of the one that runs
  EXPECT_TRUE(window->Reload());
  EXPECT_EQ(window->service().settings.ServiceName, "Demo Two");
  EXPECT_EQ(window->service().ShowReference, "s");
  EXPECT_EQ(window->service().settings.LastUpdateOnServerIndex, 8);
  EXPECT_EQ(window->service().Output(OutputType::kFile, 2), running);
  At(1min);
  EXPECT_EQ(Take(), (Lines{"2000 start", "6500 'a'", "7000 'a'"})) << "the new one shows what is on";
  EXPECT_TRUE(window->Reload());
  Outputs("File", 1);
  EXPECT_TRUE(window->Reload());
  At(2min);
  EXPECT_EQ(Take(), Lines{"60000 stop"});
}

TEST_F(frmServiceTest, WhatCannotBeReadStaysAsItIs) {
  Open();
  Say("SET_CURRENT_ITEM ITitle=a");
  ports.hive.WriteText(Key(), "ServiceName", "Demo Two");
  ports.hive.failure = "the settings file is locked";
  const Outcome outcome = window->Reload();
  EXPECT_EQ(outcome.Reason(), "the settings of 'Demo FM' stay as they were: the settings file is locked");
  At(10s);
  EXPECT_EQ(Take(), Lines{"1500 'a'"}) << "and everything goes on";
  EXPECT_EQ(window->service().settings.ServiceName, "Demo FM");
  ports.hive.failure.clear();
}

TEST_F(frmServiceTest, CloseWaitsForTheUpdateAWhile) {
  struct Case {
    Duration updateTime;
    Lines lines;
  };
  for (const Case& c :
       {Case{1s, {"2500 'a'", "2500 stop"}}, Case{5s, {"4000 cancel", "6000 stop", "6500 'a'"}},
        Case{1h, {"4000 cancel", "6000 stop", "3601500 'a'"}}}) {
    TestEnvironment fresh;
    fresh.hive.WriteText(fresh.environment.ServiceKey(1) + "\\File", "NumberOutputs", "1");
    script.updateTime = c.updateTime;
    auto closing = frmService::Create(fresh.environment, [&](OutputType) {
      return std::make_shared<FakeOutput>(fresh.environment, script);
    });
    closing->Open(1);
    script.lines.clear();
    closing->SetZEBInformation("SET_CURRENT_ITEM ITitle=a");
    fresh.loop.RunFor(2s);
    closing->Close();
    EXPECT_FALSE(closing->Closed());
    closing->SetZEBInformation("SET_CURRENT_ITEM ITitle=too-late");
    closing.reset();  // what still runs keeps it
    fresh.loop.RunFor(2h);
    EXPECT_EQ(Take(), c.lines);
    EXPECT_EQ(fresh.loop.TaskCount(), 0U);
  }
}

TEST_F(frmServiceTest, ALoopThatEndsLeavesNothingBehind) {
  {
    TestEnvironment short_lived;
    short_lived.hive.WriteText(short_lived.environment.ServiceKey(1) + "\\File", "NumberOutputs", "1");
    script.updateTime = 5s;
    auto opened = frmService::Create(short_lived.environment, [&](OutputType) {
      return std::make_shared<FakeOutput>(short_lived.environment, script);
    });
    opened->Open(1);
    opened->SetZEBInformation("SET LOG CURRENTITEMS,ITitle=a");
    EXPECT_TRUE(opened->Reload());
    opened->Close();
    short_lived.loop.RunFor(1s);
  }
  EXPECT_EQ(Take(), Lines{"0 start"});
}

}  // namespace
}  // namespace zeb
