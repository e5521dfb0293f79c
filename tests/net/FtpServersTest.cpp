// The web output of a running zebd against real FTP servers.

#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <thread>

#include "tests/net/FtpRelay.h"
#include "tests/net/FtpServers.h"
#include "tests/net/Station.h"

namespace zeb {
namespace {

const std::string kPicture = "\xFF\xD8\xFF\xE0 picture";

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
    WriteFile(Path("cover.jpg"), kPicture);
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
  void UseVsftpd(bool tls = false, const std::string& more = "") {
    Set("FTPUsername1", "anonymous");
    Set("FTPPassword1", "radio");
    server = StartVsftpd(folder, port, tls, more);
    ASSERT_TRUE(server);
  }
  void UsePureFtpd() {
    Set("FTPUsername1", "radio");
    Set("FTPPassword1", "secret");
    server = StartPureFtpd(folder, port);
    ASSERT_TRUE(server);
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
  // What zebd says and hears goes through a relay.
  FtpRelay& UseRelay() {
    relay = std::make_unique<FtpRelay>(port);
    Set("FTPServerPort1", std::to_string(relay->Port()));
    return *relay;
  }
  void Stop() {
    zebd->Signal(SIGTERM);
    EXPECT_EQ(zebd->Wait(), 0) << zebd->error;
  }
  // Published, replaced, the picture sent once, one login an update, nothing left over.
  void PublishTwice(bool counts = true) {
    if (counts) UseRelay();
    Start();
    Play("Zoë");
    EXPECT_EQ(AwaitOnServer("Zoë"), "<p>Zoë cover.jpg</p>") << zebd->error;
    const auto sent = std::filesystem::last_write_time(site / "cover.jpg");
    WriteFile(Path("cover.jpg"), kPicture + " that is another");
    Play("Second");
    EXPECT_EQ(AwaitOnServer("Second"), "<p>Second cover.jpg</p>") << zebd->error;
    Stop();
    if (counts) {
      EXPECT_EQ(relay->Connections(), 2);
    }
    EXPECT_EQ(std::filesystem::last_write_time(site / "cover.jpg"), sent);
    EXPECT_EQ(ReadFile((site / "cover.jpg").string()), kPicture) << "it was there already";
    EXPECT_EQ(OnServer(), (std::vector<std::string>{"cover.jpg", "now.html"}));
  }

  int port = 0;
  std::filesystem::path site;
  std::unique_ptr<Process> server;
  std::unique_ptr<FtpRelay> relay;
};

TEST_F(FtpServersTest, VsftpdPassive) {
  UseVsftpd();
  PublishTwice();
}

TEST_F(FtpServersTest, VsftpdActive) {
  UseVsftpd();
  ASSERT_EQ(Zebctl({"settings", "set", "Service1\\Web", "FTPPassiveMode1", "0", "--number"}).status, 0);
  PublishTwice();
}

TEST_F(FtpServersTest, PureFtpdPassive) {
  UsePureFtpd();
  PublishTwice();
}

TEST_F(FtpServersTest, PureFtpdActive) {
  UsePureFtpd();
  ASSERT_EQ(Zebctl({"settings", "set", "Service1\\Web", "FTPPassiveMode1", "0", "--number"}).status, 0);
  PublishTwice();
}

TEST_F(FtpServersTest, AWrongPasswordIsToldInTheServersWords) {
  UsePureFtpd();
  Set("FTPPassword1", "wrong");
  Set("FTPTimeoutSeconds1", "30");  // the server makes who guesses wait
  WriteFile((site / "now.html").string(), "the page before");
  Start();
  Play("One");
  AwaitNote("530");
  EXPECT_EQ(ReadFile((site / "now.html").string()), "the page before");
}

TEST_F(FtpServersTest, TlsIsTrustedByItsAuthorityOnly) {
  UseVsftpd(true);
  ASSERT_EQ(Zebctl({"settings", "set", "Service1\\Web", "FTPUseTLS1", "1", "--number"}).status, 0);
  Start();
  Play("Untrusted");
  AwaitNote("Web 1: Couldn't connect To Server : cannot connect to 'localhost': SSL");
  EXPECT_TRUE(OnServer().empty());
  zebd->Signal(SIGTERM);
  EXPECT_EQ(zebd->Wait(), 0);

  Set("FTPCaFile1", std::string(ZEB_TEST_DATA) + "/qt/certificates/localhost.pem");
  PublishTwice(false);  // what is encrypted cannot be counted
}

TEST_F(FtpServersTest, TenNewPagesCostOneLogin) {
  for (const bool pure : {false, true}) {
    pure ? UsePureFtpd() : UseVsftpd();
    Set("Output1.NumberFiles", "10");
    for (int page = 2; page <= 10; ++page) {
      Set("Output1.SourceFileName" + std::to_string(page), Path("page.html"));
      Set("Output1.DestinationFileName" + std::to_string(page), "/www/" + std::to_string(page) + ".html");
    }
    UseRelay();
    Start();
    Play("One");
    EXPECT_EQ(AwaitPage("site/www/10.html", "One"), "<p>One cover.jpg</p>") << zebd->error;
    Stop();
    EXPECT_EQ(relay->Connections(), 1);
    EXPECT_EQ(OnServer().size(), 11u);
    for (const std::string& name : OnServer()) std::filesystem::remove(site / name);
    server.reset();
    port = FreePortPair();
  }
}

TEST_F(FtpServersTest, AKeptConnectionServesTheNextUpdate) {
  UseVsftpd();
  ASSERT_EQ(
      Zebctl({"settings", "set", "Service1\\Web", "FTPKeepConnectionSeconds1", "600", "--number"}).status, 0);
  UseRelay();
  Start();
  for (const std::string title : {"One", "Two", "Three"}) {
    Play(title);
    EXPECT_EQ(AwaitOnServer(title), "<p>" + title + " cover.jpg</p>") << zebd->error;
  }
  Stop();
  EXPECT_EQ(relay->Connections(), 1);
}

TEST_F(FtpServersTest, APageThatIsReplacedIsNeverMissing) {
  UseVsftpd();
  WriteFile((site / "now.html").string(), "the page before");
  std::atomic<bool> ends = false;
  int looks = 0, missing = 0;
  std::thread reader([&, page = (site / "now.html").string()] {
    for (; !ends; ++looks) missing += ::access(page.c_str(), R_OK) == 0 ? 0 : 1;
  });
  Start();
  for (const std::string title : {"One", "Two", "Three", "Four"}) {
    Play(title);
    EXPECT_EQ(AwaitOnServer(title), "<p>" + title + " cover.jpg</p>") << zebd->error;
  }
  ends = true;
  reader.join();
  EXPECT_GT(looks, 100);
  EXPECT_EQ(missing, 0);
}

TEST_F(FtpServersTest, ALostAnswerToTheLastRenameIsUnderstood) {
  UseVsftpd();
  UseRelay().answerTo = [left = 1](const std::string& command) mutable {
    return command == "RNTO /www/now.html" && left-- > 0 ? FtpRelay::Manner::kBreakOff
                                                         : FtpRelay::Manner::kPassOn;
  };
  Start();
  Play("One");
  EXPECT_EQ(AwaitOnServer("One"), "<p>One cover.jpg</p>") << zebd->error;
  AwaitNote("web page");
  Stop();
  EXPECT_EQ(relay->Connections(), 2);
  EXPECT_EQ(OnServer(), (std::vector<std::string>{"cover.jpg", "now.html"}));
  EXPECT_EQ(zebd->error.find("Web 1:"), std::string::npos) << zebd->error;
}

// So slow that the picture would take minutes.
TEST_F(FtpServersTest, AnUploadThatIsCutShortByTheEndLeavesNoPart) {
  UseVsftpd(false, "anon_max_rate=20000\n");
  WriteFile(Path("cover.jpg"), kPicture + std::string(20u << 20, 'x'));
  Start();
  Play("One");
  const std::filesystem::path part = site / "cover.jpg.tmp";
  std::error_code none;
  for (int tries = 0; tries < 2000 && !(std::filesystem::file_size(part, none) + 1 > 1); ++tries)
    ::poll(nullptr, 0, 10);  // the server tells nobody that it has begun
  ASSERT_TRUE(std::filesystem::exists(part)) << zebd->error;
  Stop();
  EXPECT_TRUE(OnServer().empty()) << OnServer().front();
}

TEST_F(FtpServersTest, AServerThatFallsSilentDoesNotHoldTheEndUp) {
  UseVsftpd();
  Set("FTPTimeoutSeconds1", "600");
  UseRelay().answerTo = [](const std::string& command) {
    return command.rfind("STOR", 0) == 0 ? FtpRelay::Manner::kFallSilent : FtpRelay::Manner::kPassOn;
  };
  Start();
  Play("One");
  const auto begun = [&] {
    const std::vector<std::string> commands = relay->Commands();
    return !commands.empty() && commands.back().rfind("STOR", 0) == 0;
  };
  for (int tries = 0; tries < 2000 && !begun(); ++tries) ::poll(nullptr, 0, 10);
  ASSERT_TRUE(begun());
  Stop();
}

}  // namespace
}  // namespace zeb
