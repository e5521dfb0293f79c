// The control room of a real zebd: its local socket by zebctl, its page by HTTP.

#include <sys/stat.h>

#include <csignal>
#include <vector>

#include "tests/net/Sockets.h"
#include "tests/net/Station.h"

namespace zeb {
namespace {

const std::string kPage = "Now: <ZEB_NOW_ITEMNAME>\n";

class ControlRoomNetTest : public Station {
 protected:
  ControlRoomNetTest() {
    const Socket reserved = Socket::Listen();
    dashboard = reserved.Port();
  }
  // The answer, header and body; the connection is closed by the server.
  std::string Ask(const std::string& method, const std::string& target, const std::string& body = "",
                  const std::string& more = "") const {
    const Socket socket = Socket::Connect(dashboard);
    EXPECT_TRUE(socket.Send(method + " " + target +
                            " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(dashboard) +
                            "\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) +
                            "\r\n" + more + "\r\n" + body));
    std::string received;
    while (socket.Receive(received, 20000)) {
    }
    return received;
  }
  static bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
  }
};

TEST_F(ControlRoomNetTest, ZebctlSeesAndSteersThePublisherOfItsDataFolder) {
  EXPECT_EQ(Zebctl({"status"}).status, 3);
  EXPECT_EQ(Zebctl({"reload"}).status, 3);
  AddService(1, control, kPage, "now.txt");
  Start();
  struct stat info {};
  ASSERT_EQ(stat(Path("zeb.socket").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode, static_cast<mode_t>(S_IFSOCK | 0600));
  EXPECT_EQ(Zebctl({"set", "current", "--title", "Paper Møøns"}).status, 0);
  EXPECT_EQ(AwaitPage("now.txt", "Paper"), "Now: Paper Møøns\n");
  const Finished status = Zebctl({"status"});
  EXPECT_EQ(status.status, 0) << status.output;
  EXPECT_TRUE(Has(status.output, "1  Station 1\n")) << status.output;
  EXPECT_TRUE(Has(status.output, "on air                        Paper Møøns\n")) << status.output;
  EXPECT_TRUE(Has(status.output, "File1      ok")) << status.output;
  EXPECT_TRUE(Has(Zebctl({"status", "--json"}).output, "\"title\":\"Paper Møøns\""));
  // The playout has control, and the entry goes through all the same.
  Process playout({Program("zebctl"), "send", "--port", std::to_string(6900 + control)});
  playout.Write("SET_CURRENT_ITEM ITitle=\"Of the playout\"\n");
  AwaitPage("now.txt", "Of the playout");
  EXPECT_EQ(Zebctl({"set", "current", "--title", "By hand"}).status, 0);
  EXPECT_EQ(AwaitPage("now.txt", "By hand"), "Now: By hand\n");
  EXPECT_EQ(Zebctl({"update"}).status, 0);
  EXPECT_EQ(Zebctl({"update", "2"}).error, "zebctl: there is no such service\n");
  EXPECT_EQ(Zebctl({"settings", "set", "Service1", "ServiceName", "New Name"}).status, 0);
  EXPECT_EQ(Zebctl({"reload"}).status, 0);
  EXPECT_TRUE(Has(Zebctl({"status"}).output, "1  New Name\n"));
  zebd->Signal(SIGTERM);
  EXPECT_EQ(zebd->Wait(), 0);
  EXPECT_FALSE(std::filesystem::exists(Path("zeb.socket")));
}

TEST_F(ControlRoomNetTest, StationsAreSetUpWhileItRuns) {
  AddService(1, control, kPage, "now.txt");
  Start();
  const std::string second = std::to_string(FreeControlPort());
  EXPECT_EQ(Zebctl({"service", "add", "Second", "TolvanTCPControlPort=" + second, "InstantUpdate=1"}).output,
            "2\n");
  EXPECT_EQ(
      Zebctl({"output", "add", "2", "File", "SourceFileName1=template1", "DestinationFileName1=two.txt"})
          .output,
      "File1\n");
  ASSERT_TRUE(zebd->WaitForError("Settings read again, 2 services"));
  EXPECT_EQ(Zebctl({"set", "current", "--service", "2", "--title", "Two"}).status, 0);
  EXPECT_EQ(AwaitPage("two.txt", "Two"), "Now: Two\n");
  EXPECT_EQ(Zebctl({"service", "remove", "1"}).status, 0);
  EXPECT_EQ(Zebctl({"service", "list"}).output, "1  Second\n");
  const Finished status = Zebctl({"status"});
  EXPECT_TRUE(Has(status.output, "1  Second\n")) << status.output;
  EXPECT_TRUE(Has(status.output, "on air                        Two\n")) << "it keeps its item";
  EXPECT_EQ(Zebctl({"output", "remove", "1", "File1"}).status, 0);
  EXPECT_EQ(Zebctl({"output", "list", "1"}).output, "");
}

TEST_F(ControlRoomNetTest, ThePageIsServedAndActingNeedsThePassword) {
  AddService(1, control, kPage, "now.txt");
  Start();
  EXPECT_TRUE(Has(zebd->error, "The dashboard is at http://127.0.0.1:" + std::to_string(dashboard) + "/"));
  const std::string page = Ask("GET", "/");
  EXPECT_TRUE(page.starts_with("HTTP/1.1 200 OK\r\n")) << page;
  EXPECT_TRUE(Has(page, "<script type=\"module\" src=\"/page/main.js\">"));
  EXPECT_TRUE(Ask("GET", "/page/main.js").starts_with("HTTP/1.1 200 OK\r\nContent-Type: text/javascript"));
  const std::string set = "/api/v1/services/1/items/current";
  EXPECT_TRUE(Ask("POST", set, "{\"title\":\"x\"}").starts_with("HTTP/1.1 401 "));
  EXPECT_TRUE(Has(Ask("POST", "/login", "{\"password\":\"x\"}"), "zebctl dashboard password"));
  const Finished stored =
      RunProgram({Program("zebctl"), "--home", folder.string(), "dashboard", "password"}, "correct horse\n");
  EXPECT_EQ(stored.status, 0) << stored.error;
  EXPECT_TRUE(Has(Zebctl({"settings", "get", "", "DashboardPassword"}).output, "$argon2id$"));
  const std::string logon = Ask("POST", "/login", "{\"password\":\"correct horse\"}");
  ASSERT_TRUE(logon.starts_with("HTTP/1.1 200 ")) << logon;
  const std::size_t cookie = logon.find("Set-Cookie: ") + 12;
  const std::string session = "Cookie: " + logon.substr(cookie, logon.find(';', cookie) - cookie) + "\r\n";
  EXPECT_TRUE(Ask("POST", set, "{\"title\":\"From the page\"}", session).starts_with("HTTP/1.1 204 "));
  EXPECT_EQ(AwaitPage("now.txt", "From"), "Now: From the page\n");
}

TEST_F(ControlRoomNetTest, EventsTellAnItemAsItChanges) {
  AddService(1, control, kPage, "now.txt");
  Start();
  const Socket reader = Socket::Connect(dashboard);
  ASSERT_TRUE(reader.Send("GET /api/v1/events HTTP/1.1\r\nHost: localhost\r\n\r\n"));
  std::string received;
  ASSERT_TRUE(reader.ReceiveUntil(received, "event: services\n")) << received;
  ASSERT_EQ(Send({"SET_CURRENT_ITEM ITitle=\"Live\""}).status, 0);
  EXPECT_TRUE(reader.ReceiveUntil(received, "\"title\":\"Live\"")) << received;
}

TEST_F(ControlRoomNetTest, AKillLeavesNoObstacleBehind) {
  AddService(1, control, kPage, "now.txt");
  for (int i = 0; i < 3; ++i) {
    Start();
    EXPECT_EQ(Zebctl({"status"}).status, 0);
    zebd->Signal(SIGKILL);
    zebd->Wait();
    EXPECT_EQ(Zebctl({"status"}).status, 3);
  }
}

// Peers that send half a request and nothing more, as many as there are places and more.
TEST_F(ControlRoomNetTest, PublishingGoesOnWhileAllPlacesAreTaken) {
  AddService(1, control, kPage, "now.txt");
  Start();
  std::vector<Socket> slow;
  for (int i = 0; i < 200; ++i) {
    slow.push_back(Socket::Connect(dashboard));
    slow.back().Send("GET /api/v1/services HTTP/1.1\r\nHo");
  }
  ASSERT_EQ(Send({"SET_CURRENT_ITEM ITitle=\"Meanwhile\""}).status, 0);
  EXPECT_EQ(AwaitPage("now.txt", "Meanwhile"), "Now: Meanwhile\n");
  EXPECT_EQ(Zebctl({"status"}).status, 0) << "the local socket has places of its own";
  slow.clear();
  // Many requests in one go on one connection, answered in order.
  const Socket busy = Socket::Connect(dashboard);
  std::string received;
  for (int round = 0; round < 100; ++round) {
    std::string requests;
    for (int i = 0; i < 100; ++i) requests += "GET /api/v1/session HTTP/1.1\r\nHost: localhost\r\n\r\n";
    ASSERT_TRUE(busy.Send(requests));
    received.clear();
    for (std::size_t answers = 0; answers < 100;) {
      ASSERT_TRUE(busy.Receive(received, 20000)) << round << ' ' << answers;
      answers = 0;
      for (std::size_t at = 0; (at = received.find("\"passwordSet\"", at)) != std::string::npos; ++at)
        ++answers;
    }
  }
  ASSERT_EQ(Send({"SET_CURRENT_ITEM ITitle=\"Afterwards\""}).status, 0);
  EXPECT_EQ(AwaitPage("now.txt", "Afterwards"), "Now: Afterwards\n");
}

}  // namespace
}  // namespace zeb
