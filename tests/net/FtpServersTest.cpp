// The web output of a running zebd against real FTP servers, and the FTP session against one that breaks off
// at every step.

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <thread>

#include "platform/posix/CurlFtpSession.h"
#include "tests/net/Sockets.h"
#include "tests/net/Station.h"

namespace zeb {
namespace {

class FtpServersTest : public Station {
 protected:
  FtpServersTest() {
    AddService(1, control, "<ZEB_NOW_ITEMNAME>", "now.txt");
    port = FreePortPair();
    site = folder / "site/www";
    std::filesystem::create_directories(site);
    std::filesystem::permissions(folder, std::filesystem::perms(0755));
    std::filesystem::permissions(site, std::filesystem::perms(0777));
    WriteFile(Path("page.html"), "<p><ZEB_NOW_ITEMNAME> <ZEB_NOW_PICTUREFILENAME></p>");
    WriteFile(Path("cover.jpg"), "picture");
    Set("NumberOutputs", "1");
    Set("Output1.NumberFiles", "1");
    Set("Output1.SourceFileName1", Path("page.html"));
    Set("Output1.DestinationFileName1", "/www/now.html");
    Set("CopyAdditionalFiles1", "1");
    Set("FTPServerName1", "localhost");
    Set("FTPServerPort1", std::to_string(port));
    Set("FTPTimeoutSeconds1", "5");
  }
  void Set(const std::string& name, const std::string& data) {
    ASSERT_EQ(Zebctl({"settings", "set", "Service1\\Web", name, data}).status, 0);
  }
  void StartVsftpd(bool tls) {
    std::filesystem::create_directories(folder / "empty");
    std::string config =
        "listen=YES\nlisten_address=127.0.0.1\nbackground=NO\nlisten_port=" + std::to_string(port) +
        "\nanonymous_enable=YES\nno_anon_password=YES\nwrite_enable=YES\nanon_upload_enable=YES\n"
        "anon_mkdir_write_enable=YES\nanon_other_write_enable=YES\nanon_world_readable_only=NO\n"
        "anon_umask=022\nconnect_from_port_20=NO\nseccomp_sandbox=NO\npasv_address=127.0.0.1\nanon_root=" +
        Path("site") + "\nsecure_chroot_dir=" + Path("empty") + "\n";
    const std::string certificate = std::string(ZEB_TEST_DATA) + "/qt/certificates/localhost.";
    if (tls)
      config +=
          "ssl_enable=YES\nallow_anon_ssl=YES\nforce_anon_logins_ssl=YES\nforce_anon_data_ssl=YES\n"
          "require_ssl_reuse=NO\nrsa_cert_file=" +
          certificate + "pem\nrsa_private_key_file=" + certificate + "key\n";
    WriteFile(Path("vsftpd.conf"), config);
    Set("FTPUsername1", "anonymous");
    Set("FTPPassword1", "radio");
    StartServer({"/usr/sbin/vsftpd", Path("vsftpd.conf")});
  }
  void StartPureFtpd() {
    const std::string programs = std::string(ZEB_SOURCE_DIR) + "/build/peers/pure-ftpd/usr/";
    // The password "secret", hashed beforehand: the server's own tool takes seconds and much memory for it.
    WriteFile(Path("users"),
              "radio:$6$radiosalt$1lD1qJ5ZjxqmEh90exrmm/"
              "tqpbOaxaWGTJtNYUJPtwyoUthKKdqxDlEo8yIGAbokW9qu0LAfEZS7GqtPbdxaE/:65534:65534::" +
                  Path("site") + "/./::::::::::::\n");
    const Finished user =
        RunProgram({programs + "bin/pure-pw", "mkdb", Path("users.pdb"), "-f", Path("users")});
    ASSERT_EQ(user.status, 0) << user.error;
    Set("FTPUsername1", "radio");
    Set("FTPPassword1", "secret");
    StartServer({programs + "sbin/pure-ftpd", "-S", "127.0.0.1," + std::to_string(port), "-l",
                 "puredb:" + Path("users.pdb"), "-E", "-H", "-u", "1", "-g", Path("ftpd.pid")});
  }
  void StartServer(const std::vector<std::string>& command) {
    server = std::make_unique<Process>(command);
    for (int tries = 0; tries < 200; ++tries) {
      if (Socket::Connect(port).Valid()) return;
      ::poll(nullptr, 0, 50);  // its start tells us nothing to wait for
    }
    const int status = server->Wait(Seconds(1));
    FAIL() << "the FTP server does not start (" << status << "): " << server->error << server->output;
  }
  void Play(const std::string& title) {
    ASSERT_EQ(Send({"SET_CURRENT_ITEM ITitle=\"" + title + "\" PicFName=" + Path("cover.jpg")}).status, 0);
    AwaitPage("now.txt", title);
  }
  void AwaitNote(const std::string& text) {
    while (zebd->error.find(text) == std::string::npos) ASSERT_TRUE(zebd->WaitForError("\n")) << zebd->error;
  }
  std::string AwaitOnServer(const std::string& text) {
    const std::string file = "site/www/now.html";
    return AwaitPage(file, text);
  }
  std::vector<std::string> OnServer() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(site))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }
  // Published, replaced, the picture sent once, nothing left over.
  void PublishTwice() {
    Start();
    Play("Zoë");
    EXPECT_EQ(AwaitOnServer("Zoë"), "<p>Zoë cover.jpg</p>") << zebd->error;
    const auto sent = std::filesystem::last_write_time(site / "cover.jpg");
    WriteFile(Path("cover.jpg"), "another");
    Play("Second");
    EXPECT_EQ(AwaitOnServer("Second"), "<p>Second cover.jpg</p>") << zebd->error;
    zebd->Signal(SIGTERM);
    EXPECT_EQ(zebd->Wait(), 0) << zebd->error;
    EXPECT_EQ(std::filesystem::last_write_time(site / "cover.jpg"), sent);
    EXPECT_EQ(ReadFile((site / "cover.jpg").string()), "picture") << "it was there already";
    EXPECT_EQ(OnServer(), (std::vector<std::string>{"cover.jpg", "now.html"}));
  }

