// The serial port on a real line: one whose other end is a socket (scripts/windows/test-serial makes it).
// ZEB_TEST_SERIAL_PORT names the port, ZEB_TEST_SERIAL_PEER the TCP port on this machine where its other end
// is to be had; when that connection closes, the line goes as if its adapter were pulled out.

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <mutex>

#include "platform/simulated/SimulatedLoop.h"
#include "platform/simulated/SimulatedNetwork.h"
#include "platform/windows/SerialLine.h"
#include "platform/windows/WinSerialPortControl.h"
#include "tests/windows/LoopbackSocket.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

// A loop that waits for what other threads post.
class PostedLoop : public SimulatedLoop {
 public:
  void PostFromAnyThread(std::function<void()> work) override {
    SimulatedLoop::PostFromAnyThread(std::move(work));
    const std::lock_guard lock(mutex_);
    ++posts_;
    came_.notify_all();
  }
  // Of real time.
  bool RunUntilTrue(const std::function<bool()>& condition, std::chrono::milliseconds limit = 10s) {
    const auto end = std::chrono::steady_clock::now() + limit;
    for (;;) {
      std::uint64_t seen = 0;
      {
        const std::lock_guard lock(mutex_);
        seen = posts_;
      }
      RunPosted();
      if (condition()) return true;
      std::unique_lock lock(mutex_);
      if (!came_.wait_until(lock, end, [&] { return posts_ != seen; })) return false;
    }
  }

 private:
  std::mutex mutex_;
  std::condition_variable came_;
  std::uint64_t posts_ = 0;
};

struct WinSerialFixture : testing::Test {
  void SetUp() override {
    port = ports.MakePort();
    port->onComm = [this](std::int32_t event, std::string_view data) {
      events.push_back(event);
      received += data;
    };
    port->onLost = [this] { ++lost; };
  }
  Outcome Open() {
    if (const Outcome opened = port->Open(); !opened) return opened;
    EXPECT_TRUE(loop.RunUntilTrue([this] { return !port->Opening(); }));
    if (port->PortOpen()) return {};
    return Failure{port->LastError()};
  }
  std::string WhyNot(SerialPortControl::Line line) {
    port->SetLine(std::move(line));
    const Outcome opened = Open();
    return opened ? "opened" : opened.Reason();
  }

  PostedLoop loop;
  SimulatedNetwork network{loop};
  WinSerialPorts ports{loop, network};
  std::shared_ptr<SerialPortControl> port;
  std::vector<std::int32_t> events;
  std::string received;
  int lost = 0;
};

using WinSerialTest = WinSerialFixture;

TEST_F(WinSerialTest, WhatCannotBeOpenedIsSaidInOneLine) {
  EXPECT_EQ(WhyNot({1, "COM231"}), "cannot open 'COM231': this computer has no such port");
  EXPECT_EQ(WhyNot({1, ""}), "the port has no device name, such as COM1");
  EXPECT_EQ(WhyNot({1, "COM231", "9600,n,8"}).rfind("bad line settings '9600,n,8'", 0), 0u);
  EXPECT_EQ(WhyNot({1, "COM231", "9600,n,8,1", 4}), "there is no handshaking 4");
  EXPECT_EQ(events, std::vector<std::int32_t>());
  EXPECT_EQ(WhyNot({1, "NUL"}), "cannot open 'NUL': it is no serial port");
  EXPECT_EQ(events, std::vector<std::int32_t>{kCommDCB});
  EXPECT_FALSE(port->Output("x"));
  EXPECT_EQ(port->OutBufferCount(), 0u);
  EXPECT_EQ(lost, 0);
  port->Close();
  EXPECT_EQ(port->LastError(), "");
}

TEST_F(WinSerialTest, ClosingWhileItOpensTellsNothing) {
  port->SetLine({1, "COM231"});
  ASSERT_TRUE(port->Open());
  port->Close();
  EXPECT_FALSE(port->Opening());
  EXPECT_EQ(port->LastError(), "");
  ASSERT_TRUE(port->Open());
  port.reset();
  EXPECT_FALSE(loop.RunUntilTrue([this] { return !events.empty() || lost > 0; }, 100ms));
}

TEST_F(WinSerialTest, ADeviceOnTheNetworkIsHandedThrough) {
  const auto listener = network.MakeListener();
  std::string heard;
  std::unique_ptr<TcpConnection> peer;
  listener->onConnection = [&](std::unique_ptr<TcpConnection> connection) {
    peer = std::move(connection);
    peer->onData = [&](std::string_view bytes) { heard += bytes; };
  };
  ASSERT_TRUE(listener->Listen("", 4001));
  port->SetLine({1, "tcp:encoder:4001", "", 77});
  ASSERT_TRUE(port->Open());
  loop.RunFor(1s);
  ASSERT_TRUE(port->PortOpen());
  EXPECT_TRUE(port->Output("RT=song"));
  loop.RunFor(1s);
  EXPECT_EQ(heard, "RT=song");
  peer->Close();
  loop.RunFor(1s);
  EXPECT_EQ(lost, 1);
  EXPECT_NE(port->LastError(), "");
}

