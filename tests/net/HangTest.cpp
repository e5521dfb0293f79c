// A running zebd beside whatever hangs: a share, servers that accept and say nothing. The file output of the
// same station must not notice, and SIGTERM must end the program with 0.

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <csignal>

#include "tests/net/Sockets.h"
#include "tests/net/Station.h"

namespace zeb {
namespace {

class HangTest : public Station {
 protected:
  HangTest() { AddService(1, control, "<ZEB_NOW_ITEMNAME>", "now.txt"); }
  ~HangTest() override { ::close(lock_); }

  // The share hangs for as long as this process has the lock.
  void HangShare() { ASSERT_EQ(::flock(lock_, LOCK_EX), 0); }
  void ReleaseShare() { ASSERT_EQ(::flock(lock_, LOCK_UN), 0); }

  struct Setting {
    std::string key, name, data;
    bool number = false;
  };
  void Set(const std::vector<Setting>& settings) const {
    for (const Setting& one : settings) {
      std::vector<std::string> command{"settings", "set", "Service1\\" + one.key, one.name, one.data};
      if (one.number) command.emplace_back("--number");
      const Finished set = Zebctl(command);
      ASSERT_EQ(set.status, 0) << set.error;
    }
  }
  void AddSecondFile(const std::string& destination) const {
    Set({{"File", "NumberOutputs", "2"},
         {"File", "Output2.NumberFiles", "1"},
         {"File", "Output2.SourceFileName1", "template1"},
         {"File", "Output2.DestinationFileName1", destination}});
  }
  void StartOnHangingShare() {
    std::filesystem::create_directories(folder / "share");
    std::vector<std::string> command = ZebdCommand();
    command.insert(command.begin(),
                   {"/usr/bin/env", "LD_PRELOAD=" ZEB_HANGING_OPEN, "ZEB_HANG_BELOW=" + Path("share/"),
                    "ZEB_HANG_LOCK=" + Path("lock"), "ASAN_OPTIONS=verify_asan_link_order=0"});
    zebd = std::make_unique<Process>(command);
    ASSERT_TRUE(zebd->WaitForError("is ready")) << zebd->error;
  }
  void Play(const std::string& title) {
    const Finished sent = Send({"SET_CURRENT_ITEM IType=7 ITitle=\"" + title + "\""});
    ASSERT_EQ(sent.status, 0) << sent.error;
  }
  void ExpectEnd() {
    zebd->Signal(SIGTERM);
    EXPECT_EQ(zebd->Wait(), 0) << zebd->error;
    EXPECT_NE(zebd->error.find("Stopped"), std::string::npos) << zebd->error;
  }

 private:
  const int lock_ = ::open(Path("lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
};

TEST_F(HangTest, AShareThatHangsHoldsUpItsOwnOutputOnly) {
  AddSecondFile("share/now.txt");
  StartOnHangingShare();
  Play("before");
  EXPECT_EQ(AwaitPage("share/now.txt", "before"), "before");
  HangShare();
  for (const char* title : {"one", "two", "three"}) {
    Play(title);
    EXPECT_EQ(AwaitPage("now.txt", title), title) << zebd->error;
  }
  EXPECT_EQ(ReadFile(Path("share/now.txt")), "before");
  zebd->Signal(SIGHUP);
  EXPECT_TRUE(zebd->WaitForError("Settings read again")) << zebd->error;
  ReleaseShare();
  EXPECT_EQ(AwaitPage("share/now.txt", "three"), "three") << zebd->error;
  ExpectEnd();
}

TEST_F(HangTest, SigtermEndsItWhileAShareHangs) {
  AddSecondFile("share/now.txt");
  StartOnHangingShare();
  HangShare();
  Play("one");
  EXPECT_EQ(AwaitPage("now.txt", "one"), "one") << zebd->error;
  ExpectEnd();
}

// Servers that take a connection and never say a word.
TEST_F(HangTest, ServersThatSayNothingHoldUpNobodyAndNoEnd) {
  for (const std::string type : {"Web", "HTTPRequest", "Encoder", "DAB"}) {
    const Socket silent = Socket::Listen();
    const std::string port = std::to_string(silent.Port());
    Set({{"Web", "NumberOutputs", type == "Web" ? "1" : "0"},
         {"HTTPRequest", "NumberOutputs", type == "HTTPRequest" ? "1" : "0"},
         {"Encoder", "NumberOutputs", type == "Encoder" ? "1" : "0"},
         {"DAB", "NumberOutputs", type == "DAB" ? "1" : "0"},
         {"Web", "FTPServerName1", "127.0.0.1"},
         {"Web", "FTPServerPort1", port},
         {"Web", "Output1.NumberFiles", "1"},
         {"Web", "Output1.SourceFileName1", "template1"},
         {"Web", "Output1.DestinationFileName1", "/now.txt"},
         {"HTTPRequest", "ServerPort1", port, true},
         {"Encoder", "EncoderType1", "2", true},
         {"Encoder", "SHOUTCastServerPort1", port, true},
         {"DAB", "ServerName1", "127.0.0.1"},
         {"DAB", "ServerPort1", port},
         {"DAB", "ServiceName1", "x"}});
    Start();
    Play(type + " first");
    Socket accepted = silent.Accept();
    EXPECT_TRUE(accepted.Valid()) << type;
    for (const char* title : {" one", " two"}) {
      Play(type + title);
      EXPECT_EQ(AwaitPage("now.txt", type + title), type + title) << zebd->error;
    }
    ExpectEnd();
  }
}

}  // namespace
}  // namespace zeb
