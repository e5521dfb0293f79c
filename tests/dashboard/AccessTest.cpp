#include <gtest/gtest.h>

#include "dashboard/AccessRules.h"
#include "dashboard/Json.h"
#include "dashboard/LogonGate.h"
#include "dashboard/Router.h"
#include "dashboard/Sessions.h"
#include "platform/simulated/SimulatedSecrets.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

HttpRequest Request(WayIn way, const std::string& method, NamedTexts headers) {
  HttpRequest request;
  request.way = way;
  request.method = method;
  request.headers = std::move(headers);
  return request;
}

TEST(AccessRulesTest, WhoMayDoWhat) {
  const AccessRules rules;
  const struct {
    WayIn way;
    Need need;
    int without, with;  // a session
  } table[] = {
      {WayIn::kLocal, Need::kNothing, 0, 0},   {WayIn::kLocal, Need::kRead, 0, 0},
      {WayIn::kLocal, Need::kAct, 0, 0},       {WayIn::kLoopback, Need::kNothing, 0, 0},
      {WayIn::kLoopback, Need::kRead, 0, 0},   {WayIn::kLoopback, Need::kAct, 401, 0},
      {WayIn::kNetwork, Need::kNothing, 0, 0}, {WayIn::kNetwork, Need::kRead, 401, 0},
      {WayIn::kNetwork, Need::kAct, 401, 0},
  };
  for (const auto& row : table) {
    const std::string method = row.need == Need::kRead ? "GET" : "POST";
    const HttpRequest request = Request(row.way, method, {{"host", "127.0.0.1:6980"}});
    EXPECT_EQ(rules.Check(request, row.need, false).status, row.without)
        << static_cast<int>(row.way) << ' ' << static_cast<int>(row.need);
    EXPECT_EQ(rules.Check(request, row.need, true).status, row.with)
        << static_cast<int>(row.way) << ' ' << static_cast<int>(row.need);
  }
}

TEST(AccessRulesTest, HostsOnLoopback) {
  const AccessRules rules(" radio.example.org, Studio ");
  const struct {
    const char* host;
    bool ours;
  } table[] = {
      {"127.0.0.1:6980", true},
      {"127.0.0.1", true},
      {"[::1]:6980", true},
      {"[::1]", true},
      {"192.0.2.7:1", true},
      {"localhost:6980", true},
      {"LOCALHOST", true},
      {"localhost.", true},
      {"radio.example.org", true},
      {"Radio.Example.org:443", true},
      {"studio:6980", true},
      {"evil.example", false},
      {"127.0.0.1.evil.example", false},
      {"localhost.evil.example", false},
      {"", false},
      {"[::1].evil.example", false},
      {"[evil]", false},
      {"1.2.3", false},
      {"xradio.example.org", false},
      {"[", false},
      {"127.0.0.1@evil.example", false},
  };
  for (const auto& row : table) {
    const auto verdict =
        rules.Check(Request(WayIn::kLoopback, "GET", {{"host", row.host}}), Need::kRead, true);
    EXPECT_EQ(verdict.status, row.ours ? 0 : 403) << row.host;
  }
  EXPECT_TRUE(
      rules.Check(Request(WayIn::kNetwork, "GET", {{"host", "pc7.lan"}}), Need::kRead, true).Allowed());
}

