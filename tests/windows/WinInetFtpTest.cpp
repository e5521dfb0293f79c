// FTP by the system: what it must do on a real server (scripts/windows/test-ftp starts one and sets
// ZEB_TEST_FTP_PORT, on this machine), and on one that breaks off or falls silent at every step.

#include <cstdlib>

#include "platform/simulated/SimulatedFtp.h"
#include "platform/windows/WinFtpSessions.h"
#include "tests/platform/FtpContract.h"
#include "tests/windows/LoopbackSocket.h"
#include "tests/windows/ScriptedFtpServer.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Server = ScriptedFtpServer;

const char* ServerPort() {
  return std::getenv("ZEB_TEST_FTP_PORT");
}

FtpTarget TargetAt(int port) {
  FtpTarget target;
  target.server = "127.0.0.1";
  target.port = port;
  target.user = "anonymous";
  target.password = "radio";
  target.timeLimit = 20s;
  return target;
}

// A folder of its own on the real server.
std::string MakeFolder(int port) {
  static int number = 0;
  const std::string folder = "/www/" + std::to_string(++number);
  const LoopbackSocket control = LoopbackSocket::Connect(port);
  for (const std::string line : {"", "USER anonymous\r\n", "PASS radio\r\n"}) {
    std::string reply;
    control.Send(line);
    EXPECT_TRUE(control.ReceiveUntil(reply, "\r\n", 5000));
  }
  std::string reply;
  control.Send("MKD " + folder + "\r\n");
  EXPECT_TRUE(control.ReceiveUntil(reply, "257 ", 5000)) << reply;
  return folder + "/";
}

template <bool passive>
struct RealServer : testing::Test {
  RealServer() {
    if (ServerPort() == nullptr) return;
    target = TargetAt(std::atoi(ServerPort()));
    target.passive = passive;
    folder = MakeFolder(target.port);
  }
  void SetUp() override {
    if (ServerPort() == nullptr) GTEST_SKIP() << "no server: ZEB_TEST_FTP_PORT is not set";
  }
  SimulatedFtp simulated;  // which a test is connected to until it is skipped
  WinFtpSessions real{simulated};
  FtpSessions& sessions = ServerPort() == nullptr ? static_cast<FtpSessions&>(simulated) : real;
  FtpTarget target;
  std::string folder;
};
using Passive = RealServer<true>;
using Active = RealServer<false>;
INSTANTIATE_TYPED_TEST_SUITE_P(PassiveVsftpd, FtpContract, Passive);
INSTANTIATE_TYPED_TEST_SUITE_P(ActiveVsftpd, FtpContract, Active);

using WinInetFtpOnVsftpd = Passive;

TEST_F(WinInetFtpOnVsftpd, AUserItDoesNotKnowIsRefusedInItsWords) {
  const auto session = sessions.Make();
  target.user = "somebody";
  const Outcome connected = session->Connect(target);
  EXPECT_FALSE(connected);
  EXPECT_EQ(session->LastResponse().rfind("530 ", 0), 0u) << session->LastResponse();
  EXPECT_EQ(connected.Reason(), "cannot connect to '127.0.0.1': " + session->LastResponse());
  EXPECT_FALSE(session->Connected());
  target.user = "anonymous";
  EXPECT_TRUE(session->Connect(target));
}

TEST_F(WinInetFtpOnVsftpd, AFolderIsNoFile) {
  const auto session = sessions.Make();
  ASSERT_TRUE(session->Connect(target));
  const Result<bool> exists = session->Exists(folder.substr(0, folder.size() - 1));
  ASSERT_TRUE(exists) << exists.Reason();
  EXPECT_FALSE(exists.Value());
}

// ---- A server of our own

