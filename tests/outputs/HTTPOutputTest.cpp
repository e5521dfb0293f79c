#include "core/ServiceEvents.h"
#include "core/UpdateRecord.h"
#include "outputs/http/CBase64.h"
#include "outputs/http/clsZEBHTTPOutput.h"
#include "tests/outputs/NetworkFixture.h"

namespace zeb {
namespace {

using Behaviour = SimulatedNetwork::HostBehaviour;

class HTTPOutputTest : public NetworkOutputTest {
 protected:
  HTTPOutputTest() {
    output.settings.SimpleTextFormat = "?t=<ZEB_NOW_ITEMNAME>&a=<ZEB_NOW_ARTISTS>";
    output.settings.URL = "/now";
    output.StartOutput(t.network.MakeClient());
  }
  double Update() { return NetworkOutputTest::Update(output); }

  clsZEBHTTPOutput output{t.environment};
};

TEST_F(HTTPOutputTest, SendsTheGoldenRequests) {
  ScriptedServer usual(t, 80), other(t, 8080);
  Update();
  ASSERT_EQ(usual.requests.size(), 1u);
  EXPECT_EQ(usual.requests[0], GoldenRequest("http-get.request"));
  EXPECT_EQ(output.LastReply(), "HTTP/1.1 200 OK");
  EXPECT_EQ(output.GetInformationString(), "(127.0.0.1:80)");

  output.settings.RequestType = kPostRequest;
  output.settings.SimpleTextFormat = "title=<ZEB_NOW_ITEMNAME>\r\nstation=Müller";
  output.settings.ServerName = "::1";
  output.settings.ServerPort = 8080;
  output.settings.HTTPAuthenticate = true;
  output.settings.HTTPUsername = "radio";
  output.settings.HTTPPassword = "geheim:ß";
  Update();
  ASSERT_EQ(other.requests.size(), 1u);
  EXPECT_EQ(other.requests[0], GoldenRequest("http-post.request"));
  EXPECT_TRUE(t.person.shown.empty());
}

TEST_F(HTTPOutputTest, LineEndsStayInsideTheRequestLine) {
  ScriptedServer server(t, 80);
  output.settings.SimpleTextFormat = "?a\r\nb=<ZEB_NOW_ITEMNAME>";
  output.settings.URL = "/x\r\nEvil: 1";
  Play("One\r\nTwo", "");
  Update();
  EXPECT_EQ(server.requests[0].substr(0, server.requests[0].find('\r')),
            "GET /xEvil: 1?a%0D%0Ab=One%0D%0ATwo HTTP/1.1");
}

TEST_F(HTTPOutputTest, ValuesAreEncodedInTheCharacterSet) {
  ScriptedServer server(t, 80);
  output.settings.characterSet = CharacterSet::kWindows1252;
  Update();
  EXPECT_NE(server.requests[0].find("t=Song+%26+Dance&a=Zo%EB HTTP"), std::string::npos)
      << server.requests[0];
}

TEST_F(HTTPOutputTest, SeveralRequestsAreHalfASecondApart) {
  ScriptedServer server(t, 80);
  output.settings.SimpleTextFormat = "####?1####?2####";
  EXPECT_DOUBLE_EQ(Update(), 4.0);
  ASSERT_EQ(server.requests.size(), 3u);  // the empty one behind the last separator counts
  EXPECT_EQ(server.requests[0].substr(0, 11), "GET /now?1 ");
  EXPECT_EQ(server.requests[1].substr(0, 11), "GET /now?2 ");
  EXPECT_EQ(server.requests[2].substr(0, 14), "GET /now HTTP/");
  EXPECT_EQ(server.connectedAt, (std::vector<double>{0.0, 1.5, 3.0}));
  EXPECT_EQ(server.closedAt, (std::vector<double>{1.0, 2.5, 4.0}));
}

TEST_F(HTTPOutputTest, AServerThatDoesNotConnectShowsConnectingAndIsTriedAgain) {
  ScriptedServer server(t, 80);
  struct Case {
    Behaviour behaviour;
    double seconds;
    const char* problem;
  };
  for (const Case& c : {Case{Behaviour::kHangs, 10.0, "127.0.0.1:80 does not answer"},
                        {Behaviour::kNeverFound, 10.0, "the look-up of '127.0.0.1' is not answered"},
                        {Behaviour::kRefuses, 0.0, "refused"},
                        {Behaviour::kUnknownName, 0.0, "cannot find"}}) {
    t.network.SetHost("127.0.0.1", c.behaviour);
    EXPECT_DOUBLE_EQ(Update(), c.seconds);
    EXPECT_EQ(StatusText(output), "Connecting");
    EXPECT_NE(output.ProblemText().find(c.problem), std::string::npos) << output.ProblemText();
    EXPECT_TRUE(server.requests.empty());
    EXPECT_FALSE(sent);
    EXPECT_TRUE(output.MayPass());
  }
  // A status that nobody has cleared keeps a request from being sent.
  t.network.SetHost("127.0.0.1", Behaviour::kNormal);
  EXPECT_TRUE(t.loop.RunTask([&] { output.UpdateOutput(service.TakeSnapshot()); }));
  EXPECT_TRUE(server.requests.empty());
  Update();
  EXPECT_EQ(server.requests.size(), 1u);
  EXPECT_EQ(StatusText(output), "OK");
  EXPECT_EQ(output.ProblemText(), "");
}

TEST_F(HTTPOutputTest, OneRequestThatFailsDoesNotStopTheNext) {
  ScriptedServer server(t, 80);
  server.answer = "HTTP/1.1 404 Not Found\r\n\r\n";
  output.settings.SimpleTextFormat = "####?1####?2";
  t.network.SetHost("127.0.0.1", Behaviour::kHangs);
  const Timer back =
      t.loop.After(std::chrono::seconds(5), [&] { t.network.SetHost("127.0.0.1", Behaviour::kNormal); });
  EXPECT_DOUBLE_EQ(Update(), 11.5);
  ASSERT_EQ(server.requests.size(), 1u);
  EXPECT_EQ(server.connectedAt[0], 10.5);
}

TEST_F(HTTPOutputTest, APreviousConnectionThatDoesNotCloseIsAnError) {
  ScriptedServer server(t, 80);
  t.network.StopReading(true);
  EXPECT_DOUBLE_EQ(Update(), 11.0);
  EXPECT_DOUBLE_EQ(Update(), 10.0);
  EXPECT_EQ(output.Status(), kStatusError);
  EXPECT_NE(output.ProblemText().find("does not close"), std::string::npos);
}

TEST_F(HTTPOutputTest, WithoutASocketItIsAnError) {
  output.StopOutput();
  EXPECT_EQ(StatusText(output), "Off");
  output.StartOutput(nullptr);
  EXPECT_DOUBLE_EQ(Update(), 0.0);
  EXPECT_EQ(output.Status(), kStatusError);
}

TEST_F(HTTPOutputTest, AnswersAreReadWithinBoundsAndTold) {
  ScriptedServer server(t, 80);
  struct Case {
    const char* answer;
    bool closeAtOnce, closeAfter, endless;
    const char* problem;
    bool mayPass;
  };
  const std::string host = "127.0.0.1:80 ";
  for (const Case& c :
       {Case{"HTTP/1.1 204 No Content\r\n\r\n", false, true, false, "", false},
        {"HTTP/1.1 302 Found\r\n\r\n", false, true, false, "", false},
        {"HTTP/1.1 404 Not Found\r\n\r\n", false, true, false, "answered 'HTTP/1.1 404 Not Found'", false},
        {"HTTP/1.1 401 Who\r\n\r\n", false, true, false, "answered 'HTTP/1.1 401 Who'", false},
        {"HTTP/1.1 408 Slow\r\n\r\n", false, true, false, "answered 'HTTP/1.1 408 Slow'", true},
        {"HTTP/1.1 429 Often\r\n\r\n", false, true, false, "answered 'HTTP/1.1 429 Often'", true},
        {"HTTP/1.1 500 Oh\r\n\r\n", false, true, false, "answered 'HTTP/1.1 500 Oh'", true},
        {"HTTP/1.0 503 Later\r\n\r\n", false, false, true, "answered 'HTTP/1.0 503 Later'", true},
        {"220 ready\r\n", false, false, false, "does not speak HTTP: it answered '220 ready'", false},
        {"", false, true, false, "closed the connection without an answer", true},
        {"", true, false, false, "closed the connection without an answer", true},
        {"", false, false, false, "", false}}) {
    server.answer = c.answer;
    server.closeAtOnce = c.closeAtOnce;
    server.closeAfterRequest = c.closeAfter;
    server.endless = c.endless;
    EXPECT_DOUBLE_EQ(Update(), 1.0) << c.answer;
    const bool taken = std::string(c.problem).empty();
    EXPECT_EQ(output.ProblemText(), taken ? "" : host + c.problem);
    EXPECT_EQ(sent, taken) << c.answer;
    EXPECT_EQ(output.MayPass(), c.mayPass) << c.answer;
    EXPECT_EQ(StatusText(output), "OK");
  }
}

// What was taken is not sent twice, nor what is refused for good; with the next text everything is.
TEST_F(HTTPOutputTest, ARepetitionSendsWhatFailedAndMayPass) {
  ScriptedServer server(t, 80);
  std::string third = "HTTP/1.1 503 Later\r\n\r\n";
  server.answerTo = [&](const std::string& request) -> std::string {
    if (request.find("?1 ") != std::string::npos) return "HTTP/1.1 200 OK\r\n\r\n";
    if (request.find("?2 ") != std::string::npos) return "HTTP/1.1 404 No\r\n\r\n";
    return third;
  };
  output.settings.SimpleTextFormat = "####?1####?2####?3";
  const SnapshotPtr snapshot = service.TakeSnapshot();
  EXPECT_DOUBLE_EQ(NetworkOutputTest::Update(output, snapshot), 4.0);
  EXPECT_EQ(server.requests.size(), 3u);
  EXPECT_TRUE(output.MayPass());
  EXPECT_EQ(output.LastTally().published, 1);
  EXPECT_EQ(output.LastTally().failed, 2);
  third = "HTTP/1.1 200 OK\r\n\r\n";
  EXPECT_DOUBLE_EQ(NetworkOutputTest::Update(output, snapshot), 1.0);
  ASSERT_EQ(server.requests.size(), 4u);
  EXPECT_NE(server.requests[3].find("?3 "), std::string::npos);
  EXPECT_FALSE(output.MayPass());
  EXPECT_EQ(output.ProblemText(), "127.0.0.1:80 answered 'HTTP/1.1 404 No'");
  EXPECT_DOUBLE_EQ(NetworkOutputTest::Update(output, snapshot), 4.0);  // nothing is due: a periodic update
  EXPECT_DOUBLE_EQ(Update(), 4.0);
  EXPECT_EQ(server.requests.size(), 10u);
}

TEST_F(HTTPOutputTest, BlankCredentialsAreWarnedOfOnceAndTheRequestIsSent) {
  ScriptedServer server(t, 80);
  output.settings.HTTPAuthenticate = true;
  output.settings.HTTPUsername = " ";
  Update();
  Update();
  output.settings.HTTPUsername = "radio";
  Update();
  EXPECT_EQ(t.person.shown, (std::vector<std::string>{"The username for HTTP Authentication is blank",
                                                      "The password for HTTP Authentication is blank"}));
  ASSERT_EQ(server.requests.size(), 3u);
  for (const std::string& request : server.requests)
    EXPECT_EQ(request.find("Authorization"), std::string::npos);
}

TEST_F(HTTPOutputTest, StoppingWhileItWaitsLeavesItOff) {
  ScriptedServer server(t, 80);
  output.settings.SimpleTextFormat = "####?1####?2";
  const Timer stop = t.loop.After(std::chrono::milliseconds(700), [&] { output.StopOutput(); });
  EXPECT_DOUBLE_EQ(Update(), 0.7);
  EXPECT_EQ(server.requests.size(), 1u);
  EXPECT_EQ(StatusText(output), "Off");
  EXPECT_FALSE(sent);
  t.network.SetHost("127.0.0.1", Behaviour::kHangs);
  output.StartOutput(t.network.MakeClient());
  const Timer again = t.loop.After(std::chrono::seconds(3), [&] { output.StopOutput(); });
  EXPECT_DOUBLE_EQ(Update(), 3.0);
  EXPECT_EQ(StatusText(output), "Off");
  EXPECT_EQ(output.ProblemText(), "");
}

TEST_F(HTTPOutputTest, WithoutSettingsItHasItsDefaults) {
  output.GetOutputInformation(3, 9);
  EXPECT_EQ(output.settings.ServerPort, 80);
  EXPECT_FALSE(output.settings.UseTLS);
  output.settings.UseTLS = true;
  EXPECT_EQ(output.GetInformationString(), "(127.0.0.1:443)");
  output.settings.ServerPort = 8443;
  EXPECT_EQ(output.GetInformationString(), "(127.0.0.1:8443)");
}

TEST(CBase64Test, EncodesAndDecodes) {
  for (const auto& [plain, coded] : std::vector<std::pair<std::string, std::string>>{
           {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"\xff\xfe\xfd\xfc", "//79/A=="}}) {
    EXPECT_EQ(CBase64::EncodeString(plain), coded);
    EXPECT_EQ(CBase64::DecodeToString(coded), plain);
    EXPECT_EQ(CBase64::EncodeByteArray(CBase64::DecodeToByteArray(coded)), coded);
  }
  EXPECT_EQ(CBase64::DecodeToString("Zm\r\n9v\r\n"), "foo");
}

// Half of the stations have a server that hangs; the other half must not notice.
TEST(HTTPIndependenceTest, HangingServersDelayNoOtherService) {
  struct Watcher : ServiceEvents {
    explicit Watcher(EventLoop& given) : loop(given) {}
    void UpdateThrough(const UpdateRecord&) override { through = loop.Monotonic(); }
    EventLoop& loop;
    MonotonicTime through{};
  };
  TestEnvironment t;
  ScriptedServer server(t, 80);
  t.network.SetHost("dead", Behaviour::kHangs);
  std::vector<std::unique_ptr<Watcher>> watchers;
  std::vector<std::unique_ptr<clsZEBService>> services;
  const MonotonicTime begin = t.loop.Monotonic();
  for (std::size_t i = 0; i < 200; ++i) {
    auto output = std::make_shared<clsZEBHTTPOutput>(t.environment);
    output->settings.ServerName = i % 2 == 0 ? "dead" : "alive";
    output->StartOutput(t.network.MakeClient());
    watchers.push_back(std::make_unique<Watcher>(t.loop));
    services.push_back(std::make_unique<clsZEBService>(t.environment, nullptr, *watchers.back()));
    services[i]->AddOutput(OutputType::kHTTP, output);
    t.loop.Start("update", [&services, i] { services[i]->UpdateOutputs(true); });
  }
  t.loop.RunFor(std::chrono::milliseconds(11'500));  // before the dead ones are tried again
  for (std::size_t i = 0; i < services.size(); ++i)
    EXPECT_EQ(watchers[i]->through - begin, std::chrono::seconds(i % 2 == 0 ? 10 : 1)) << i;
  EXPECT_EQ(server.requests.size(), 100u);
}

}  // namespace
}  // namespace zeb
