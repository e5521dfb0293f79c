#include <gtest/gtest.h>

#include <boost/json.hpp>

#include "app/ControlRoom.h"
#include "core/SettingsPaths.h"
#include "outputs/OutputTable.h"
#include "platform/simulated/SimulatedSecrets.h"
#include "tests/dashboard/HttpClient.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
namespace json = boost::json;

// Two stations with one file output each, and everything from the socket to the file.
struct ControlRoomTest : testing::Test {
  TestEnvironment ports;
  JournalTail journal{ports.person, ports.loop};
  Environment environment{ports.loop, ports.hive,  ports.files,          ports.network,
                          journal,    ports.carts, kSimulatedDataFolder, ports.environment.settingsRoot};
  frmMain main{environment, MakeOutputFactory(environment), {}};
  std::shared_ptr<SimulatedSecrets> secrets = std::make_shared<SimulatedSecrets>();
  std::unique_ptr<ControlRoom> room;

  ControlRoomTest() {
    const std::string root = environment.settingsRoot;
    ports.hive.WriteNumber(root, "NumberServices", 2);
    for (const std::string n : {"1", "2"}) {
      const std::string service = root + "\\Service" + n;
      ports.hive.WriteText(service, "ServiceName", "Station " + n);
      ports.hive.WriteNumber(service, "InstantUpdate", 1);
      ports.hive.WriteNumber(service, "TolvanTCPControlPort", std::stoi(n));
      ports.hive.WriteText(service + "\\File", "NumberOutputs", "1");
      ports.hive.WriteText(service + "\\File", "Output1.NumberFiles", "1");
      ports.hive.WriteText(service + "\\File", "Output1.SourceFileName1", "/data/template");
      ports.hive.WriteText(service + "\\File", "Output1.DestinationFileName1", "/data/page" + n);
    }
    ports.files.Put("/data/template", "<ZEB_NOW_ITEMNAME> by <ZEB_NOW_ARTISTS>");
  }
  ~ControlRoomTest() override { room.reset(); }

  void Open() {
    EXPECT_TRUE(main.Load());
    room = std::make_unique<ControlRoom>(
        environment, ports.network, secrets, main, journal,
        []() -> Result<std::unique_ptr<HistoryReader>> { return Failure{"there is no history yet"}; },
        [](WallTime) { return 0s; });
    room->Open();
    ports.loop.RunFor(3s);
  }
  HttpClient Connect() {
    HttpClient client{ports.network, 6980};
    ports.loop.RunPosted();
    return client;
  }
  ReadAnswer Ask(const std::string& request) {
    HttpClient client = Connect();
    client.Send(request);
    ports.loop.RunFor(100ms);
    const auto answers = client.Answers();
    return answers.empty() ? ReadAnswer{} : answers.back();
  }
  // By the local socket.
  ReadAnswer AskLocally(const std::string& method, const std::string& target, const std::string& body = "") {
    LocalLink link = ports.network.ConnectLocal("/data/zeb.socket");
    if (!link.connection) return {};
    std::string received;
    link.connection->onData = [&](std::string_view bytes) { received += bytes; };
    link.connection->Send(WriteHttpRequest(method, target, body));
    ports.loop.RunFor(100ms);
    HttpAnswerReader reader;
    if (!reader.Take(received) || !reader.Done()) return {};
    return {reader.Status(), reader.TakeBody(), "", ""};
  }
  std::string Page(int number) {
    ports.loop.RunFor(2s);
    return ports.files.Contents("/data/page" + std::to_string(number));
  }
  std::string StoredName(int number) {
    return ports.hive.ReadText(environment.ServiceKey(number), "ServiceName", "(none)");
  }
};