TEST(AccessRulesTest, PagesOfElsewhereMayNotPost) {
  const AccessRules rules("radio.example.org");
  const struct {
    NamedTexts headers;
    bool ours;
  } table[] = {
      {{}, true},
      {{{"origin", "http://127.0.0.1:6980"}}, true},
      {{{"origin", "https://127.0.0.1:6980"}}, true},
      {{{"origin", "https://radio.example.org"}}, true},
      {{{"origin", "http://127.0.0.1:6981"}}, false},
      {{{"origin", "http://evil.example"}}, false},
      {{{"origin", "https://radio.example.org.evil.example"}}, false},
      {{{"origin", "null"}}, false},
      {{{"origin", ""}}, false},
      {{{"origin", "file://127.0.0.1:6980"}}, false},
      {{{"sec-fetch-site", "same-origin"}}, true},
      {{{"sec-fetch-site", "none"}}, true},
      {{{"sec-fetch-site", "cross-site"}}, false},
      {{{"sec-fetch-site", "same-site"}, {"origin", "http://127.0.0.1:6980"}}, false},
  };
  for (const auto& row : table) {
    NamedTexts headers = row.headers;
    headers.emplace_back("host", "127.0.0.1:6980");
    const std::string what = row.headers.empty() ? "none" : row.headers[0].second;
    for (const Need need : {Need::kNothing, Need::kAct})
      EXPECT_EQ(rules.Check(Request(WayIn::kLoopback, "POST", headers), need, true).Allowed(), row.ours)
          << what;
    EXPECT_EQ(rules.Check(Request(WayIn::kNetwork, "DELETE", headers), Need::kAct, true).Allowed(), row.ours);
    EXPECT_TRUE(rules.Check(Request(WayIn::kLoopback, "GET", headers), Need::kRead, true).Allowed()) << what;
    EXPECT_TRUE(rules.Check(Request(WayIn::kLocal, "POST", headers), Need::kAct, false).Allowed()) << what;
  }
}

TEST(SessionsTest, EndByThemselves) {
  SimulatedSecrets secrets;
  Sessions sessions(secrets);
  const std::string token = sessions.Begin(0s);
  EXPECT_TRUE(sessions.Use(token, 12h - 1ns));
  EXPECT_FALSE(sessions.Use(token + "x", 12h));
  EXPECT_FALSE(sessions.Use("", 12h));
  EXPECT_TRUE(sessions.Lasts(token, 24h - 2ns));
  EXPECT_FALSE(sessions.Use(token, 24h - 1ns)) << "12 h after the last use";
  const std::string used = sessions.Begin(0s);
  for (Duration now = 0s; now < 168h; now += 6h) EXPECT_TRUE(sessions.Use(used, now));
  EXPECT_FALSE(sessions.Use(used, 168h)) << "7 days after its beginning";
}

TEST(SessionsTest, AreBounded) {
  SimulatedSecrets secrets;
  Sessions sessions(secrets);
  std::vector<std::string> tokens;
  for (std::size_t i = 0; i < Sessions::kMost; ++i) tokens.push_back(sessions.Begin(i * 1s));
  EXPECT_TRUE(sessions.Use(tokens[0], 1h));
  sessions.Begin(1h);
  EXPECT_EQ(sessions.Count(), Sessions::kMost);
  EXPECT_TRUE(sessions.Use(tokens[0], 1h));
  EXPECT_FALSE(sessions.Use(tokens[1], 1h)) << "used longest ago";
  sessions.End(tokens[2]);
  EXPECT_FALSE(sessions.Use(tokens[2], 1h));
}

TEST(LogonGateTest, EachWrongPasswordMakesTheNextTryWaitLonger) {
  LogonGate gate;
  MonotonicTime now = 0s;
  for (const Duration wait : {1s, 2s, 4s, 8s, 16s, 32s, 60s, 60s}) {
    ASSERT_EQ(gate.Begin("192.0.2.7", now), 0s);
    EXPECT_GT(gate.Begin("192.0.2.7", now), 0s) << "not side by side";
    gate.Ended("192.0.2.7", LogonGate::How::kWrong, now);
    EXPECT_EQ(gate.Begin("192.0.2.7", now), wait);
    EXPECT_EQ(gate.Begin("192.0.2.7", now + wait - 1ns), 1ns);
    EXPECT_EQ(gate.Begin("192.0.2.8", now), 0s) << "others do not wait";
    gate.Ended("192.0.2.8", LogonGate::How::kNotTried, now);
    now += wait;
  }
  ASSERT_EQ(gate.Begin("192.0.2.7", now), 0s);
  gate.Ended("192.0.2.7", LogonGate::How::kRight, now);
  EXPECT_EQ(gate.Count(), 0u);
}