TEST(SerialLineTest, TellsTheSystemTheLine) {
  const struct {
    SerialLineSettings settings;
    std::int32_t handshaking;
    BYTE parity, bits, stop;
    bool cts, software;
  } cases[] = {
      {{9600, 'n', 8, 2}, SerialPortControl::kNoHandshaking, NOPARITY, 8, ONESTOPBIT, false, false},
      {{1200, 'e', 7, 4}, SerialPortControl::kXOnXOff, EVENPARITY, 7, TWOSTOPBITS, false, true},
      {{300, 'o', 5, 3}, SerialPortControl::kRtsCts, ODDPARITY, 5, ONE5STOPBITS, true, false},
      {{115200, 'm', 8, 2}, SerialPortControl::kRtsXOn, MARKPARITY, 8, ONESTOPBIT, true, true},
      {{115200, 's', 6, 2}, SerialPortControl::kNoHandshaking, SPACEPARITY, 6, ONESTOPBIT, false, false},
  };
  for (const auto& given : cases) {
    DCB line{};
    line.fAbortOnError = TRUE;
    ConfigureLine(line, given.settings, given.handshaking);
    EXPECT_EQ(line.BaudRate, static_cast<DWORD>(given.settings.baud));
    EXPECT_EQ(line.Parity, given.parity);
    EXPECT_EQ(line.fParity != 0, given.parity != NOPARITY);
    EXPECT_EQ(line.ByteSize, given.bits);
    EXPECT_EQ(line.StopBits, given.stop);
    EXPECT_EQ(line.fOutxCtsFlow != 0, given.cts);
    EXPECT_EQ(line.fRtsControl == RTS_CONTROL_HANDSHAKE, given.cts);
    EXPECT_EQ(line.fOutX != 0, given.software);
    EXPECT_EQ(line.fInX != 0, given.software);
    EXPECT_EQ(line.fAbortOnError, 0u);
  }
}

TEST(SerialLineTest, WhatTheSystemReportsBecomesEvents) {
  const struct {
    DWORD changes, errors;
    std::vector<CommEvent> events;
  } cases[] = {
      {0, 0, {}},
      {EV_ERR, CE_FRAME, {kCommFrame}},
      {EV_ERR, CE_RXPARITY | CE_OVERRUN, {kCommParity, kCommOverrun}},
      {0, CE_RXOVER, {kCommReceiveOverflow}},
      {EV_BREAK, CE_BREAK, {kCommBreak}},
      {EV_CTS, 0, {kCommCTS}},
      {EV_DSR | EV_RLSD, 0, {kCommDSR, kCommCD}},
      {EV_RING, 0, {kCommRing}},
  };
  for (const auto& given : cases) {
    SerialLineState state;
    CountLineEvents(state, given.changes, given.errors);
    EXPECT_EQ(CommEventsBetween({}, state), given.events) << given.changes << " " << given.errors;
  }
}

struct WinSerialLineTest : WinSerialFixture {
  void SetUp() override {
    const char* name = std::getenv("ZEB_TEST_SERIAL_PORT");
    const char* peerPort = std::getenv("ZEB_TEST_SERIAL_PEER");
    if (name == nullptr || peerPort == nullptr)
      GTEST_SKIP() << "no line: ZEB_TEST_SERIAL_PORT and ZEB_TEST_SERIAL_PEER are not set";
    WinSerialFixture::SetUp();
    device = name;
    port->SetLine({1, device});
    const auto end = std::chrono::steady_clock::now() + 10s;  // the line of the test before makes room
    while (!peer.Valid() && std::chrono::steady_clock::now() < end)
      peer = LoopbackSocket::Connect(std::atoi(peerPort));
    ASSERT_TRUE(peer.Valid()) << "nobody holds the other end of " << device;
    const Outcome opened = Open();
    ASSERT_TRUE(opened) << opened.Reason();
  }
  // The other end goes, and with it the line.
  void TearDown() override {
    if (port) port->Close();
  }
  bool Drained() {
    return loop.RunUntilTrue([this] { return port->OutBufferCount() == 0; });
  }

  std::string device;
  LoopbackSocket peer;
};

