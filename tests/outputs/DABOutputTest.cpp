// The DAB output: its state table on a scripted control, and its conversation over the label protocol.
#include "outputs/OutputTable.h"
#include "outputs/dab/clsZEBDABOutput.h"
#include "outputs/labels/LabelClient.h"
#include "outputs/wire/WireLog.h"
#include "tests/outputs/WireFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

class ScriptedClient : public DABClientControl {
 public:
  std::int32_t CurrentState() const override { return state; }
  bool Connect(const std::string& server, std::uint16_t port) override {
    calls.push_back("connect " + server + ":" + std::to_string(port));
    state = afterConnect;
    return canConnect;
  }
  void LogOn(const std::string& service, const std::string& password) override {
    calls.push_back("log on " + service + " " + password);
    state = afterLogOn;
  }
  void SendLabel(const std::string& label) override {
    calls.push_back("label " + label);
    if (!answersLabels) ++unanswered;
  }
  std::size_t UnansweredLabels() const override { return unanswered; }
  void Close() override { calls.emplace_back("close"); }
  std::string LastError() const override { return error; }
  std::string Server() const override { return server; }
  std::uint16_t Port() const override { return 4000; }
  std::string Service() const override { return "Demo FM"; }

  std::int32_t state = 0, afterConnect = 0, afterLogOn = 80;
  bool canConnect = true, answersLabels = true;
  std::size_t unanswered = 0;
  std::string error, server = "mux";
  std::vector<std::string> calls;
};

class DABOutputTest : public WireTest {
 protected:
  DABOutputTest() {
    output->settings.ServerName = "mux";
    output->settings.ServiceName = "Demo FM";
    output->settings.ServicePassword = "secret";
    output->settings.simpleText = "<ZEB_NOW_ITEMNAME>";
  }
  Lines Prepare() {
    Log();
    EXPECT_TRUE(t.loop.RunTask([&] { output->PrepareOutput(Snapshot()); }));
    Lines lines = Log();
    EXPECT_EQ(lines.front(), "Started DAB.PrepareOutput");
    EXPECT_EQ(lines.back(), "Finished DAB.PrepareOutput");
    return {lines.begin() + 1, lines.end() - 1};
  }
  Lines UpdateLog() {
    Log();
    EXPECT_TRUE(t.loop.RunTask([&] { output->UpdateOutput(Snapshot()); }));
    t.loop.RunPosted();  // the wire log
    return Log();
  }

  std::shared_ptr<ScriptedClient> client = std::make_shared<ScriptedClient>();
  std::shared_ptr<clsZEBDABOutput> output = std::make_shared<clsZEBDABOutput>(t.environment);
};

TEST_F(DABOutputTest, EachStateHasItsLinesAndWaits) {
  const Lines logOn = {"Connection is connected", "Started DAB.LoginToDABServer",
                       "Finised DAB.LoginToDABServer"};
  const auto and_ = [](Lines lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
  };
  struct Change {
    Duration after;
    std::int32_t state;
  };
  struct Case {
    std::int32_t state, afterLogOn;
    std::vector<Change> changes;
    Lines lines;
    Duration takes;
  };
  const Lines connect = {"Connection is closed", "Started DAB.ConnectToDABServer", "Connected OK",
                         "Finished DAB.ConnectToDABServer"};
  const Case cases[] = {
      {0, 80, {}, connect, 0s},  // no waiting after a connect
      {10, 80, {}, {"Connection is closing"}, 3s},
      {10, 80, {{1s, 0}}, and_({"Connection is closing"}, connect), 1s},
      {20, 80, {}, {"Connection is connecting"}, 3s},
      {20, 80, {{1s, 0}}, {"Connection is connecting"}, 1s},  // refused
      {20, 100, {{2s, 30}}, and_(and_({"Connection is connecting"}, logOn), {"Connection is logged on"}), 2s},
      {30, 80, {}, and_(logOn, {"Connection is logging on"}), 6s},
      {30, 80, {{1s, 100}}, and_(logOn, {"Connection is logged on"}), 1s},
      {80, 80, {}, {"Connection is logging on"}, 3s},
      {80, 80, {{1s, 0}}, {"Connection is logging on"}, 1s},
      {100, 80, {}, {"Connection is logged on"}, 0s},
  };
  output->StartOutput(client);
  for (const Case& c : cases) {
    client->state = c.state;
    client->afterLogOn = c.afterLogOn;
    std::vector<Timer> timers;
    for (const Change& change : c.changes)
      timers.push_back(t.loop.After(change.after, [&, to = change.state] { client->state = to; }));
    const MonotonicTime start = t.loop.Monotonic();
    EXPECT_EQ(Prepare(), c.lines) << c.state;
    EXPECT_EQ(t.loop.Monotonic() - start, c.takes) << c.state;
    EXPECT_EQ(Has(UpdateLog(), "Exit as not logged on"), client->state != 100) << c.state;
    EXPECT_EQ(output->ProblemText().empty(), client->state == 100) << c.state;
  }
}