struct WinInetFtpTest : testing::Test {
  std::unique_ptr<FtpSession> ConnectedTo(const Server& server, std::chrono::milliseconds limit = 5s) {
    auto session = std::make_unique<WinInetFtpSession>();
    FtpTarget target = TargetAt(server.Port());
    target.timeLimit = limit;
    const Outcome connected = session->Connect(target);
    EXPECT_TRUE(connected) << connected.Reason();
    return session;
  }
};

// What an update does on a server, as far as it gets.
Outcome PublishOn(FtpSession& session, const FtpTarget& target) {
  Outcome done = session.Connect(target);
  if (done) done = session.Upload("/a.tmp", SourceOf("page"));
  if (done) done = session.Rename("/a.tmp", "/a");
  if (done) done = session.Delete("/b");
  return done;
}

struct Rounds {
  int worked = 0, failed = 0;
  std::string lastReason;
};

Rounds PublishWithEach(Server::Then then, std::chrono::milliseconds limit) {
  Rounds rounds;
  for (int replies = 0; rounds.worked < 2 && replies < 30; ++replies) {
    Server::Script script;
    script.replies = replies;
    script.then = then;
    const Server server(script);
    WinInetFtpSession session;
    FtpTarget target = TargetAt(server.Port());
    target.timeLimit = limit;
    const auto began = Clock::now();
    const Outcome done = PublishOn(session, target);
    const bool connected = session.Connected();
    session.Close();
    ++(done ? rounds.worked : rounds.failed);
    if (done) continue;
    EXPECT_FALSE(connected) << "after " << replies << " replies: " << done.Reason();
    EXPECT_LT(Clock::now() - began, limit + 2s) << "after " << replies << " replies: " << done.Reason();
    rounds.lastReason = done.Reason();
  }
  return rounds;
}

TEST_F(WinInetFtpTest, AServerThatBreaksOffAtAnyStepIsAFailureAndNoMore) {
  const Rounds rounds = PublishWithEach(Server::Then::kBreaksOff, 10s);
  EXPECT_GT(rounds.worked, 0) << rounds.lastReason;
  EXPECT_GT(rounds.failed, 8);
}

TEST_F(WinInetFtpTest, AServerThatFallsSilentAtAnyStepIsGivenUpInTime) {
  const Rounds rounds = PublishWithEach(Server::Then::kFallsSilent, 400ms);
  EXPECT_GT(rounds.worked, 0) << rounds.lastReason;
  EXPECT_GT(rounds.failed, 8);
  EXPECT_NE(rounds.lastReason.find("no answer for 0 s"), std::string::npos) << rounds.lastReason;
}

TEST_F(WinInetFtpTest, NobodyThereIsAFailureAtOnce) {
  int port = 0;
  {
    const LoopbackSocket gone = LoopbackSocket::Listen();
    port = gone.Port();
  }
  WinInetFtpSession session;
  const Outcome connected = session.Connect(TargetAt(port));
  EXPECT_EQ(connected.Reason(), "cannot connect to '127.0.0.1': nothing there takes a connection");
  EXPECT_EQ(session.LastResponse(), "");
}

TEST_F(WinInetFtpTest, AWrongPasswordIsToldInTheServersWords) {
  Server::Script script;
  script.answers["PASS"] = "530-Go away.\r\n530 Login incorrect.";
  const Server server(script);
  WinInetFtpSession session;
  const Outcome connected = session.Connect(TargetAt(server.Port()));
  EXPECT_FALSE(connected);
  EXPECT_NE(session.LastResponse().find("530 Login incorrect."), std::string::npos) << session.LastResponse();
  EXPECT_NE(connected.Reason().find("530 Login incorrect."), std::string::npos) << connected.Reason();
}

TEST_F(WinInetFtpTest, ADiskThatIsFullIsKnownOnlyAtTheEnd) {
  Server::Script script;
  script.stored = "452 no space left";
  const Server server(script);
  const auto session = ConnectedTo(server);
  const Outcome sent = session->Upload("/a", SourceOf("page"));
  EXPECT_EQ(sent.Reason(), "cannot upload '/a': 452 no space left");
  EXPECT_EQ(session->LastResponse(), "452 no space left");
  EXPECT_TRUE(session->Connected());
  EXPECT_TRUE(session->Delete("/a"));
}