TEST_F(ControlRoomTest, AnItemThatIsSetGoesToTheFileAndIntoThePicture) {
  Open();
  EXPECT_EQ(AskLocally("POST", "/api/v1/services/2/items/current",
                       R"({"title":"Paper \"Moons\" = x","artist":"Ada Quill","type":"song","cart":7})")
                .status,
            204);
  EXPECT_EQ(Page(2), "Paper \"Moons\" = x by Ada Quill");
  EXPECT_EQ(Page(1), "");
  const ReadAnswer answer = Ask(Get("/api/v1/services/2"));
  ASSERT_EQ(answer.status, 200);
  const json::object station = json::parse(answer.body).as_object();
  EXPECT_EQ(station.at("name").as_string(), "Station 2");
  EXPECT_EQ(station.at("current").at("title").as_string(), "Paper \"Moons\" = x");
  EXPECT_EQ(station.at("current").at("cart").as_int64(), 7);
  const json::value& output = station.at("outputs").at(0);
  EXPECT_EQ(output.at("name").as_string(), "File1");
  EXPECT_EQ(output.at("severity").as_string(), "ok");
  EXPECT_FALSE(output.at("stale").as_bool());
}

TEST_F(ControlRoomTest, PresenterShowAndPromotionGoTheSameWay) {
  ports.files.Put("/data/template",
                  "<ZEB_NOW_ITEMNAME>/<ZEB_SPECIAL_PRESENTERFULLNAME>/<ZEB_SPECIAL_SHOWTITLE>");
  Open();
  const std::string base = "/api/v1/services/1/";
  EXPECT_EQ(AskLocally("POST", base + "presenter", R"({"reference":"p1","name":"Ada"})").status, 204);
  EXPECT_EQ(AskLocally("POST", base + "show", R"({"reference":3,"title":"Late"})").status, 204);
  EXPECT_EQ(AskLocally("POST", base + "items/next", R"({"title":"Two"})").status, 204);
  EXPECT_EQ(AskLocally("POST", base + "promote", R"({"from":"next"})").status, 204);
  EXPECT_EQ(Page(1), "Two/Ada/Late");
}

TEST_F(ControlRoomTest, WhatIsWrongIsToldAndChangesNothing) {
  Open();
  const struct {
    const char *method, *target, *body;
    int status;
    const char* reason;
  } table[] = {
      {"POST", "/api/v1/services/1/items/current", R"({"titel":"x"})", 400, "titel"},
      {"POST", "/api/v1/services/1/items/current", R"({"title":7.5})", 400, "title"},
      {"POST", "/api/v1/services/1/items/current", R"({"cart":"-3"})", 400, "cart"},
      {"POST", "/api/v1/services/1/items/current", R"({"type":"jingle"})", 400, "type"},
      {"POST", "/api/v1/services/1/items/current", R"(["title"])", 400, "object"},
      {"POST", "/api/v1/services/1/items/current", "{", 400, "JSON"},
      {"POST", "/api/v1/services/1/items/last", "{}", 404, ""},
      {"POST", "/api/v1/services/1/promote", "{}", 400, "from"},
      {"POST", "/api/v1/services/1/presenter", R"({"name":"Ada"})", 400, "reference"},
      {"POST", "/api/v1/services/3/update", "", 404, "service"},
      {"POST", "/api/v1/services/0/update", "", 404, "service"},
      {"POST", "/api/v1/services/1x/update", "", 404, "service"},
      {"GET", "/api/v1/services/99999999999999", "", 404, "service"},
      {"GET", "/api/v1/services?from=0", "", 400, "from"},
      {"GET", "/api/v1/services/1/items/current", "", 405, ""},
      {"POST", "/api/v1/services/1/preview", R"({"escape":"perl"})", 400, "escape"},
      {"GET", "/page/nothing.js", "", 404, ""},
      {"GET", "/page/..%2fpage%2fmain.js", "", 404, ""},
  };
  for (const auto& row : table) {
    const ReadAnswer answer = AskLocally(row.method, row.target, row.body);
    EXPECT_EQ(answer.status, row.status) << row.target << ' ' << row.body;
    EXPECT_NE(answer.body.find(row.reason), std::string::npos) << answer.body;
  }
  EXPECT_EQ(Page(1), "");
}

TEST_F(ControlRoomTest, ListsComeInParts) {
  Open();
  const auto numbers = [&](const std::string& query) {
    const json::value list = json::parse(Ask(Get("/api/v1/services" + query)).body);
    std::string found;
    for (const json::value& one : list.at("services").as_array())
      found += std::to_string(one.at("number").as_int64());
    return found;
  };
  EXPECT_EQ(numbers(""), "12");
  EXPECT_EQ(numbers("?from=2"), "2");
  EXPECT_EQ(numbers("?from=1&count=1"), "1");
  EXPECT_EQ(numbers("?from=3"), "");
  EXPECT_EQ(numbers("?from=2147483647&count=2147483647"), "");
  EXPECT_NE(Ask(Get("/metrics")).body.find("service=\"Station 2\""), std::string::npos);
}