TEST_F(DABOutputTest, StartKeepsAConnectionOfItsOwnOnly) {
  const auto startLog = [&] {
    Log();
    output->StartOutput(client);
    return Log();
  };
  client->state = 100;
  EXPECT_TRUE(Has(startLog(), "Already Connected"));
  EXPECT_TRUE(client->calls.empty());
  client->server = "other";
  EXPECT_TRUE(Has(startLog(), "Closing existing connection to other"));
  EXPECT_EQ(client->calls, (Lines{"close"}));
  output->StopOutput();
  EXPECT_TRUE(Has(Log(), "Closing Connection to mux"));
  EXPECT_EQ(output->Status(), kStatusOff);
  EXPECT_EQ(Prepare(), (Lines{"Exit as no Control Object"}));
  // The control goes while it is waited for.
  output->StartOutput(client);
  client->state = 20;
  const Timer stop = t.loop.After(1s, [&] { output->StopOutput(); });
  const Lines lines = Prepare();
  EXPECT_EQ(lines.back(), "Exit as no Control Object");
  client->canConnect = false;
  client->state = 0;
  output->StartOutput(client);
  EXPECT_TRUE(Has(Prepare(), "Failed to Connect"));
  output->LoginToDABServer();
  EXPECT_TRUE(Has(Log(), "Exit as not connected"));
}

TEST_F(DABOutputTest, TheLabelIsOneLineCutAndLogged) {
  service.settings.LoggingPath = "/logs/";
  output->StartOutput(client);
  client->state = 100;
  const auto label = [&](const std::string& text) {
    client->calls.clear();
    output->settings.simpleText = text;
    const Lines lines = UpdateLog();
    EXPECT_TRUE(client->calls.size() == 1) << text;
    EXPECT_TRUE(Has(lines, "Adding to Log File"));
    EXPECT_TRUE(Has(lines, "Finished DLS send"));
    return client->calls.empty() ? "" : client->calls[0];
  };
  EXPECT_EQ(label("Now:\r\n<ZEB_NOW_ITEMNAME>"), "label Now:Rain on Slate");
  EXPECT_EQ(t.files.Contents("/logs/Service 07/2026-03-02-DAB-(Demo_FM).log"),
            std::string("Now:Rain on Slate") + kWireLogLineEnd);
  output->settings.append = "{21}{0D}<ZEB_NOW_ITEMNAME>";
  EXPECT_EQ(label("é"), "label é!Rain on Slate");
  output->settings.MaxNumberChars = "10";
  EXPECT_EQ(label("elevencharx"), "label elevenchar");
  EXPECT_EQ(label("éé"), "label éé!Rain on");
  output->settings.characterSet = CharacterSet::kEbuLatin;
  EXPECT_EQ(label("Łódź 日"), "label Łódź ?!Rai");
  // A value's own line ends and control characters part words.
  output->settings.append = "";
  output->settings.MaxNumberChars = "";
  Play("One\r\nLABEL\x1B\xC2\x85Two");
  EXPECT_EQ(label("a\n<ZEB_NOW_ITEMNAME>"), "label aOne  LABEL  Two");
  Play("Rain on Slate");

  static_cast<WireFormats&>(output->settings) = {"", "", "", true};
  client->calls.clear();
  EXPECT_TRUE(Has(UpdateLog(), "Exit as no strings to choose from"));
  EXPECT_TRUE(client->calls.empty());
  output->settings.DefaultText = "Demo FM";
  UpdateLog();
  EXPECT_EQ(client->calls, (Lines{"label Demo FM"}));
}

