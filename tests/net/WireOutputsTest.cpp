// zebd's serial and DAB outputs on real ones: pseudo-terminals, and the label server as a process.

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

#include "tests/net/Sockets.h"
#include "tests/net/Station.h"

namespace zeb {
namespace {

// The far end of a pseudo-terminal: where an RDS encoder would be.
class Terminal {
 public:
  Terminal() {
    char name[128];
    EXPECT_EQ(openpty(&master_, &slave_, name, nullptr, nullptr), 0);
    // The publisher must not hold the far end open.
    fcntl(master_, F_SETFD, FD_CLOEXEC);
    fcntl(slave_, F_SETFD, FD_CLOEXEC);
    device = name;
  }
  ~Terminal() {
    close(master_);
    close(slave_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  // Reads until `text` is the end of what came, or five seconds pass; all of it, and when each piece came.
  std::string ReadTo(const std::string& text) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::seconds(5);
    std::string all;
    while (Clock::now() < deadline &&
           (all.size() < text.size() || all.substr(all.size() - text.size()) != text)) {
      pollfd wait{master_, POLLIN, 0};
      if (poll(&wait, 1, 100) <= 0) continue;
      char bytes[256];
      const ssize_t count = read(master_, bytes, sizeof bytes);
      if (count <= 0) break;
      all.append(bytes, static_cast<std::size_t>(count));
      times.insert(times.end(), static_cast<std::size_t>(count), Clock::now());
    }
    return all;
  }

  std::string device;
  std::vector<std::chrono::steady_clock::time_point> times;  // of each byte

 private:
  int master_ = -1, slave_ = -1;
};

class WireOutputsTest : public Station {
 protected:
  void Set(const std::string& key, const std::string& name, const std::string& data, bool number = false) {
    std::vector<std::string> command = {"settings", "set", key, name, data};
    if (number) command.emplace_back("--number");
    const Finished done = Zebctl(command);
    ASSERT_EQ(done.status, 0) << done.error;
  }
  void AddSerial(const std::string& device) {
    AddService(1, control, "<ZEB_NOW_ITEMNAME>", "now.txt");
    Set("", "CommPortDevice3", device);
    Set("Service1\\Serial", "NumberOutputs", "1");
    Set("Service1\\Serial", "CommPort1", "3", true);
    Set("Service1\\Serial", "SimpleTextFormat1", "RT=<ZEB_NOW_ITEMNAME>");
    Set("Service1\\Serial", "AppendCharsFormat1", "{0D}{0A}");
  }
  // A label server on `port` (0: a free one), for "Demo FM".
  std::unique_ptr<Process> StartLabelServer(std::string& port) {
    WriteFile(Path("labels.ini"), "[Demo FM]\nPassword=s3\"cret\nFileName=" + Path("label.txt") + "\n");
    auto server = std::make_unique<Process>(
        std::vector<std::string>{Program("zeb-labelserver"), "--config", Path("labels.ini"), "--port", port});
    EXPECT_TRUE(server->WaitForError("is ready on port ")) << server->error;
    EXPECT_TRUE(server->WaitForError(" for 1 service")) << server->error;
    const std::size_t at = server->error.find("on port ") + 8;
    port = server->error.substr(at, server->error.find(' ', at) - at);
    return server;
  }
  void AddDAB(const std::string& port) {
    AddService(1, control, "<ZEB_NOW_ITEMNAME>", "now.txt");
    Set("Service1\\DAB", "NumberOutputs", "1");
    Set("Service1\\DAB", "ServerName1", "127.0.0.1");
    Set("Service1\\DAB", "ServerPort1", port);
    Set("Service1\\DAB", "ServiceName1", "Demo FM");
    Set("Service1\\DAB", "ServicePassword1", "s3\"cret");
    Set("Service1\\DAB", "SimpleTextFormat1", "Now: <ZEB_NOW_ITEMNAME>");
  }
  // What the file holds, once that is `text` or 20 seconds have passed.
  std::string AwaitFile(const std::string& name, const std::string& text) const {
    for (int tries = 0; tries < 400 && ReadFile(Path(name)) != text; ++tries) poll(nullptr, 0, 50);
    return ReadFile(Path(name));
  }
  static std::string Current(const std::string& title) {
    return "SET_CURRENT_ITEM IType=7 ITitle=\"" + title + "\"";
  }
};

TEST_F(WireOutputsTest, EveryByteArrivesOnATerminalThatIsSetUpAsALine) {
  Terminal terminal;
  AddSerial(terminal.device);
  Set("Service1\\Serial", "MaxNumberChars1", "64");
  Start();
  ASSERT_EQ(Send({Current("Café " + std::string(80, 'x'))}).status, 0);
  EXPECT_EQ(terminal.ReadTo("\r\n"), "RT=Caf\xE9 " + std::string(54, 'x') + "\r\n");
  // Bytes that a terminal would otherwise change go through as they are.
  Set("Service1\\Serial", "AppendCharsFormat1", "{03}{0A}{7F}{11}{0D}");
  zebd->Signal(SIGHUP);
  ASSERT_TRUE(zebd->WaitForError("Settings read again"));
  ASSERT_EQ(Send({Current("b")}).status, 0);
  const std::string raw = "RT=b\x03\n\x7F\x11\r", got = terminal.ReadTo(raw);
  EXPECT_EQ(got.substr(got.size() - std::min(got.size(), raw.size())), raw);
  // A name that is no device, and bad settings: one line each, and the other outputs go on.
  Set("Service1\\Serial", "Settings1", "9600,z,8,1");
  zebd->Signal(SIGHUP);
  ASSERT_TRUE(zebd->WaitForError("Serial 1: bad line settings '9600,z,8,1'")) << zebd->error;
  ASSERT_EQ(Send({Current("c")}).status, 0);
  EXPECT_EQ(AwaitPage("now.txt", "c"), "c");
  Set("Service1\\Serial", "Settings1", "9600,e,7,2");
  Set("", "CommPortDevice3", "/dev/none");
  zebd->Signal(SIGHUP);
  ASSERT_TRUE(zebd->WaitForError("Serial 1: cannot open '/dev/none'")) << zebd->error;
}

TEST_F(WireOutputsTest, SlowSendPacesTheBytesInOrder) {
  Terminal terminal;
  AddSerial(terminal.device);
  Set("Service1\\Serial", "UseSlowSend1", "1");
  Start();
  // From before it is sent: on a busy machine the first bytes are seen late.
  const auto begun = std::chrono::steady_clock::now();
  ASSERT_EQ(Send({Current("0123456789")}).status, 0);
  EXPECT_EQ(terminal.ReadTo("\r\n"), "RT=0123456789\r\n");
  ASSERT_EQ(terminal.times.size(), 15u);
  EXPECT_GE(Seconds(terminal.times.back() - begun).count(), 0.13);
}

// An adapter that is pulled out and plugged in again under the same name.
TEST_F(WireOutputsTest, OpensADeviceThatCameBack) {
  auto terminal = std::make_unique<Terminal>();
  const std::string name = Path("adapter");
  std::filesystem::create_symlink(terminal->device, name);
  AddSerial(name);
  Start();
  ASSERT_EQ(Send({Current("one")}).status, 0);
  EXPECT_EQ(terminal->ReadTo("\r\n"), "RT=one\r\n");
  terminal.reset();
  std::filesystem::remove(name);
  ASSERT_EQ(Send({Current("two"), Current("three")}).status, 0);
  ASSERT_TRUE(zebd->WaitForError("Serial 1: ")) << zebd->error;
  terminal = std::make_unique<Terminal>();
  std::filesystem::create_symlink(terminal->device, name);
  ASSERT_EQ(Send({Current("four")}).status, 0);
  // The one before may still be on its way when the device comes back.
  const std::string came = terminal->ReadTo("RT=four\r\n");
  EXPECT_TRUE(came == "RT=four\r\n" || came == "RT=three\r\nRT=four\r\n") << came;
  EXPECT_TRUE(zebd->WaitForError("Serial 1 works again")) << zebd->error;
}

// Switched off and on between two songs, it is sent its text again.
TEST_F(WireOutputsTest, AnEncoderOnTheNetworkThatComesBackGetsThePresentText) {
  const Socket encoder = Socket::Listen();
  AddSerial("tcp:127.0.0.1:" + std::to_string(encoder.Port()));
  Set("", "RetrySeconds", "1", true);
  Start();
  ASSERT_EQ(Send({Current("one")}).status, 0);
  for (int times = 0; times < 2; ++times) {
    const Socket line = encoder.Accept();
    ASSERT_TRUE(line.Valid()) << zebd->error;
    std::string got;
    EXPECT_TRUE(line.ReceiveUntil(got, "RT=one\r\n")) << zebd->error;
  }
}

TEST_F(WireOutputsTest, ALabelServerThatIsRestartedGetsThePresentLabel) {
  std::string port = "0";
  auto server = StartLabelServer(port);
  AddDAB(port);
  Set("", "RetrySeconds", "1", true);
  Start();
  ASSERT_EQ(Send({Current("one")}).status, 0);  // the first update connects, logs on and sends
  EXPECT_EQ(AwaitFile("label.txt", "Now: one"), "Now: one") << zebd->error;
  server->Signal(SIGTERM);
  EXPECT_EQ(server->Wait(), 0);
  std::filesystem::remove(Path("label.txt"));
  server = StartLabelServer(port);
  EXPECT_EQ(AwaitFile("label.txt", "Now: one"), "Now: one") << zebd->error;
}

TEST_F(WireOutputsTest, LabelsReachTheFileThroughTheLabelServer) {
  std::string port = "0";
  const auto started = StartLabelServer(port);
  Process& server = *started;
  AddDAB(port);
  Start();
  ASSERT_EQ(Send({Current("Łódź live")}).status, 0);
  EXPECT_EQ(AwaitFile("label.txt", "Now: Łódź live"), "Now: Łódź live");
  EXPECT_EQ(AwaitPage("now.txt", "live"), "Łódź live");
  ASSERT_TRUE(server.WaitForError("'Demo FM' logged on from 127.0.0.1")) << server.error;
  // What no label holds is cut, not refused.
  ASSERT_EQ(Send({Current(std::string(173, 'x'))}).status, 0);
  const std::string cut = "Now: " + std::string(123, 'x');
  EXPECT_EQ(AwaitFile("label.txt", cut), cut);
  ASSERT_EQ(Send({Current("Last {label}")}).status, 0);
  EXPECT_EQ(AwaitFile("label.txt", "Now: Last {label}"), "Now: Last {label}");
  // Ending zebd logs off behind the label.
  zebd->Signal(SIGTERM);
  EXPECT_EQ(zebd->Wait(), 0) << zebd->error;
  ASSERT_TRUE(server.WaitForError("'Demo FM' logged off")) << server.error;
  EXPECT_EQ(zebd->error.find("DAB 1:"), std::string::npos) << zebd->error;
  server.Signal(SIGTERM);
  EXPECT_EQ(server.Wait(), 0) << server.error;

  WriteFile(Path("bad.ini"), "[a]\nColour=red\n");
  const Finished bad = RunProgram({Program("zeb-labelserver"), "--config", Path("bad.ini")});
  EXPECT_EQ(bad.status, 1);
  EXPECT_NE(bad.error.find("line 2"), std::string::npos) << bad.error;
  EXPECT_EQ(RunProgram({Program("zeb-labelserver")}).status, 2);
}

}  // namespace
}  // namespace zeb