TEST_F(ControlRoomTest, TemplatesAreTriedAgainstThePresentItems) {
  Open();
  AskLocally("POST", "/api/v1/services/1/items/current", R"({"title":"Tom & Ada"})");
  const auto preview = [&](const std::string& body) {
    return json::parse(Ask(Post("/api/v1/services/1/preview", body)).body);
  };
  EXPECT_EQ(preview(R"({"template":"<ZEB_NOW_ITEMNAME>!"})").at("text").as_string(), "Tom & Ada!");
  EXPECT_EQ(preview(R"({"template":"<ZEB_NOW_ITEMNAME>","escape":"html"})").at("text").as_string(),
            "Tom &amp; Ada");
  EXPECT_EQ(preview(R"({"template":"<ZEB_SIMPLETEXT>","simpleText":"s"})").at("text").as_string(), "s");
  const json::value long_ = preview(json::serialize(
      json::object{{"template", std::string(60'000, 'x') + "<ZEB_SIMPLETEXT>"}, {"simpleText", ""}}));
  EXPECT_FALSE(long_.at("cut").as_bool());
  EXPECT_EQ(Page(1), "Tom & Ada by ") << "a preview publishes nothing";
}

TEST_F(ControlRoomTest, CartsAreFoundByNumberAndByWords) {
  ports.carts.carts[12] = {{"Paper Moons", "Ada Quill", ""}, ""};
  ports.carts.carts[120] = {{"Élan", "Quill & Co", ""}, ""};
  ports.carts.carts[3] = {{"Other", "Nobody", ""}, ""};
  Open();
  const auto found = [&](const std::string& query) {
    std::string carts;
    const json::value answer = json::parse(Ask(Get("/api/v1/services/1/carts?q=" + query)).body);
    for (const json::value& one : answer.at("carts").as_array())
      carts += std::to_string(one.at("cart").as_int64()) + " ";
    return carts;
  };
  EXPECT_EQ(found("12"), "12 120 ");
  EXPECT_EQ(found("QUILL"), "12 120 ");
  EXPECT_EQ(found("quill+%C3%A9LAN"), "120 ");
  EXPECT_EQ(found("nothing"), "");
  EXPECT_EQ(found(""), "3 12 120 ");
}

TEST_F(ControlRoomTest, ThePictureOnAirIsShownByTheRulesOfWhatMayBePublished) {
  const std::string png = "\x89PNG\r\n\x1A\nand so on";
  ports.files.Put("/data/pictures/a.png", png);
  ports.files.Put("/data/pictures/large.png", png + std::string(PictureRoute::kMostPictureBytes, 'x'));
  ports.files.Put("/data/settings.db", "passwords");
  ports.files.Put("/srv/text.png", "no picture");
  Open();
  const auto status = [&](const std::string& picture) {
    main.Window(1)->SetZEBInformation("SET_CURRENT_ITEM IType=7 ITitle=\"" + picture + "\" PicFName=\"" +
                                      picture + "\"");
    return Ask(Get("/api/v1/services/1/picture")).status;
  };
  EXPECT_EQ(Ask(Get("/api/v1/services/1/picture")).status, 404);
  EXPECT_EQ(status("pictures/a.png"), 200);
  EXPECT_EQ(Ask(Get("/api/v1/services/1/picture")).body, png);
  for (const char* refused : {"settings.db", "../data/settings.db", "/srv/text.png", "pictures/large.png",
                              "pictures/missing.png", "/etc/shadow"})
    EXPECT_EQ(status(refused), 404) << refused;
  EXPECT_EQ(Ask(Get("/api/v1/services/3/picture")).status, 404);
}

TEST_F(ControlRoomTest, QuestionsToTheHistoryAreCheckedAndItsTroubleIsTold) {
  Open();
  EXPECT_EQ(Ask(Get("/api/v1/history?service=0")).status, 400);
  EXPECT_EQ(Ask(Get("/api/v1/history?last=5")).status, 400);
  EXPECT_EQ(Ask(Get("/api/v1/history?service=1&last=101")).status, 400);
  EXPECT_EQ(Ask(Get("/api/v1/history?what=1")).body,
            "{\"error\":\"the history has no 'what'; it takes service, output, from, to, songs, limit and "
            "last\"}\n");
  const ReadAnswer none = Ask(Get("/api/v1/history?service=1&last=5"));
  EXPECT_EQ(none.status, 503);
  EXPECT_EQ(none.body, "{\"error\":\"there is no history yet\"}\n");
}

TEST_F(ControlRoomTest, EventsTellWhatChanges) {
  Open();
  HttpClient reader = Connect();
  reader.Send(Get("/api/v1/events"));
  ports.loop.RunFor(10ms);
  EXPECT_NE(reader.received.find("event: services\n"), std::string::npos) << reader.received;
  EXPECT_NE(reader.received.find("\"name\":\"Station 2\""), std::string::npos);
  reader.received.clear();
  AskLocally("POST", "/api/v1/services/1/items/current", R"({"title":"New"})");
  EXPECT_NE(reader.received.find("event: service\n"), std::string::npos);
  EXPECT_NE(reader.received.find("\"title\":\"New\""), std::string::npos);
  EXPECT_EQ(reader.received.find("Station 2"), std::string::npos) << "only what changed";
  reader.received.clear();
  journal.Note("something \"happened\"");
  ports.loop.RunFor(1ms);
  EXPECT_NE(reader.received.find("event: note\n"), std::string::npos);
  EXPECT_NE(reader.received.find(R"("text":"something \"happened\""})"), std::string::npos);
  ports.loop.RunFor(5s);
  reader.received.clear();
  ports.loop.RunFor(20s);
  EXPECT_EQ(reader.received.find("event: service\n"), std::string::npos) << reader.received;
  EXPECT_NE(reader.received.find("event: alive\n"), std::string::npos);
}

TEST_F(ControlRoomTest, AReaderGetsAsManyStationsAsThereAre) {
  constexpr int kStations = 500;
  ports.hive.WriteNumber(environment.settingsRoot, "NumberServices", kStations);
  Open();
  HttpClient reader = Connect();
  reader.Send(Get("/api/v1/events"));
  ports.loop.RunFor(1s);
  std::size_t stations = 0;
  for (std::size_t at = 0; (at = reader.received.find("\"number\":", at)) != std::string::npos; ++at)
    ++stations;
  EXPECT_GE(stations, static_cast<std::size_t>(kStations));
  EXPECT_NE(reader.received.find("\"number\":500,"), std::string::npos);
  EXPECT_LT(reader.received.find("event: service\n"), reader.received.find("\"number\":500,"));
}

TEST_F(ControlRoomTest, AServiceThatGoesTakesItsItemsAlong) {
  Open();
  AskLocally("POST", "/api/v1/services/1/items/current", R"({"title":"Of one"})");
  AskLocally("POST", "/api/v1/services/2/items/current", R"({"title":"Of two"})");
  EXPECT_EQ(Page(2), "Of two by ");
  EXPECT_EQ(Ask("DELETE /api/v1/services/1 HTTP/1.1\r\nHost: localhost\r\n\r\n").status, 403)
      << "not by the network";
  HttpClient reader = Connect();
  reader.Send(Get("/api/v1/events"));
  ports.loop.RunFor(10ms);
  reader.received.clear();
  EXPECT_EQ(AskLocally("DELETE", "/api/v1/services/1").status, 204);
  EXPECT_EQ(StoredName(1), "Station 2");
  EXPECT_EQ(StoredName(2), "(none)");
  EXPECT_NE(reader.received.find("event: services\n"), std::string::npos);
  EXPECT_EQ(Page(2), "Of two by ");
  const json::value list = json::parse(AskLocally("GET", "/api/v1/services").body);
  ASSERT_EQ(list.at("services").as_array().size(), 1u);
  EXPECT_EQ(list.at("services").at(0).at("current").at("title").as_string(), "Of two");
}

// Another program has changed the store, and the publisher has not read it again yet.
TEST_F(ControlRoomTest, AServiceThatGoesTakesNothingFromWhatOthersHaveStored) {
  Open();
  const std::string second = environment.settingsRoot + "\\Service2";
  ports.hive.WriteText(second + "\\File", "NumberOutputs", "2");
  ports.hive.WriteText(second + "\\File", "Output2.NumberFiles", "1");
  ports.hive.WriteText(second + "\\File", "Output2.SourceFileName1", "/data/template");
  ports.hive.WriteText(second + "\\File", "Output2.DestinationFileName1", "/data/new");
  ASSERT_EQ(AskLocally("DELETE", "/api/v1/services/1").status, 204);
  const std::string first = environment.settingsRoot + "\\Service1";
  EXPECT_EQ(ports.hive.ReadText(first + "\\File", "Output2.DestinationFileName1", ""), "/data/new");
  EXPECT_EQ(main.Window(1)->service().OutputCount(static_cast<int>(OutputType::kFile)), 2);

  ports.hive.WriteNumber(environment.settingsRoot, "NumberServices", 2);
  ports.hive.WriteText(second, "ServiceName", "Just added");
  EXPECT_EQ(AskLocally("DELETE", "/api/v1/services/1").status, 409);
  EXPECT_EQ(main.NumberServices(), 2) << "read meanwhile";
  EXPECT_EQ(AskLocally("DELETE", "/api/v1/services/1").status, 204);
  EXPECT_EQ(StoredName(1), "Just added");
}

TEST_F(ControlRoomTest, AnOutputIsTestedWithoutPublishing) {
  Open();
  const std::string path = "/api/v1/services/1/outputs/";
  const ReadAnswer answer = AskLocally("POST", path + "File/1/test");
  ASSERT_EQ(answer.status, 200);
  EXPECT_EQ(json::parse(answer.body),
            json::parse(R"({"steps":[{"text":"template '/data/template'","ok":true},)"
                        R"({"text":"writing beside '/data/page1'","ok":true}]})"));
  EXPECT_EQ(Page(1), "");
  for (const char* wrong : {"File/2/test", "HTTP/1/test", "Fiel/1/test", "File/0/test", "File/x/test"})
    EXPECT_EQ(AskLocally("POST", path + wrong).status, 404) << wrong;
  EXPECT_EQ(AskLocally("POST", "/api/v1/services/3/outputs/File/1/test").status, 404);
}

TEST_F(ControlRoomTest, OneTestOfAnOutputAtATime) {
  Open();
  ports.files.fail = [this](const std::string& operation, const std::string&) {
    if (operation == "Read" && ports.loop.InTask()) ports.loop.Wait(5s);
    return "";
  };
  int first = 0;
  ports.loop.Start("test", [&] {
    first = room->Services().Test(1, {OutputType::kFile, 1})->Value().front().ok ? 1 : 2;
  });
  const std::string path = "/outputs/File/1/test";
  EXPECT_EQ(AskLocally("POST", "/api/v1/services/1" + path).status, 409);
  AskLocally("POST", "/api/v1/services/2/items/current", R"({"title":"On air"})");
  EXPECT_EQ(first, 0);
  ports.loop.RunFor(20s);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(Page(2), "On air by ");
  ports.files.fail = nullptr;
  EXPECT_EQ(AskLocally("POST", "/api/v1/services/1" + path).status, 200);
}

TEST_F(ControlRoomTest, ActingNeedsThePasswordAndReadingOnLoopbackDoesNot) {
  ports.hive.WriteText(environment.settingsRoot, kDashboardPassword, "$hash$right");
  Open();
  const std::string set = "/api/v1/services/1/items/current", body = R"({"title":"x"})";
  EXPECT_EQ(Ask(Get("/api/v1/services")).status, 200);
  EXPECT_EQ(Ask(Post(set, body)).status, 401);
  EXPECT_EQ(Ask(Post("/login", R"({"password":"wrong"})")).status, 401);
  EXPECT_EQ(Ask(Post("/login", R"({"password":"right"})")).status, 429) << "too soon after a wrong one";
  ports.loop.RunFor(1s);
  const ReadAnswer logon = Ask(Post("/login", "password=right"));
  EXPECT_EQ(logon.status, 303);
  EXPECT_NE(logon.cookie.find("HttpOnly"), std::string::npos);
  EXPECT_NE(logon.cookie.find("SameSite=Strict"), std::string::npos);
  const std::string cookie = "Cookie: " + logon.cookie.substr(0, logon.cookie.find(';')) + "\r\n";
  EXPECT_EQ(Ask(Post(set, body, cookie)).status, 204);
  EXPECT_EQ(Ask(Post(set, body, cookie + "Origin: http://evil.example\r\n")).status, 403);
  EXPECT_EQ(Ask(Post("/api/v1/reload", "", cookie)).status, 403);
  EXPECT_EQ(Ask(Post("/logout", "", cookie)).status, 200);
  EXPECT_EQ(Ask(Post(set, body, cookie)).status, 401);
}

TEST_F(ControlRoomTest, WhoComesThroughAProxyMustLogOnToRead) {
  Open();
  EXPECT_EQ(Ask(Get("/api/v1/services", "X-Forwarded-For: 192.0.2.1\r\n")).status, 401);
  EXPECT_EQ(Ask(Get("/api/v1/events", "Forwarded: for=192.0.2.1\r\n")).status, 401);
  EXPECT_EQ(Ask(Get("/", "X-Forwarded-For: 192.0.2.1\r\n")).status, 200) << "the log-on is there";
  EXPECT_EQ(Ask("GET /api/v1/services HTTP/1.1\r\nHost: rebound.example\r\n\r\n").status, 403);
}

TEST_F(ControlRoomTest, APortInUseIsOneLineAndTriedAgain) {
  ports.network.BlockPort(6980);
  Open();
  ports.loop.RunFor(10min);
  int lines = 0;
  for (const std::string& note : ports.person.notes) lines += note.starts_with("Dashboard: ") ? 1 : 0;
  EXPECT_EQ(lines, 1);
  EXPECT_EQ(AskLocally("GET", "/api/v1/services").status, 200) << "the local socket is there";
}

TEST_F(ControlRoomTest, TheNetworkIsServedOnlyOnceThereIsAPassword) {
  ports.hive.WriteText(environment.settingsRoot, "DashboardAddress", "0.0.0.0");
  Open();
  EXPECT_EQ(room->Url(), "");
  ports.hive.WriteText(environment.settingsRoot, kDashboardPassword, "$hash$right");
  EXPECT_EQ(AskLocally("POST", "/api/v1/reload").status, 204);
  EXPECT_EQ(room->Url(), "http://0.0.0.0:6980/");
  EXPECT_EQ(Ask(Get("/api/v1/services")).status, 401);
  EXPECT_EQ(Ask(Get("/")).status, 200);
}

TEST_F(ControlRoomTest, EventsEndWithTheSession) {
  ports.hive.WriteText(environment.settingsRoot, "DashboardAddress", "0.0.0.0");
  ports.hive.WriteText(environment.settingsRoot, kDashboardPassword, "$hash$right");
  Open();
  const ReadAnswer logon = Ask(Post("/login", R"({"password":"right"})"));
  const std::string cookie = "Cookie: " + logon.cookie.substr(0, logon.cookie.find(';')) + "\r\n";
  HttpClient reader = Connect();
  reader.Send(Get("/api/v1/events", cookie));
  ports.loop.RunFor(1min);
  EXPECT_FALSE(reader.closed);
  EXPECT_EQ(Ask(Post("/logout", "", cookie)).status, 200);
  ports.loop.RunFor(15s);
  EXPECT_TRUE(reader.closed);
}

// A store that cannot be read for a moment must not shut anybody out for good.
TEST_F(ControlRoomTest, ALogOnThatFailsByAFaultMayBeTriedAgain) {
  ports.hive.WriteText(environment.settingsRoot, kDashboardPassword, "$hash$right");
  Open();
  secrets->onCheck = [&] { ports.hive.failure = "locked"; };
  EXPECT_EQ(Ask(Post("/login", R"({"password":"right"})")).status, 500);
  secrets->onCheck = nullptr;
  ports.hive.failure.clear();
  EXPECT_EQ(Ask(Post("/login", R"({"password":"right"})")).status, 200);
}

}  // namespace
}  // namespace zeb