TEST_F(DABOutputTest, ALabelIsOutOnceTheServerHasTakenIt) {
  output->StartOutput(client);
  client->state = 100;
  client->answersLabels = false;
  struct Case {
    Duration after;
    std::function<void()> change;
    Duration takes;
    std::int32_t status;
    std::string problem;
  };
  const auto answer = [&](const char* error) {
    return [this, error] {
      client->unanswered = 0;
      client->error = error;
    };
  };
  const Case cases[] = {
      {1s, answer(""), 1s, kStatusOK, ""},
      {2s, answer("mux refused the label: no"), 2s, kStatusError, "mux refused the label: no"},
      {4s, answer(""), 3s, kStatusError, "mux has not answered to the label"},
      {1s, [this] { client->state = 0; }, 1s, kStatusError, "mux: the connection was closed"},
      {1s, [this] { output->StopOutput(); }, 1s, kStatusOff, ""},
  };
  for (const Case& c : cases) {
    client->state = 100;
    client->unanswered = 0;
    client->error.clear();
    const Timer timer = t.loop.After(c.after, c.change);
    const MonotonicTime start = t.loop.Monotonic();
    EXPECT_EQ(Update(*output), c.problem.empty() && c.status == kStatusOK) << c.problem;
    EXPECT_EQ(t.loop.Monotonic() - start, c.takes) << c.problem;
    EXPECT_EQ(output->Status(), c.status) << c.problem;
    EXPECT_EQ(output->ProblemText(), c.problem);
    t.loop.RunFor(5s);
  }
}

TEST_F(DABOutputTest, WithoutSettingsItHasItsDefaults) {
  const auto fresh =
      std::dynamic_pointer_cast<clsZEBDABOutput>(MakeOutputFactory(t.environment)(OutputType::kDAB));
  fresh->GetOutputInformation(7, 1);
  EXPECT_EQ(fresh->settings.ServerPort, "4000");
  EXPECT_EQ(fresh->settings.PollSeconds, 20);
  EXPECT_EQ(fresh->settings.MaxNumberChars, "");
  EXPECT_EQ(fresh->settings.simpleText, kDefaultSimpleTextFormat);
  EXPECT_EQ(fresh->settings.characterSet, CharacterSet::kUtf8);
  EXPECT_EQ(output->GetInformationString(), "mux (Demo_FM)");
}

// A label server that does what `answer` says to each line.
class LabelClientTest : public DABOutputTest {
 protected:
  LabelClientTest() {
    listener->onConnection = [this](std::unique_ptr<TcpConnection> connection) {
      peer = std::move(connection);
      peer->onData = [this](std::string_view bytes) {
        got += bytes;
        if (const std::string reply = answer(std::string(bytes)); !reply.empty()) peer->Send(reply);
      };
    };
    EXPECT_TRUE(listener->Listen("", 4000));
    output->StartOutput(label);
  }
  bool Pass() {
    const bool sent = Update(*output);
    t.loop.RunPosted();
    return sent;
  }

  std::shared_ptr<LabelClient> label = std::make_shared<LabelClient>(t.network);
  std::unique_ptr<TcpListener> listener = t.network.MakeListener();
  std::unique_ptr<TcpConnection> peer;
  std::function<std::string(const std::string&)> answer = [](const std::string&) { return "OK\r\n"; };
  std::string got;
};

TEST_F(LabelClientTest, OnePassConnectsLogsOnAndSends) {
  Play("Say \"{hi}\"");
  output->settings.ServicePassword = "se\"cret";
  const MonotonicTime start = t.loop.Monotonic();
  EXPECT_TRUE(Pass());
  EXPECT_EQ(t.loop.Monotonic() - start, 0s);
  EXPECT_EQ(got,
            "LOGON SERVICE=\"Demo FM\" PASSWORD=\"se{22}cret\"\r\nLABEL TEXT=\"Say {22}{7B}hi}{22}\"\r\n");
  EXPECT_EQ(output->Status(), kStatusOK);
  got.clear();
  output->StopOutput();
  t.loop.RunPosted();
  EXPECT_EQ(got, "LOGOFF\r\n");
}

// A server that is started again has no label until it is sent one.
TEST_F(LabelClientTest, AServerThatGoesIsNoticedAtOnceAndGetsTheLabelAgain) {
  int lost = 0;
  output->onShownLost = [&] { ++lost; };
  EXPECT_TRUE(Pass());
  peer.reset();
  listener->Close();
  t.loop.RunPosted();
  EXPECT_EQ(lost, 1);
  EXPECT_EQ(output->Status(), kStatusError);
  EXPECT_EQ(output->ProblemText(), "mux closed the connection");
  EXPECT_FALSE(Pass());
  EXPECT_NE(output->ProblemText().find("refused"), std::string::npos) << output->ProblemText();
  EXPECT_TRUE(listener->Listen("", 4000));
  got.clear();
  EXPECT_TRUE(Pass());
  EXPECT_EQ(got.substr(got.find("LABEL")), "LABEL TEXT=\"Rain on Slate\"\r\n");
  EXPECT_EQ(output->ProblemText(), "");
  EXPECT_EQ(lost, 1);
  output->StopOutput();  // on purpose: nothing is lost
  t.loop.RunPosted();
  EXPECT_EQ(lost, 1);
}

