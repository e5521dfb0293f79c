// The FTP session on libcurl: what it must do, on a real server, and against one that breaks off at every
// step.

#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <thread>

#include "platform/common/CurlFtpSession.h"
#include "tests/net/FtpRelay.h"
#include "tests/net/FtpServers.h"
#include "tests/platform/FtpContract.h"
#include "tests/posix/FewDescriptors.h"

namespace zeb {
namespace {

struct Vsftpd : testing::Test {
  Vsftpd() {
    std::string name = (std::filesystem::temp_directory_path() / "zeb-ftp-XXXXXX").string();
    home = ::mkdtemp(name.data());
    std::filesystem::create_directories(home / "site/www");
    std::filesystem::permissions(home, std::filesystem::perms(0755));
    std::filesystem::permissions(home / "site/www", std::filesystem::perms(0777));
    const int port = FreePortPair();
    server = StartVsftpd(home, port);
    relay = std::make_unique<FtpRelay>(port);
    target.server = "127.0.0.1";
    target.port = relay->Port();
    target.user = "anonymous";
    target.password = "radio";
    target.timeLimit = std::chrono::seconds(20);
  }
  ~Vsftpd() override {
    server.reset();
    std::filesystem::remove_all(home);
  }
  // Most cases are about a session that goes on; the one that closes it makes another.
  void TearDown() override { EXPECT_LE(relay->Connections(), 2); }

  std::filesystem::path home;
  std::unique_ptr<Process> server;
  std::unique_ptr<FtpRelay> relay;
  CurlFtpSessions sessions;
  FtpTarget target;
  const std::string folder = "/www/";
};
INSTANTIATE_TYPED_TEST_SUITE_P(Vsftpd, FtpContract, Vsftpd);

using FtpSessionOnVsftpd = Vsftpd;

TEST_F(FtpSessionOnVsftpd, RefusalsAndEndedUploadsCostNoLogin) {
  const auto session = sessions.Make();
  ASSERT_TRUE(session->Connect(target));
  for (int i = 0; i < 10; ++i) EXPECT_FALSE(session->Exists("/www/none").Value());
  EXPECT_FALSE(session->Rename("/www/none", "/www/other"));
  EXPECT_FALSE(session->Delete("/www/none"));
  EXPECT_FALSE(session->Upload("/none/a", SourceOf("x")));
  EXPECT_FALSE(
      session->Upload("/www/part", FtpSource{9000, [](char*, std::size_t) { return std::nullopt; }}));
  EXPECT_TRUE(session->Delete("/www/part"));
  session->Close();
  EXPECT_EQ(relay->Connections(), 1);
}

TEST_F(FtpSessionOnVsftpd, TheLastDescriptorsAreLeftToFiles) {
  FewDescriptors descriptors(400);
  descriptors.TakeAllBut(40);  // connections leave 50 alone
  const auto session = sessions.Make();
  const Outcome connected = session->Connect(target);
  EXPECT_FALSE(connected);
  EXPECT_NE(connected.Reason().find(": too many open files: raise LimitNOFILE"), std::string::npos)
      << connected.Reason();
  EXPECT_EQ(relay->Connections(), 0);
  descriptors.GiveBack();
  EXPECT_TRUE(session->Connect(target));
}

TEST_F(FtpSessionOnVsftpd, CancellingEndsWhateverWaits) {
  relay->answerTo = [](const std::string& command) {
    return command.rfind("SIZE", 0) == 0 ? FtpRelay::Manner::kFallSilent : FtpRelay::Manner::kPassOn;
  };
  target.timeLimit = std::chrono::hours(1);
  const auto session = sessions.Make();
  ASSERT_TRUE(session->Connect(target));
  std::thread canceller([&] {
    for (;;) {
      const std::vector<std::string> commands = relay->Commands();
      if (!commands.empty() && commands.back().rfind("SIZE", 0) == 0) break;
      std::this_thread::yield();
    }
    session->Cancel();
  });
  EXPECT_FALSE(session->Exists("/www/a"));  // or this test runs into its deadline
  canceller.join();
  EXPECT_FALSE(session->Connected());
}

// Answers as an FTP server would, and breaks off in place of the reply number `replies`.
class BreakingServer {
 public:
  explicit BreakingServer(int replies) : left_(replies), thread_([this] { Serve(); }) {}
  ~BreakingServer() { thread_.join(); }
  int Port() const { return port_; }

 private:
  bool Reply(Socket& peer, const std::string& text) { return left_-- > 0 && peer.Send(text + "\r\n"); }
  void Serve() {
    Socket peer = listener_.Accept(1500);
    if (!peer.Valid() || !Reply(peer, "220 ready")) return;
    std::string received;
    while (peer.ReceiveUntil(received, "\r\n", 3000)) {
      const std::size_t end = received.find("\r\n");
      const std::string command = received.substr(0, std::min<std::size_t>(4, end));
      received.erase(0, end + 2);
      std::string answer = "200 fine";
      if (command == "USER") answer = "331 password";
      if (command == "PASS") answer = "230 welcome";
      if (command == "PWD") answer = "257 \"/\" it is";
      if (command == "RNFR") answer = "350 to where";
      if (command == "RNTO") answer = "250 moved";
      if (command == "EPSV") answer = "229 here (|||" + std::to_string(data_.Port()) + "|)";
      if (command == "STOR") {
        const Socket sender = data_.Accept(1500);
        if (!Reply(peer, "150 go on")) return;
        std::string bytes;
        while (sender.Receive(bytes, 3000)) continue;
        answer = "226 stored";
      }
      if (!Reply(peer, answer)) return;
    }
  }

  Socket listener_ = Socket::Listen(), data_ = Socket::Listen();
  const int port_ = listener_.Port();
  int left_;
  std::thread thread_;
};

TEST(FtpSessionTest, AServerThatBreaksOffAtAnyStepIsAFailureAndNoMore) {
  int worked = 0;
  std::string lastReason;
  constexpr int kSteps = 14;
  for (int replies = 0; replies <= kSteps; ++replies) {
    BreakingServer server(replies);
    CurlFtpSessions sessions;
    const auto session = sessions.Make();
    FtpTarget target;
    target.server = "127.0.0.1";
    target.port = server.Port();
    target.user = "u";
    target.password = "p";
    target.timeLimit = std::chrono::milliseconds(2000);
    Outcome done = session->Connect(target);
    if (done) done = session->Upload("/a.tmp", SourceOf("page"));
    if (done) done = session->Rename("/a.tmp", "/a");
    if (done)
      ++worked;
    else
      EXPECT_FALSE(session->Connected()) << "after " << replies << " replies";
    session->Close();
    lastReason = done.Reason();
  }
  EXPECT_GT(worked, 0) << "the last rounds do not break off: " << lastReason;
  EXPECT_LT(worked, kSteps / 2);
}

}  // namespace
}  // namespace zeb