TEST_F(WinSerialLineTest, SendsAndReceives) {
  const std::string text = "TA=1\r\n\x11\x13\x1a" + std::string(1, '\0') + "\xff\xfe end";
  ASSERT_TRUE(port->Output(text));
  EXPECT_TRUE(Drained());
  std::string heard;
  EXPECT_TRUE(peer.ReceiveUntil(heard, " end", 5000));
  EXPECT_EQ(heard, text);
  EXPECT_TRUE(peer.Send(text));
  EXPECT_TRUE(loop.RunUntilTrue([&] { return received.size() >= text.size(); }));
  EXPECT_EQ(received, text);
  EXPECT_EQ(std::count(events.begin(), events.end(), kCommReceive), std::ssize(events));
  EXPECT_EQ(port->LastError(), "");
}

TEST_F(WinSerialLineTest, CharacterByCharacter) {
  std::string heard;
  for (const char c : std::string("slow send\r\n")) {
    ASSERT_TRUE(port->Output({&c, 1}));
    ASSERT_TRUE(Drained());
  }
  EXPECT_TRUE(peer.ReceiveUntil(heard, "\r\n", 5000));
  EXPECT_EQ(heard, "slow send\r\n");
}

TEST_F(WinSerialLineTest, MoreThanTheSystemTakesAtOnce) {
  const std::string much(50'000, 'm');
  ASSERT_TRUE(port->Output(much));
  std::string heard;
  while (heard.size() < much.size() && peer.Receive(heard, 5000)) continue;
  EXPECT_EQ(heard, much);
  EXPECT_TRUE(Drained());
  EXPECT_TRUE(peer.Send(much + much + much));
  EXPECT_TRUE(loop.RunUntilTrue([&] { return received.size() >= 3 * much.size(); }));
  EXPECT_EQ(received, much + much + much);
}

// Nobody reads at the other end: bytes are counted, refused from a bound on, and closing is at once.
TEST_F(WinSerialLineTest, ALineThatTakesNothingHoldsNobodyUp) {
  std::size_t taken = 0;
  const std::string block(64 * 1024, 'x');
  Outcome sent;
  while (taken < (64u << 20) && (sent = port->Output(block))) taken += block.size();
  ASSERT_FALSE(sent);
  EXPECT_EQ(sent.Reason(), "'" + device + "' takes no more bytes; check its cable and handshaking");
  const std::size_t before = port->OutBufferCount();
  EXPECT_GT(before, WinSerialPortControl::kMostUnsent - block.size());
  EXPECT_TRUE(port->PortOpen());
  const auto began = std::chrono::steady_clock::now();
  port->Close();
  EXPECT_LT(std::chrono::steady_clock::now() - began, 100ms);
  EXPECT_EQ(port->OutBufferCount(), 0u);
  const Outcome again = Open();
  EXPECT_TRUE(again) << again.Reason();
}

TEST_F(WinSerialLineTest, ALineThatIsPulledOutIsLostOnce) {
  ASSERT_TRUE(port->Output("before"));
  ASSERT_TRUE(Drained());
  peer.Close();
  EXPECT_TRUE(loop.RunUntilTrue([this] { return lost > 0; }));
  EXPECT_FALSE(port->PortOpen());
  EXPECT_EQ(port->LastError().rfind("'" + device + "' is gone: ", 0), 0u) << port->LastError();
  EXPECT_FALSE(port->Output("after"));
  EXPECT_EQ(port->OutBufferCount(), 0u);
  EXPECT_FALSE(loop.RunUntilTrue([this] { return lost > 1; }, 700ms));
  port->Close();
  EXPECT_EQ(port->LastError(), "");
}

TEST_F(WinSerialLineTest, TheReceiverMayDestroyThePort) {
  port->onComm = [this](std::int32_t, std::string_view) { port.reset(); };
  EXPECT_TRUE(peer.Send("x"));
  EXPECT_TRUE(loop.RunUntilTrue([this] { return !port; }));
}

// A pseudo-terminal knows neither parity nor other than 8 bits.
TEST_F(WinSerialLineTest, EveryHandshakingIsTaken) {
  for (const std::int32_t handshaking : {0, 1, 2, 3}) {
    EXPECT_EQ(WhyNot({1, device, "19200,n,8,2", handshaking}), "opened") << handshaking;
    EXPECT_TRUE(port->Output("x"));
    EXPECT_TRUE(Drained());
  }
}

TEST_F(WinSerialLineTest, IsInTheListOfPorts) {
  const auto found = ports.Available();
  EXPECT_TRUE(
      std::any_of(found.begin(), found.end(), [this](const auto& one) { return one.device == device; }));
}

}  // namespace
}  // namespace zeb