TEST(LogonGateTest, AnIpv6NetworkIsOneAddressAndMemoryIsBounded) {
  LogonGate gate;
  ASSERT_EQ(gate.Begin("2001:db8::1", 0s), 0s);
  gate.Ended("2001:db8::1", LogonGate::How::kWrong, 0s);
  EXPECT_GT(gate.Begin("2001:db8::2", 0s), 0s);
  EXPECT_EQ(gate.Begin("2001:db8:0:1::2", 0s), 0s);
  for (int i = 0; i < 70'000; ++i) {
    const std::string peer = "10.0." + std::to_string(i / 256 % 256) + "." + std::to_string(i % 256);
    if (gate.Begin(peer, 1s) == 0s) gate.Ended(peer, LogonGate::How::kWrong, 1s);
  }
  EXPECT_EQ(gate.Count(), LogonGate::kMost);
  ASSERT_EQ(gate.Begin("192.0.2.1", 20min), 0s);
  EXPECT_LE(gate.Count(), 2u) << "forgotten after 15 minutes, but for the try that has not ended";
}

struct RouterTest : testing::Test {
  Router router;
  void SetUp() override {
    const auto nothing = [](const HttpRequest&) { return HttpAnswer(); };
    router.Add("GET", "/", Need::kNothing, nothing);
    router.Add("GET", "/s/{n}", Need::kRead, nothing);
    router.Add("POST", "/s/{n}", Need::kAct, nothing);
    router.AddTask("GET", "/s/all", Need::kNothing, nothing);
    router.Add("POST", "/s/{n}/items/{slot}", Need::kAct, nothing);
  }
  Router::Found Find(const std::string& method, std::vector<std::string> path) {
    request = {};
    request.method = method;
    request.path = std::move(path);
    return router.Find(request);
  }
  HttpRequest request;
};

TEST_F(RouterTest, PathsFindTheirHandlers) {
  ASSERT_NE(Find("POST", {"s", "12", "items", "current"}).route, nullptr);
  EXPECT_EQ(request.Argument("n"), "12");
  EXPECT_EQ(request.Argument("slot"), "current");
  EXPECT_TRUE(Find("GET", {"s", "all"}).route->inTask) << "the one written out goes first";
  EXPECT_EQ(Find("HEAD", {"s", "3"}).route->need, Need::kRead);
  EXPECT_NE(Find("GET", {""}).route, nullptr);
  for (const auto& path : std::vector<std::vector<std::string>>{
           {"s"}, {"s", ""}, {"s", "1", ""}, {"S", "1"}, {"", "s", "1"}, {"s", "1", "items"}, {}})
    EXPECT_EQ(Find("GET", path).route, nullptr);
  EXPECT_EQ(Find("GET", {"x"}).allow, "");
  EXPECT_EQ(Find("DELETE", {"s", "1"}).allow, "GET, HEAD, POST");
  EXPECT_EQ(Find("PUT", {"s", "1", "items", "x"}).allow, "POST");
}

TEST(JsonTest, BombsAndNonsenseAreFailures) {
  EXPECT_TRUE(ReadJsonObject(""));
  EXPECT_TRUE(ReadJsonObject("{\"a\":" + std::string(15, '[') + std::string(15, ']') + "}"));
  for (const std::string& text :
       {"{\"a\":" + std::string(16, '[') + std::string(16, ']') + "}", std::string(60'000, '['),
        std::string(60'000, '{'), std::string("[]"), std::string("{"), std::string("{} {}"),
        std::string("{\"a\":\"\xC3\x28\"}"), std::string("nul"), std::string("{\"a\":1e999999}x")}) {
    const auto read = ReadJsonObject(text);
    EXPECT_FALSE(read) << text.substr(0, 30);
    EXPECT_EQ(read.Reason().find('\n'), std::string::npos);
  }
  const auto object = ReadJsonObject("{\"a\":\"x\\u00e9\",\"b\":1,\"c\":null}");
  ASSERT_TRUE(object);
  EXPECT_EQ(JsonText(object.Value(), "a").Value(), "xé");
  EXPECT_EQ(JsonText(object.Value(), "c").Value(), "");
  EXPECT_EQ(JsonText(object.Value(), "missing").Value(), "");
  EXPECT_EQ(JsonText(object.Value(), "b").Reason(), "\"b\" must be a text");
}

}  // namespace
}  // namespace zeb
