// A station set up, changed and tested with zebctl's commands, with zebd and without it.

#include <csignal>
#include <filesystem>
#include <set>

#include "tests/net/FtpServers.h"
#include "tests/net/Sockets.h"
#include "tests/net/Station.h"

namespace zeb {
namespace {

class StationSetupTest : public Station {
 protected:
  StationSetupTest() { WriteFile(Path("t"), "<ZEB_NOW_ITEMNAME>"); }
  std::string Done(std::vector<std::string> arguments) {
    const Finished finished = Zebctl(std::move(arguments));
    EXPECT_EQ(finished.status, 0) << finished.error;
    return finished.output;
  }
  std::vector<std::string> AddFile(const std::string& page) {
    return {"output", "add", "1", "File", "SourceFileName1=t", "DestinationFileName1=" + page};
  }
};

TEST_F(StationSetupTest, WhatIsAddedIsOnAirAtOnceAndWhatIsRemovedNoMore) {
  Start();
  EXPECT_EQ(Done({"service", "add", "Demo FM", "InstantUpdate=yes",
                  "TolvanTCPControlPort=" + std::to_string(control)}),
            "1\n");
  ASSERT_TRUE(zebd->WaitForError("listening on port"));
  EXPECT_EQ(Done(AddFile("a.txt")), "File1\n");
  EXPECT_EQ(Done(AddFile("b.txt")), "File2\n");
  EXPECT_EQ(Done({"output", "list", "1"}), "File1  Update 1 file\nFile2  Update 1 file\n");
  while (Done({"status", "--json"}).find("File2") == std::string::npos) continue;
  ASSERT_EQ(Send({"SET_CURRENT_ITEM ITitle=One"}).status, 0);
  EXPECT_EQ(AwaitPage("a.txt", "One"), "One");
  EXPECT_EQ(AwaitPage("b.txt", "One"), "One");
  EXPECT_EQ(Done({"output", "remove", "1", "File1"}), "");
  EXPECT_EQ(Done({"output", "list", "1"}), "File1  Update 1 file\n");
  while (Done({"status", "--json"}).find("File2") != std::string::npos) continue;
  ASSERT_EQ(Send({"SET_CURRENT_ITEM ITitle=Two"}).status, 0);
  EXPECT_EQ(AwaitPage("b.txt", "Two"), "Two");
  EXPECT_EQ(ReadFile(Path("a.txt")), "One");
  EXPECT_EQ(Done({"service", "remove", "1"}), "");
  EXPECT_EQ(Done({"service", "list"}), "");
}

TEST_F(StationSetupTest, ManyAtATimeLoseNothing) {
  Start();
  Done({"service", "add", "Demo FM"});
  constexpr int kMany = 8;
  std::vector<std::unique_ptr<Process>> commands;
  std::set<std::string> expected, given;
  for (int i = 1; i <= kMany; ++i) {
    std::vector<std::string> command = {Program("zebctl"), "--home", folder.string()};
    const std::vector<std::string> add = AddFile("page" + std::to_string(i));
    command.insert(command.end(), add.begin(), add.end());
    commands.push_back(std::make_unique<Process>(command));
    expected.insert("File" + std::to_string(i) + "\n");
  }
  for (const auto& command : commands) {
    EXPECT_EQ(command->Wait(), 0) << command->error;
    given.insert(command->output);
  }
  EXPECT_EQ(given, expected);
  const std::string all = Done({"settings", "list", "Service1/File"});
  for (int i = 1; i <= kMany; ++i)
    EXPECT_NE(all.find("=\"page" + std::to_string(i) + "\""), std::string::npos) << all;
}

TEST_F(StationSetupTest, AnFtpOutputIsTestedAgainstARealServer) {
  const int port = FreePortPair();
  std::filesystem::create_directories(folder / "site/www");
  std::filesystem::permissions(folder, std::filesystem::perms(0755));
  std::filesystem::permissions(folder / "site/www", std::filesystem::perms(0777));
  const auto server = StartVsftpd(folder, port);
  ASSERT_TRUE(server);
  Done({"service", "add", "Demo FM"});
  Done({"output", "add", "1", "Web", "FTPServerName=localhost", "FTPServerPort=" + std::to_string(port),
        "FTPUsername=anonymous", "FTPPassword=x", "SourceFileName1=t", "DestinationFileName1=/www/now.html"});
  const std::string server1 = "localhost:" + std::to_string(port);
  const std::string good = "✓ look-up of localhost\n✓ connection to " + server1 +
                           "\n✓ log-on as 'anonymous'\n✓ looking for '/www/now.html': not there yet\n"
                           "✓ storing '/www/now.html.zebtest'\n✓ deleting '/www/now.html.zebtest'\n";
  EXPECT_EQ(Done({"test", "1", "Web1"}), good);
  EXPECT_TRUE(std::filesystem::is_empty(folder / "site/www"));
  std::filesystem::permissions(folder / "site/www", std::filesystem::perms(0555));
  Start();
  const Finished closed = Zebctl({"test", "1", "Web1"});
  std::filesystem::permissions(folder / "site/www", std::filesystem::perms(0777));
  EXPECT_EQ(closed.status, 1);
  EXPECT_NE(closed.output.find("✗ storing '/www/now.html.zebtest': 553 "), std::string::npos)
      << closed.output;
  EXPECT_EQ(Done({"test", "1", "Web1"}), good) << "the running publisher's";
  server->Signal(SIGKILL);
  const Finished refused = Zebctl({"test", "1", "Web1"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(refused.output.find("✗ connection to " + server1 + ": "), std::string::npos) << refused.output;
  EXPECT_EQ(Zebctl({"test", "1", "Web2"}).error, "zebctl: service 1 has no output Web2\n");
}

TEST_F(StationSetupTest, AnHttpOutputIsTestedWithoutARequest) {
  const Socket listener = Socket::Listen();
  Done({"service", "add", "Demo FM"});
  Done({"output", "add", "1", "HTTP", "ServerName=127.0.0.1",
        "ServerPort=" + std::to_string(listener.Port())});
  EXPECT_EQ(Done({"test", "1", "HTTP1"}),
            "✓ look-up of 127.0.0.1\n✓ connection to 127.0.0.1:" + std::to_string(listener.Port()) + "\n");
  const Socket peer = listener.Accept();
  std::string received;
  while (!peer.Ended()) ASSERT_FALSE(peer.Receive(received, 1000));
  EXPECT_EQ(received, "");
  Done({"output", "add", "1", "HTTP", "ServerName=no-such-host.invalid", "UseTLS=1"});
  const Finished unknown = Zebctl({"test", "1", "HTTP2"});
  EXPECT_EQ(unknown.status, 1);
  EXPECT_TRUE(unknown.output.starts_with("✗ look-up of no-such-host.invalid: ")) << unknown.output;
}

}  // namespace
}  // namespace zeb