  int port = 0;
  std::filesystem::path site;
  std::unique_ptr<Process> server;
};

TEST_F(FtpServersTest, VsftpdPassive) {
  StartVsftpd(false);
  PublishTwice();
}

TEST_F(FtpServersTest, VsftpdActive) {
  StartVsftpd(false);
  ASSERT_EQ(Zebctl({"settings", "set", "Service1\\Web", "FTPPassiveMode1", "0", "--number"}).status, 0);
  PublishTwice();
}

TEST_F(FtpServersTest, PureFtpdPassive) {
  StartPureFtpd();
  PublishTwice();
}

TEST_F(FtpServersTest, PureFtpdActive) {
  StartPureFtpd();
  ASSERT_EQ(Zebctl({"settings", "set", "Service1\\Web", "FTPPassiveMode1", "0", "--number"}).status, 0);
  PublishTwice();
}

TEST_F(FtpServersTest, AWrongPasswordIsToldInTheServersWords) {
  StartPureFtpd();
  Set("FTPPassword1", "wrong");
  Set("FTPTimeoutSeconds1", "30");  // the server makes who guesses wait
  WriteFile((site / "now.html").string(), "the page before");
  Start();
  Play("One");
  AwaitNote("530");
  EXPECT_EQ(ReadFile((site / "now.html").string()), "the page before");
}

TEST_F(FtpServersTest, TlsIsTrustedByItsAuthorityOnly) {
  StartVsftpd(true);
  ASSERT_EQ(Zebctl({"settings", "set", "Service1\\Web", "FTPUseTLS1", "1", "--number"}).status, 0);
  Start();
  Play("Untrusted");
  AwaitNote("Web 1: Couldn't connect To Server : cannot connect to 'localhost': SSL");
  EXPECT_TRUE(OnServer().empty());
  zebd->Signal(SIGTERM);
  EXPECT_EQ(zebd->Wait(), 0);

  Set("FTPCaFile1", std::string(ZEB_TEST_DATA) + "/qt/certificates/localhost.pem");
  PublishTwice();
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
    if (done) done = session->Upload("/a.tmp", "page", {});
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