TEST_F(WinInetFtpTest, AServerThatStopsReadingIsGivenUpInTime) {
  Server::Script script;
  script.takesNothing = true;
  const Server server(script);
  const auto session = ConnectedTo(server, 500ms);
  const std::string much(30'000'000, 'x');
  const auto began = Clock::now();
  EXPECT_EQ(session->Upload("/a", SourceOf(much)).Reason(), "cannot upload '/a': no answer for 0 s");
  EXPECT_LT(Clock::now() - began, 10s);
  EXPECT_FALSE(session->Connected());
}

TEST_F(WinInetFtpTest, AServerThatTellsNoSizesIsAskedForItsList) {
  Server::Script script;
  script.answers["SIZE"] = "502 no such command";
  script.listed =
      "-rw-r--r-- 1 ftp ftp 4 Mar 02 12:00 a.htm\r\ndrwxr-xr-x 2 ftp ftp 0 Mar 02 12:00 pictures\r\n";
  const Server server(script);
  const auto session = ConnectedTo(server);
  const struct {
    std::string path;
    bool exists;
  } cases[] = {{"/www/a.htm", true}, {"/www/b.htm", false}, {"/www/pictures", false}};
  for (const auto& [path, exists] : cases) {
    const Result<bool> answer = session->Exists(path);
    ASSERT_TRUE(answer) << answer.Reason();
    EXPECT_EQ(answer.Value(), exists) << path;
  }
  EXPECT_TRUE(session->Connected());
}

TEST_F(WinInetFtpTest, CancellingEndsWhateverWaits) {
  WinInetFtpSession session;
  std::atomic<bool> waits = false;
  Server::Script script;
  script.silentAt = "SIZE";
  script.onCommand = [&](const std::string& command) {
    if (command == "SIZE" && !waits.exchange(true)) session.Cancel();
  };
  const Server server(script);
  FtpTarget target = TargetAt(server.Port());
  target.timeLimit = 1h;
  ASSERT_TRUE(session.Connect(target));
  const auto began = Clock::now();
  const Result<bool> exists = session.Exists("/a");
  EXPECT_FALSE(exists);
  EXPECT_EQ(exists.Reason(), "cannot look for '/a': it was ended");
  EXPECT_LT(Clock::now() - began, 3s);
  EXPECT_FALSE(session.Connected());
}

TEST(WinFtpSessionsTest, TlsIsHandedOver) {
  SimulatedFtp other;
  WinFtpSessions sessions(other);
  const auto session = sessions.Make();
  FtpTarget target = TargetAt(1);
  target.server = "ftp.example";
  target.tls = true;
  EXPECT_TRUE(session->Open());
  ASSERT_TRUE(session->Connect(target));
  EXPECT_TRUE(session->Connected());
  target.tls = false;  // and back, to a port where nobody listens
  target.server = "127.0.0.1";
  EXPECT_FALSE(session->Connect(target));
  EXPECT_FALSE(session->Connected());
  session->Cancel();
}

TEST(WinInetFtp, TheLastReplyOfManyIsFound) {
  const struct {
    std::string words, last;
  } cases[] = {
      {"", ""},
      {"550 Delete operation failed.\r\n", "550 Delete operation failed."},
      {"220 hi\r\n331 password\r\n530 Login incorrect.\r\n", "530 Login incorrect."},
      {"200 fine\r\n230-Welcome\r\n to us\r\n230 on\r\n", "230-Welcome\r\n to us\r\n230 on"},
      {"226", "226"},
      {"226 no line end", "226 no line end"},
      {"no code at all\r\n", "no code at all"},
  };
  for (const auto& [words, last] : cases) EXPECT_EQ(LastFtpReply(words), last);
}

}  // namespace
}  // namespace zeb
