#include "outputs/encoder/clsZEBEncoderOutput.h"
#include "platform/simulated/SimulatedEncoders.h"
#include "tests/outputs/NetworkFixture.h"

namespace zeb {
namespace {

using Behaviour = SimulatedNetwork::HostBehaviour;

class EncoderOutputTest : public NetworkOutputTest {
 protected:
  EncoderOutputTest() {
    t.environment.encoders = &encoders;
    output.settings.SHOUTCastServerPassword = "hackme";
  }
  bool Start(std::int32_t type) {
    output.settings.EncoderType = type;
    bool started = false;
    EXPECT_TRUE(t.loop.RunTask([&] { started = output.StartOutput(t.network.MakeClient()); }));
    return started;
  }
  void RunSeconds(int seconds) { t.loop.RunFor(std::chrono::seconds(seconds)); }
  double Update(const std::string& format) {
    output.settings.SimpleTextFormat = format;
    return NetworkOutputTest::Update(output);
  }

  SimulatedEncoders encoders{t.loop};
  clsZEBEncoderOutput output{t.environment};
};

TEST_F(EncoderOutputTest, SendsTheGoldenRequests) {
  ScriptedServer server(t, 8000);
  ASSERT_TRUE(Start(kShoutcast));
  Update("####TEXT:<ZEB_NOW_ITEMNAME> by <ZEB_NOW_ARTISTS>\r\nlive");
  output.settings.IcecastMount = "/live stream.mp3";
  output.settings.IcecastCheckSeconds = 0;
  output.settings.SHOUTCastServerName = "::1";
  Update("####TEXT:<ZEB_NOW_ITEMNAME> by <ZEB_NOW_ARTISTS> 100%");
  ASSERT_EQ(server.requests.size(), 2u);
  EXPECT_EQ(server.requests[0], GoldenRequest("shoutcast.request"));
  EXPECT_EQ(server.requests[1], GoldenRequest("icecast.request"));
  EXPECT_EQ(output.ProblemText(), "");
}

// "&" and "#" would cut the title.
TEST_F(EncoderOutputTest, AShoutcastTitleIsEncodedWhollyWhenAskedFor) {
  ScriptedServer server(t, 8000);
  ASSERT_TRUE(Start(kShoutcast));
  output.settings.SHOUTCastEncoding = " FULL ";
  output.settings.characterSet = CharacterSet::kIso8859_1;
  Update("####TEXT:a&b#c%d+e zo\u00EB-._~");
  ASSERT_EQ(server.requests.size(), 1u);
  EXPECT_NE(server.requests[0].find("&song=a%26b%23c%25d%2Be%20zo%EB-._~ HTTP/1.1\r\n"), std::string::npos)
      << server.requests[0];
}

TEST_F(EncoderOutputTest, AnUnknownEncodingIsTold) {
  output.settings.SHOUTCastEncoding = "all";
  output.StoreOutputInformation(1, 4);
  clsZEBEncoderOutput other(t.environment);
  other.GetOutputInformation(1, 4);
  EXPECT_EQ(other.settings.SHOUTCastEncoding, "all");
  EXPECT_EQ(
      t.person.notes,
      std::vector<std::string>{
          "Encoder output 4: SHOUTCastEncoding: 'all' is not 'full'; only blanks of a title are encoded"});
}

TEST_F(EncoderOutputTest, SplitsCommands) {
  const std::string fifty(49, 'x');
  struct Case {
    std::string piece, type, value;
  };
  for (const Case& c : {Case{"TITLE:B:C", "TITLE", "B:C"},
                        {"####A:b", "A", "b"},
                        {"plain", "TEXT", "plain"},
                        {":x", "TEXT", "x"},
                        {fifty + ":v", fifty, "v"},
                        {"", "TEXT", ""},
                        {fifty + "x:v", "TEXT", fifty + "x:v"}}) {
    const EncoderCommand command = SplitCommand(c.piece);
    EXPECT_EQ(command.type, c.type) << c.piece;
    EXPECT_EQ(command.value, c.value) << c.piece;
  }
}

TEST_F(EncoderOutputTest, SeveralCommandsAreHalfASecondApartAndEmptyOnesSkipped) {
  ASSERT_TRUE(Start(kAsfEncoder));
  encoders.state().calls.clear();
  EXPECT_DOUBLE_EQ(Update("####TEXT:Song A####EMPTY:####TITLE:B"), 0.5);
  EXPECT_EQ(encoders.state().calls,
            (std::vector<std::string>{"SendScript TEXT Song A", "SendScript TITLE B"}));
  output.settings.SendEmptyStrings = true;
  encoders.state().calls.clear();
  EXPECT_DOUBLE_EQ(Update("one####EMPTY:"), 0.5);
  EXPECT_EQ(encoders.state().calls, (std::vector<std::string>{"SendScript TEXT one", "SendScript EMPTY "}));
}

TEST_F(EncoderOutputTest, EveryKindOfEncoderIsStartedAskedAndTold) {
  encoders.state().names = {"Other", "STATION One"};
  output.settings.WME7ComputerName = "pc";
  output.settings.WME7StreamIDName = "station one";
  output.settings.ASDFileLocation = "s.asd";
  using Calls = std::vector<std::string>;
  struct Case {
    std::int32_t type;
    Calls calls;
  };
  for (const Case& c :
       {Case{kRealProducer, {"SendRealMediaEvent 2 T"}},
        {kAsfEncoder, {"LoadASD s.asd", "SendScript TEXT T"}},
        {kWindowsMediaEncoder7, {"Agent on pc", "Encoder STATION One", "SendScript 0 TEXT T"}}}) {
    encoders.state().calls.clear();
    encoders.state().running = true;
    encoders.state().runState = 2;
    ASSERT_TRUE(Start(c.type));
    EXPECT_EQ(StatusText(output), "OK");
    Update("T");
    encoders.state().running = false;
    encoders.state().runState = 3;
    Update("not sent");
    EXPECT_EQ(encoders.state().calls, c.calls);
    EXPECT_EQ(StatusText(output), c.type == kWindowsMediaEncoder7 ? "Paused" : "Off");
    output.StopOutput();
    EXPECT_EQ(StatusText(output), "Off");
  }
}

TEST_F(EncoderOutputTest, RunStatesHaveTheirTexts) {
  encoders.state().names = {"a"};
  output.settings.WME7StreamIDName = "A";
  ASSERT_TRUE(Start(kWindowsMediaEncoder7));
  const char* const texts[] = {"Error", "Starting", "OK", "Paused", "Stopping", "Stopped", "Error"};
  for (int state = 0; state < 7; ++state) {
    encoders.state().runState = state;
    RunSeconds(3);
    EXPECT_EQ(StatusText(output), texts[state]);
  }
}

TEST_F(EncoderOutputTest, WhatCannotStartSaysWhy) {
  encoders.state().names = {"a"};
  EXPECT_FALSE(Start(kWindowsMediaEncoder7));
  EXPECT_EQ(StatusText(output), "Off");
  EXPECT_NE(output.ProblemText().find("has no encoder"), std::string::npos);
  EXPECT_FALSE(Start(3));
  EXPECT_EQ(output.GetInformationString(), "No Encoder type selected");
  EXPECT_EQ(StatusText(output), "Error");
  encoders.state().failure = "licence expired";
  EXPECT_FALSE(Start(kAsfEncoder));
  EXPECT_EQ(output.ProblemText(), "licence expired");
  t.environment.encoders = nullptr;
  for (const std::int32_t type : {kRealProducer, kAsfEncoder, kWindowsMediaEncoder7}) {
    EXPECT_FALSE(Start(type));
    EXPECT_EQ(StatusText(output), "Off");
    EXPECT_NE(output.ProblemText().find("not available on this platform"), std::string::npos);
  }
}

// The first call that hangs is given up, no other is made meanwhile, and what comes back mends itself.
TEST_F(EncoderOutputTest, AnEncoderThatHangsHoldsUpNothingAndMendsItself) {
  ASSERT_TRUE(Start(kRealProducer));
  encoders.state().hangs = true;
  EXPECT_DOUBLE_EQ(Update("T"), 5.0);
  EXPECT_EQ(output.ProblemText(), "the RealProducer encoder did not answer within 5 seconds");
  EXPECT_TRUE(output.MayPass());
  EXPECT_EQ(StatusText(output), "Error");
  EXPECT_DOUBLE_EQ(Update("T"), 0.0);
  EXPECT_EQ(output.ProblemText(), "the RealProducer encoder has still not answered a call of before");
  EXPECT_FALSE(Start(kRealProducer));
  RunSeconds(600);
  EXPECT_EQ(encoders.state().made, 1);
  encoders.state().hangs = false;
  RunSeconds(3);
  EXPECT_TRUE(encoders.state().calls.empty());
  Update("T");
  EXPECT_EQ(encoders.state().calls, std::vector<std::string>{"SendRealMediaEvent 2 T"});
  EXPECT_EQ(output.ProblemText(), "");
  EXPECT_EQ(StatusText(output), "OK");
}

TEST_F(EncoderOutputTest, ACommandThatHangsIsToldAndTriedAgain) {
  ASSERT_TRUE(Start(kAsfEncoder));
  encoders.state().calls.clear();
  t.loop.SetBlockingTime(std::chrono::seconds(3));  // so that the state is known when the hanging begins
  const auto hang = t.loop.After(std::chrono::seconds(4), [this] { encoders.state().hangs = true; });
  EXPECT_DOUBLE_EQ(Update("T"), 8.0);
  EXPECT_EQ(output.ProblemText(), "the ASF encoder did not answer within 5 seconds");
  EXPECT_FALSE(sent);
  int lost = 0;
  output.onShownLost = [&] { ++lost; };
  encoders.state().hangs = false;
  t.loop.SetBlockingTime({});
  RunSeconds(10);
  EXPECT_EQ(output.ProblemText(), "");
  EXPECT_EQ(lost, 1);
  Update("T");
  EXPECT_TRUE(sent);
  EXPECT_EQ(output.ProblemText(), "");
}

TEST_F(EncoderOutputTest, AnAgentThatHangsFromTheStartIsNamed) {
  output.settings.WME7ComputerName = "pc";
  encoders.state().hangs = true;
  const MonotonicTime begin = t.loop.Monotonic();
  EXPECT_FALSE(Start(kWindowsMediaEncoder7));
  EXPECT_EQ(t.loop.Monotonic() - begin, Duration(std::chrono::seconds(30)));
  EXPECT_EQ(output.ProblemText(), "the encoder agent on 'pc' did not answer within 30 seconds");
  EXPECT_EQ(StatusText(output), "Off");
}

// One that was off when the station was started, and one that went and came back as another.
TEST_F(EncoderOutputTest, AnEncoderThatComesLateOrComesBackIsMadeAnew) {
  encoders.state().failure = "the computer is off";
  EXPECT_FALSE(Start(kRealProducer));
  Update("T");
  EXPECT_EQ(output.ProblemText(), "the computer is off");
  EXPECT_TRUE(output.MayPass());
  encoders.state().failure.clear();
  Update("T");
  EXPECT_EQ(output.ProblemText(), "");
  EXPECT_EQ(encoders.state().made, 1);
  int lost = 0;
  output.onShownLost = [&] { ++lost; };
  encoders.state().stateFailure = "it is gone";
  RunSeconds(7);
  EXPECT_EQ(lost, 1);  // told once
  EXPECT_EQ(StatusText(output), "Error");
  EXPECT_EQ(output.ProblemText(), "it is gone");
  Update("T");
  EXPECT_EQ(encoders.state().made, 2);
  EXPECT_EQ(output.ProblemText(), "it is gone");
  encoders.state().stateFailure.clear();
  encoders.state().calls.clear();
  Update("T");
  EXPECT_EQ(encoders.state().calls, std::vector<std::string>{"SendRealMediaEvent 2 T"});
  EXPECT_EQ(StatusText(output), "OK");
}

TEST_F(EncoderOutputTest, AnEncoderThatBeginsToRunIsGivenTheTitle) {
  int lost = 0;
  output.onShownLost = [&] { ++lost; };
  encoders.state().running = false;
  ASSERT_TRUE(Start(kAsfEncoder));
  EXPECT_EQ(StatusText(output), "Off");
  encoders.state().running = true;
  RunSeconds(3);
  EXPECT_EQ(StatusText(output), "OK");
  EXPECT_EQ(lost, 1);
  output.StopOutput();
  encoders.state().stateFailure = "it is gone";
  RunSeconds(10);
  EXPECT_EQ(lost, 1);
}

TEST_F(EncoderOutputTest, AnOutputMayGoWhileItsEncoderIsCalled) {
  auto gone = std::make_unique<clsZEBEncoderOutput>(t.environment);
  gone->settings.EncoderType = kRealProducer;
  t.loop.Start("start", [&] { gone->StartOutput(nullptr); });
  RunSeconds(1);
  EXPECT_EQ(StatusText(*gone), "OK");
  encoders.state().hangs = true;
  RunSeconds(3);  // the look hangs
  gone.reset();
  encoders.state().hangs = false;
  RunSeconds(10);
  EXPECT_EQ(t.loop.TaskCount(), 0u);
}

// Stopped while it is being made: what comes then is let go.
TEST_F(EncoderOutputTest, AnEncoderThatComesAfterTheStopIsLetGo) {
  output.settings.EncoderType = kRealProducer;
  t.loop.SetBlockingTime(std::chrono::seconds(4));
  t.loop.Start("start", [&] { output.StartOutput(nullptr); });
  RunSeconds(2);
  output.StopOutput();
  RunSeconds(20);
  EXPECT_EQ(encoders.state().made, 1);
  EXPECT_EQ(StatusText(output), "Off");
  EXPECT_EQ(output.ProblemText(), "");
}

TEST_F(EncoderOutputTest, ADeadServerShowsUnknownAndIsTriedAgain) {
  ScriptedServer server(t, 8000);
  ASSERT_TRUE(Start(kShoutcast));
  t.network.SetHost("127.0.0.1", Behaviour::kHangs);
  EXPECT_DOUBLE_EQ(Update("T"), 10.0);
  EXPECT_EQ(output.Status(), 1);
  EXPECT_EQ(StatusText(output), "Unknown");
  EXPECT_TRUE(server.requests.empty());
  t.network.SetHost("127.0.0.1", Behaviour::kNormal);
  EXPECT_DOUBLE_EQ(Update("T"), 1.0);
  EXPECT_EQ(StatusText(output), "OK");
  EXPECT_EQ(output.ProblemText(), "");
}

TEST_F(EncoderOutputTest, AnswersAreJudgedByWhatTheySay) {
  ScriptedServer server(t, 8000);
  ASSERT_TRUE(Start(kShoutcast));
  struct Case {
    const char* answer;
    const char* problem;
    bool mayPass;
  };
  const std::string refused = "127.0.0.1:8000 did not take the title: ";
  for (const Case& c :
       {Case{"HTTP/1.0 200 OK\r\n\r\n", "", false},
        {"ICY 200 OK\r\n\r\n", "", false},
        {"HTTP/1.0 200 OK\r\n\r\n<iceresponse><message>Mountpoint will not accept URL updates</message>",
         "Mountpoint will not accept URL updates", false},
        {"HTTP/1.0 400 Bad Request\r\n\r\n<b>Source does not exist</b>", "Source does not exist", true},
        {"HTTP/1.0 200 OK\r\n\r\n<h1>Invalid Password!</h1>", "HTTP/1.0 200 OK", false},
        {"HTTP/1.0 401 Authentication Required\r\n\r\n", "HTTP/1.0 401 Authentication Required", false},
        {"HTTP/1.0 404 Not Found\r\n\r\n", "HTTP/1.0 404 Not Found", false},
        {"HTTP/1.0 503 Busy\r\n\r\n", "HTTP/1.0 503 Busy", true}}) {
    server.answer = c.answer;
    Update("T");
    const bool taken = std::string(c.problem).empty();
    EXPECT_EQ(output.ProblemText(), taken ? "" : refused + c.problem);
    EXPECT_EQ(output.MayPass(), c.mayPass) << c.answer;
    EXPECT_EQ(sent, taken) << c.answer;
    EXPECT_EQ(output.Status(), kStatusOK);
  }
  server.answer = "SSH-2.0-x\r\n";
  Update("T");
  EXPECT_EQ(output.ProblemText(), "127.0.0.1:8000 is no streaming server: it answered 'SSH-2.0-x'");
  EXPECT_FALSE(output.MayPass());
  server.answer = "";
  Update("T");
  EXPECT_EQ(output.ProblemText(), "127.0.0.1:8000 took the title, but did not answer within a second");
  EXPECT_TRUE(output.MayPass());
  server.closeAtOnce = true;
  Update("T");
  EXPECT_EQ(output.ProblemText(), "127.0.0.1:8000 closed the connection without an answer");
  EXPECT_TRUE(output.MayPass());
  // A text without a command sends nothing, and nothing fails.
  Update("");
  EXPECT_FALSE(sent);
  EXPECT_EQ(output.ProblemText(), "");
}

TEST_F(EncoderOutputTest, ACueIsSentAndASocketIsNeeded) {
  ScriptedServer server(t, 8000);
  ASSERT_TRUE(Start(kShoutcast));
  EXPECT_TRUE(t.loop.RunTask([&] { output.SendScriptCommand("CUE", "NEAR END"); }));
  ASSERT_EQ(server.requests.size(), 1u);
  EXPECT_NE(server.requests[0].find("&song=NEAR%20END HTTP/1.1\r\n"), std::string::npos);
  output.StopOutput();
  EXPECT_TRUE(t.loop.RunTask([&] { output.SendScriptCommand("CUE", "x"); }));
  EXPECT_EQ(server.requests.size(), 1u);
  EXPECT_EQ(output.Status(), kStatusOff);  // what is set is not shown without a socket
}

std::string StatusPage(const std::string& source) {
  return "HTTP/1.0 200 OK\r\n\r\n{\"icestats\":{\"server_start_iso8601\":\"2026-03-01T00:00:00+0000\"," +
         source + "\"dummy\":null}}";
}
std::string SourceOf(const std::string& mount, const std::string& began) {
  return "{\"listenurl\":\"http://radio.example:8000" + mount +
         "\",\"server_name\":\"x\",\"stream_start_iso8601\":\"" + began + "\",\"dummy\":null}";
}

TEST_F(EncoderOutputTest, AStatusPageSaysWhenAStreamBegan) {
  struct Case {
    std::string page, began;
  };
  for (const Case& c : {Case{"\"source\":" + SourceOf("/live", "T1") + ",", "T1"},
                        {"\"source\":[" + SourceOf("/a", "T1") + "," + SourceOf("/live", "T2") + "],", "T2"},
                        {"\"source\":[" + SourceOf("/live", "T1") + "," + SourceOf("/a", "T2") + "],", "T1"},
                        {"\"source\":[{\"listenurl\":\"http://x/live\"}," + SourceOf("/a", "T2") + "],", ""},
                        {"\"source\":{\"listenurl\":\"http://x/live", ""},
                        {"", ""}})
    EXPECT_EQ(StreamBeginning(StatusPage(c.page), "/live"), c.began) << c.page;
}

TEST_F(EncoderOutputTest, AStreamThatBeginsAnewHasForgottenItsTitle) {
  std::string source = "\"source\":" + SourceOf("/live", "T1") + ",";
  ScriptedServer server(t, 8000);
  int looks = 0, lost = 0;
  server.answerTo = [&](const std::string& request) {
    if (request.find("GET /status-json.xsl?mount=%2Flive HTTP/1.1\r\n") == 0) {
      ++looks;
      return StatusPage(source);
    }
    return std::string("HTTP/1.0 200 OK\r\n\r\n");
  };
  output.onShownLost = [&] { ++lost; };
  output.settings.IcecastMount = "/live";
  ASSERT_TRUE(Start(kShoutcast));
  t.loop.RunFor(std::chrono::minutes(1));
  EXPECT_EQ(looks, 0);  // nothing was sent yet
  Update("T");
  t.loop.RunFor(std::chrono::seconds(60));
  EXPECT_EQ(looks, 6);  // each takes a second, then ten pass
  EXPECT_EQ(lost, 0);
  source.clear();  // the source is away
  t.loop.RunFor(std::chrono::seconds(30));
  source = "\"source\":" + SourceOf("/live", "T2") + ",";
  EXPECT_EQ(lost, 0);
  t.loop.RunFor(std::chrono::seconds(30));
  EXPECT_EQ(lost, 1);
  output.StopOutput();
  const int before = looks;
  t.loop.RunFor(std::chrono::minutes(1));
  EXPECT_EQ(looks, before);
}

TEST_F(EncoderOutputTest, WithoutSettingsItHasItsDefaults) {
  output.GetOutputInformation(1, 5);
  EXPECT_EQ(output.settings.SimpleTextFormat.substr(0, 10), "####TEXT:[");
  EXPECT_EQ(output.settings.IcecastUsername, "source");
  EXPECT_EQ(output.settings.EncoderType, 0);
  output.settings.EncoderType = kShoutcast;
  output.settings.IcecastMount = "live";
  output.StoreOutputInformation(1, 4);
  output.GetOutputInformation(1, 4);
  EXPECT_EQ(output.GetInformationString(), "SHOUTcast (127.0.0.1:8000/live)");
}

}  // namespace
}  // namespace zeb