TEST_F(LabelClientTest, AServerThatIsNotThereIsAProblem) {
  struct Case {
    SimulatedNetwork::HostBehaviour behaviour;
    Duration takes;
    std::int32_t status;
    std::string words;
  };
  const Case cases[] = {
      {SimulatedNetwork::HostBehaviour::kHangs, 3s, kStatusConnecting, "mux does not answer"},
      {SimulatedNetwork::HostBehaviour::kRefuses, 0s, kStatusError, "connection refused"},
      {SimulatedNetwork::HostBehaviour::kUnknownName, 0s, kStatusError, "cannot find the host 'mux'"},
  };
  for (const Case& c : cases) {
    t.network.SetHost("mux", c.behaviour);
    label->Close();
    const MonotonicTime start = t.loop.Monotonic();
    EXPECT_FALSE(Pass());
    EXPECT_EQ(t.loop.Monotonic() - start, c.takes) << c.words;
    EXPECT_EQ(output->Status(), c.status) << c.words;
    EXPECT_NE(output->ProblemText().find(c.words), std::string::npos) << output->ProblemText();
  }
}

TEST_F(LabelClientTest, BadServersEndInAReasonNeverInAHang) {
  struct Case {
    std::function<std::string(const std::string&)> answer;
    std::string problem;
  };
  const Case cases[] = {
      {[](const std::string&) { return "ERROR wrong password\r\n"; },
       "mux refused the log-on: wrong password"},
      {[](const std::string&) { return "220 mail\1 here\r\n"; },
       "mux does not speak the label protocol: '220 mail  here'"},
      {[](const std::string&) { return std::string(5000, 'x'); }, "mux does not speak the label protocol"},
      {[](const std::string& line) { return line.substr(0, 5) == "LOGON" ? "ok\n" : "ERROR too long\r\n"; },
       "mux refused the label: too long"},
  };
  for (const Case& c : cases) {
    answer = c.answer;
    label->Close();
    EXPECT_FALSE(Pass());
    EXPECT_EQ(output->Status(), kStatusError);
    EXPECT_EQ(output->ProblemText(), c.problem);
  }
  // Silence: the log-on is given its time, once more in the same pass.
  answer = [](const std::string&) { return ""; };
  label->Close();
  const MonotonicTime start = t.loop.Monotonic();
  EXPECT_FALSE(Pass());
  EXPECT_EQ(t.loop.Monotonic() - start, 6s);
  EXPECT_EQ(output->ProblemText(), "mux: no answer to the log-on");
}

TEST_F(LabelClientTest, AServerThatFallsSilentIsLeftAfterSixteenLabels) {
  EXPECT_TRUE(Pass());
  answer = [](const std::string&) { return ""; };
  for (int i = 0; i < 16; ++i) {
    EXPECT_FALSE(Pass());
    EXPECT_EQ(output->ProblemText(), "mux has not answered to the label");
  }
  EXPECT_FALSE(Pass());
  EXPECT_EQ(label->CurrentState(), DABClientControl::kClosed);
  EXPECT_EQ(output->ProblemText(), "mux does not answer");
}

TEST_F(LabelClientTest, ADayOfTwoLabelsASecondLeavesNothingBehind) {
  DebugLog quiet{t.loop, t.files, t.person, "zebd", "/log", 0};
  quiet.Install();
  std::size_t labels = 0;
  answer = [&](const std::string& line) {
    labels += line.substr(0, 5) == "LABEL" ? 1u : 0u;
    return "OK\r\n";
  };
  t.person.notes.clear();
  Pass();
  const MonotonicTime end = t.loop.Monotonic() + 24h;
  ASSERT_TRUE(t.loop.RunTask(
      [&] {
        while (t.loop.Monotonic() < end) {
          output->PrepareOutput(Snapshot());
          output->UpdateOutput(Snapshot());
          got.clear();
          t.loop.Wait(500ms);
          ASSERT_EQ(label->LastError(), "");
        }
      },
      25h));
  EXPECT_EQ(labels, 172801u);
  EXPECT_TRUE(t.person.notes.empty());
}

}  // namespace
}  // namespace zeb
