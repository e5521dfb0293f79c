// The serial output on simulated ports and time.
#include "core/ProgramSettings.h"
#include "outputs/OutputTable.h"
#include "outputs/serial/clsZEBSerialOutput.h"
#include "outputs/wire/WireLog.h"
#include "platform/NetworkSerialPort.h"
#include "platform/SerialLineSettings.h"
#include "tests/outputs/WireFixture.h"
#include "text/Paths.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

class SerialOutputTest : public WireTest {
 protected:
  SerialOutputTest() {
    output->settings.simpleText = "<ZEB_NOW_ITEMNAME>";
    output->settings.CommPort = 3;
  }
  void Start() {
    EXPECT_TRUE(t.loop.RunTask([&] { output->StartOutput(port); }));
    Log();
  }
  bool Send(const std::string& text) {
    bool left = false;
    EXPECT_TRUE(t.loop.RunTask([&] { left = output->SendString(*Snapshot(), text); }));
    return left;
  }

  std::shared_ptr<SimulatedSerialPort> port = std::make_shared<SimulatedSerialPort>(t.loop);
  std::shared_ptr<clsZEBSerialOutput> output = std::make_shared<clsZEBSerialOutput>(t.environment);
};

TEST_F(SerialOutputTest, OpensItsPortAndLogsEachStep) {
  t.hive.WriteText(t.environment.settingsRoot, "CommPortDevice4", "/dev/rds");
  EXPECT_TRUE(output->StartOutput(port));
  EXPECT_EQ(Log(),
            (Lines{"Started Serial.StartOutput", "Serial: Port Opened OK", "Finished Serial.StartOutput"}));
  EXPECT_EQ(port->line.device, UsualCommPortDevice(3));
  EXPECT_EQ(output->GetInformationString(), "Port: 3");
  output->StopOutput();
  EXPECT_EQ(Log(), (Lines{"Started Serial.StopOutput", "Finished Serial.StopOutput"}));
  EXPECT_FALSE(port->PortOpen());

  output->settings.CommPort = 4;
  output->settings.Settings = "9600,x,8,1";
  EXPECT_FALSE(output->StartOutput(port));
  const std::string why = "bad line settings '9600,x,8,1': the parity must be n, e, o, m or s";
  EXPECT_EQ(Log(), (Lines{"Started Serial.StartOutput", "Serial: Error opening Port " + why,
                          "Finished Serial.StartOutput"}));
  EXPECT_EQ(port->line.device, "/dev/rds");
  EXPECT_EQ(output->Status(), kStatusError);
  EXPECT_EQ(output->ProblemText(), why);
  Update(*output);
  EXPECT_EQ(Log(),
            (Lines{"Started Serial.PrepareOutput", "Serial: Port is closed, attempting to open",
                   "Serial: failed to open: " + why, "Finished Serial.PrepareOutput",
                   "Started Serial.UpdateOutput", "Exit as Port closed", "Finished Serial.UpdateOutput",
                   "Started Serial.FinishOutput", "Finished Serial.FinishOutput"}));
}

TEST_F(SerialOutputTest, SendsOneLineAndLogsIt) {
  service.settings.LoggingPath = "/logs";
  output->settings.append = "{0D}{0A}";
  Start();
  Play("Café");
  Update(*output);
  EXPECT_EQ(port->all, "Caf\xE9\r\n");
  EXPECT_EQ(t.files.Contents("/logs/Service 07/2026-03-02-Serial-03.log"),
            std::string("Café\r\n") + kWireLogLineEnd);
  const Lines lines = Log();
  const auto first = std::find(lines.begin(), lines.end(), "Started Serial.SendString");
  ASSERT_NE(first, lines.end());
  EXPECT_EQ(Lines(first, lines.end()),
            (Lines{"Started Serial.SendString", "Adding to Log File", "Sending serial 'Café\r\n'",
                   "Finished serial send.", "Finished Serial.SendString", "Finished Serial.UpdateOutput",
                   "Started Serial.FinishOutput", "Finished Serial.FinishOutput"}));
  EXPECT_EQ(output->Status(), kStatusOK);
}

TEST_F(SerialOutputTest, CutsInCharactersOfItsSetAndKeepsTheAppendedOnes) {
  struct Case {
    std::string title;
    CharacterSet set;
    int most;
    std::string append, sent;
  };
  const Case cases[] = {
      {std::string(70, 'x'), CharacterSet::kWindows1252, 64, "{0D}{0A}", std::string(62, 'x') + "\r\n"},
      {std::string(62, 'x'), CharacterSet::kWindows1252, 64, "{0D}{0A}", std::string(62, 'x') + "\r\n"},
      {"abc", CharacterSet::kWindows1252, 0, "", "abc"},
      {"abc", CharacterSet::kWindows1252, 1, "{0D}{0A}", "\r\n"},  // never below nothing
      {"éèê", CharacterSet::kUtf8, 2, "", "éè"},
      {"e\xCC\x81xy", CharacterSet::kWindows1252, 2, "", "\xE9x"},  // a letter and its accent are one
      {"Łódź", CharacterSet::kWindows1252, 3, "",
       "L\xF3"
       "d"},
      {"éa", CharacterSet::kRds, 2, "{0D}", "\x82\r"},  // the end of a text is not made a blank
  };
  Start();
  for (const Case& c : cases) {
    port->all.clear();
    Play(c.title);
    output->settings.characterSet = c.set;
    output->settings.MaxNumberChars = c.most;
    output->settings.append = c.append;
    Update(*output);
    EXPECT_EQ(port->all, c.sent) << c.title << ' ' << c.most;
  }
}

// The logging path on a share that hangs, then on one that is full: what is sent does not wait for it.
TEST_F(SerialOutputTest, AWireLogThatCannotBeWrittenIsToldOnceAndDelaysNothing) {
  service.settings.LoggingPath = "/logs";
  const std::string path = JoinPath(JoinPath("/logs", "Service 07"), "2026-03-02-Serial-03.log");
  bool hangs = true;
  t.files.fail = [&](const std::string&, const std::string& file) -> std::string {
    if (file != path) return {};
    t.loop.WaitUntil([&] { return !hangs; }, 24h);
    return {};
  };
  Start();
  for (const char* title : {"one", "two", "three"}) {
    const MonotonicTime start = t.loop.Monotonic();
    Play(title);
    EXPECT_TRUE(Update(*output));
    EXPECT_EQ(t.loop.Monotonic() - start, 0s);
    t.loop.RunFor(60s);
  }
  EXPECT_EQ(port->all, "onetwothree");
  Log();
  EXPECT_EQ(journal, (Lines{"'" + path + "' does not answer; what is sent is not logged"}));
  hangs = false;
  t.loop.RunFor(1s);
  const std::string end = kWireLogLineEnd;
  EXPECT_EQ(t.files.Contents(path), "one" + end + "two" + end + "three" + end);

  journal.clear();
  t.files.fail = [&](const std::string&, const std::string& file) -> std::string {
    return file == path ? "no space left" : "";
  };
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(Update(*output));
  t.loop.RunFor(1s);
  Log();
  EXPECT_EQ(journal, (Lines{"cannot write '" + path + "': no space left"}));
}

TEST_F(SerialOutputTest, AWireLogThatHangsForLongKeepsABoundAndCountsTheRest) {
  service.settings.LoggingPath = "/logs";
  const std::string path = JoinPath(JoinPath("/logs", "Service 07"), "2026-03-02-X.log");
  bool hangs = true;
  t.files.fail = [&](const std::string&, const std::string& file) -> std::string {
    if (file == path) t.loop.WaitUntil([&] { return !hangs; }, 24h);
    return {};
  };
  WireLog wireLog(t.environment);
  const SnapshotPtr snapshot = Snapshot();
  for (int i = 0; i < 1100; ++i) {
    wireLog.Append(*snapshot, "-X", std::to_string(i));
    if (i == 0) t.loop.RunFor(31s);
  }
  t.person.notes.clear();
  hangs = false;
  t.loop.RunFor(1s);
  const std::string all = t.files.Contents(path);
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 1001);  // the first one was on its way
  EXPECT_TRUE(all.ends_with(std::string("1000") + kWireLogLineEnd));
  Log();
  EXPECT_TRUE(Has(journal, "99 lines are missing in a log of what was sent"));
}

TEST_F(SerialOutputTest, SendsSlowlyAtExactTimes) {
  service.settings.LoggingPath = "";
  output->settings.UseSlowSend = true;
  output->settings.characterSet = CharacterSet::kUtf8;
  Start();
  MonotonicTime start = t.loop.Monotonic();
  Send("0123456é89");
  ASSERT_EQ(port->written.size(), 10u);
  EXPECT_EQ(port->written[7].bytes, "é");
  for (std::size_t i = 0; i < 10; ++i)
    EXPECT_EQ(port->written[i].time - start, static_cast<int>(i) * 10ms) << i;
  EXPECT_EQ(t.loop.Monotonic() - start, 100ms);
  EXPECT_TRUE(Has(Log(), "Slow sending Serial '0123456é89'"));

  // A line slower than that sets the pace.
  port->byteTime = 25ms;
  port->written.clear();
  start = t.loop.Monotonic();
  Send("abc");
  EXPECT_EQ(port->written.at(2).time - start, 50ms);
  EXPECT_EQ(t.loop.Monotonic() - start, 75ms);
}

TEST_F(SerialOutputTest, APortThatNeverDrainsIsGivenUpAfterTenSecondsAndOpenedAgain) {
  for (const bool slow : {false, true}) {
    output->settings.UseSlowSend = slow;
    Start();
    port->stuck = true;
    const MonotonicTime start = t.loop.Monotonic();
    Update(*output);
    EXPECT_EQ(t.loop.Monotonic() - start, 10s);
    EXPECT_EQ(output->Status(), kStatusError);
    EXPECT_EQ(output->ProblemText(), "port 3 takes no more bytes; check its cable and handshaking");
    EXPECT_TRUE(Has(Log(), "Problem sending string: " + output->ProblemText()));
    EXPECT_FALSE(port->PortOpen());
    port->stuck = false;
    port->all.clear();
    Update(*output);
    EXPECT_EQ(port->all, "Rain on Slate");
    EXPECT_EQ(output->Status(), kStatusOK);
    EXPECT_EQ(output->ProblemText(), "");
  }
}

TEST_F(SerialOutputTest, AnAdapterMayGoDuringASendAndComeBack) {
  output->settings.UseSlowSend = true;
  Start();
  const Timer pull = t.loop.After(35ms, [&] { port->Unplug(); });
  EXPECT_FALSE(Update(*output));
  EXPECT_EQ(port->all, "Rain");
  EXPECT_TRUE(Has(Log(), "Problem sending string: the port is closed"));
  EXPECT_EQ(output->Status(), kStatusError);
  EXPECT_FALSE(Update(*output));
  EXPECT_EQ(output->ProblemText(), "the device is gone");
  port->PlugIn();
  port->all.clear();
  EXPECT_TRUE(Update(*output));
  EXPECT_EQ(port->all, "Rain on Slate");
  EXPECT_EQ(output->Status(), kStatusOK);
}

// A port that goes between two songs is noticed by itself, and the text is to be sent again.
TEST_F(SerialOutputTest, ALostPortIsToldAtOnce) {
  int lost = 0;
  output->onShownLost = [&] { ++lost; };
  Start();
  port->Unplug();
  EXPECT_EQ(lost, 1);
  EXPECT_EQ(output->Status(), kStatusError);
  EXPECT_EQ(output->ProblemText(), "the device is gone");
  EXPECT_FALSE(Send("x"));
  port->PlugIn();
  EXPECT_TRUE(Update(*output));
  EXPECT_EQ(output->ProblemText(), "");
  // Closing it on purpose is no loss.
  output->StopOutput();
  EXPECT_EQ(lost, 1);
}

TEST_F(SerialOutputTest, WhatTheDeviceRefusesFailsUntilItIsTaken) {
  Start();
  port->outputFailure = "no power";
  EXPECT_FALSE(Update(*output));
  EXPECT_EQ(output->ProblemText(), "no power");
  port->outputFailure.clear();
  EXPECT_TRUE(Update(*output));
  EXPECT_EQ(output->Status(), kStatusOK);
  EXPECT_EQ(output->ProblemText(), "");
  output->settings.simpleText.clear();
  EXPECT_FALSE(Update(*output));  // nothing to send is nothing sent, and no problem
  EXPECT_EQ(output->ProblemText(), "");
}

TEST_F(SerialOutputTest, StoppingEndsEveryWaitAtOnce) {
  const auto stopAfter = [&](Duration time) {
    const MonotonicTime start = t.loop.Monotonic();
    const Timer stop = t.loop.After(time, [&] { output->StopOutput(); });
    EXPECT_FALSE(Update(*output));
    EXPECT_EQ(output->Status(), kStatusOff);
    EXPECT_EQ(output->ProblemText(), "");
    return t.loop.Monotonic() - start;
  };
  output->settings.UseSlowSend = true;
  Start();
  EXPECT_EQ(stopAfter(25ms), 25ms);  // in the pause behind a character
  EXPECT_EQ(port->all, "Rai");
  output->settings.UseSlowSend = false;
  Start();
  port->stuck = true;
  EXPECT_EQ(stopAfter(2s), 2s);  // while nothing leaves
  // While an encoder on the network does not answer.
  t.hive.WriteText(t.environment.settingsRoot, "CommPortDevice3", "tcp:encoder:4001");
  t.network.SetHost("encoder", SimulatedNetwork::HostBehaviour::kHangs);
  const auto remote = std::make_shared<NetworkSerialPort>(t.network);
  ASSERT_TRUE(t.loop.RunTask([&] { output->StartOutput(remote); }));
  EXPECT_EQ(output->ProblemText(), "no answer from tcp:encoder:4001");
  EXPECT_EQ(stopAfter(3s), 3s);
}

TEST_F(SerialOutputTest, EarlyEndsAndPortEventsAreLogged) {
  const auto logOf = [&](const std::function<void()>& work) {
    Log();
    EXPECT_TRUE(t.loop.RunTask(work));
    return Log();
  };
  EXPECT_TRUE(Has(logOf([&] { output->SendString(*Snapshot(), "x"); }), "Exit as no CommControl"));
  EXPECT_TRUE(Has(logOf([&] { output->SetTravelFlagActivated(*Snapshot()); }), "Exit as no CommControl"));
  EXPECT_FALSE(output->StartOutput(nullptr));
  Start();
  port->Close();
  EXPECT_TRUE(Has(logOf([&] { output->SendString(*Snapshot(), "x"); }), "Exit as Port Closed"));
  Start();
  Play("");
  EXPECT_TRUE(Has(logOf([&] { output->UpdateOutput(Snapshot()); }), "Exit as no strings to choose from"));
  EXPECT_TRUE(
      Has(logOf([&] { port->onComm(kCommFrame, {}); }), "RaiseEvent CommError:Serial: Framing Error"));
  EXPECT_TRUE(
      Has(logOf([&] { port->onComm(77, {}); }), "RaiseEvent CommError:Serial: Unknown error or event"));
  EXPECT_TRUE(Has(logOf([&] { port->onComm(kCommReceive, "+\xE9"); }), "Serial.Datareceived: +é"));
  port->outputFailure = "no power";
  EXPECT_TRUE(Has(logOf([&] { output->SendString(*Snapshot(), "x"); }), "Problem sending string: no power"));
}

TEST_F(SerialOutputTest, TravelFlagAndNearEndGoOutThroughTheService) {
  output->settings.TravelDeactivateFormat = "{54}A=0 <ZEB_NOW_ITEMNAME>{0D}{0A}";
  service.AddOutput(OutputType::kSerial, output);
  Start();
  ASSERT_TRUE(t.loop.RunTask([&] {
    service.SetTravelFlagActivated();
    service.SetTravelFlagCleared();
    service.CurrentItemNearEnd();
  }));
  EXPECT_EQ(port->all, "TA=1\r\nTA=0 Rain on Slate\r\nSAE\r\n");
}

TEST_F(SerialOutputTest, WithoutSettingsItHasItsDefaults) {
  const auto fresh = std::make_shared<clsZEBSerialOutput>(t.environment);
  fresh->GetOutputInformation(7, 9);
  EXPECT_EQ(fresh->settings.CommPort, 1);
  EXPECT_EQ(fresh->settings.Settings, "9600,n,8,1");
  EXPECT_EQ(fresh->settings.simpleText, kDefaultSimpleTextFormat);
  EXPECT_TRUE(fresh->settings.alternatesWhenEmpty);
  EXPECT_EQ(fresh->settings.TravelActivateFormat, "TA=1{0D}{0A}");
  EXPECT_EQ(fresh->settings.characterSet, CharacterSet::kWindows1252);
}

TEST_F(SerialOutputTest, AnEncoderOnTheNetworkGetsTheSameBytes) {
  t.hive.WriteText(t.environment.settingsRoot, "CommPortDevice3", "tcp:encoder:4001");
  const auto remote = std::make_shared<NetworkSerialPort>(t.network);
  const auto start = [&] { ASSERT_TRUE(t.loop.RunTask([&] { output->StartOutput(remote); })); };
  start();
  EXPECT_NE(output->ProblemText().find("refused"), std::string::npos) << output->ProblemText();

  std::string got;
  std::unique_ptr<TcpConnection> accepted;
  const auto listener = t.network.MakeListener();
  listener->onConnection = [&](std::unique_ptr<TcpConnection> connection) {
    accepted = std::move(connection);
    accepted->onData = [&](std::string_view bytes) { got += bytes; };
  };
  ASSERT_TRUE(listener->Listen("", 4001));
  output->settings.append = "{0D}{0A}";
  Update(*output);  // opens it, and sends at once
  t.loop.RunPosted();
  EXPECT_EQ(got, "Rain on Slate\r\n");
  int lost = 0;
  output->onShownLost = [&] { ++lost; };
  accepted.reset();  // it was switched off and on
  t.loop.RunPosted();
  EXPECT_EQ(lost, 1);
  EXPECT_EQ(output->ProblemText(), "tcp:encoder:4001 closed the connection");
  EXPECT_TRUE(Update(*output));
  t.loop.RunPosted();
  EXPECT_EQ(got, "Rain on Slate\r\nRain on Slate\r\n");

  t.network.SetHost("encoder", SimulatedNetwork::HostBehaviour::kHangs);
  remote->Close();
  const MonotonicTime begin = t.loop.Monotonic();
  Update(*output);
  EXPECT_EQ(t.loop.Monotonic() - begin, 5s);
  EXPECT_EQ(output->ProblemText(), "no answer from tcp:encoder:4001");
  EXPECT_EQ(lost, 1);
  for (const char* bad : {"tcp:", "tcp:host", "tcp:host:0", "tcp:host:70000", "tcp::1", "tcp:h:1x"}) {
    t.hive.WriteText(t.environment.settingsRoot, "CommPortDevice3", bad);
    start();
    EXPECT_NE(output->ProblemText().find("is no device"), std::string::npos) << bad;
  }
}

// Two lines a second for a day: nothing piles up.
TEST_F(SerialOutputTest, ADayOfTwoLinesASecondLeavesNothingBehind) {
  DebugLog quiet{t.loop, t.files, t.person, "zebd", "/log", 0};
  quiet.Install();
  output->settings.alternates = "FILE:sched.txt|One";
  output->settings.alternatesWhenEmpty = false;
  t.files.Put("/data/sched.txt", "MoTu|0-23|Two\nbroken\n");
  port->byteTime = 1ms;
  Start();
  std::size_t sent = 0;
  const MonotonicTime end = t.loop.Monotonic() + 24h;
  ASSERT_TRUE(t.loop.RunTask(
      [&] {
        while (t.loop.Monotonic() < end) {
          output->PrepareOutput(Snapshot());
          output->UpdateOutput(Snapshot());
          EXPECT_EQ(port->OutBufferCount(), 0u);
          ++sent;
          port->all.clear();
          port->written.clear();
          t.loop.Wait(480ms);
        }
      },
      25h));
  EXPECT_GT(sent, 172800u);
  EXPECT_EQ(port->opened, 1);
  EXPECT_EQ(t.loop.TaskCount(), 0u);
  EXPECT_EQ(t.person.notes.size(), 1u);  // the broken line, once
}

TEST(SerialLineSettings, TakesWhatPortsCanDoAndNamesWhatIsWrong) {
  for (const char* parity : {"n", "e", "o", "m", "s", "N"})
    for (const char* data : {"5", "6", "7", "8"})
      for (const char* stop : {"1", "1.5", "2"})
        EXPECT_TRUE(ParseSerialLineSettings(std::string("115200, ") + parity + "," + data + "," + stop));
  const SerialLineSettings read = ParseSerialLineSettings("1200,E,7,2").Value();
  EXPECT_EQ(read.baud, 1200);
  EXPECT_EQ(read.parity, 'e');
  EXPECT_EQ(read.dataBits, 7);
  EXPECT_EQ(read.stopBitsTimesTwo, 4);
  for (const char* bad : {"", "9600", "9600,n,8", "9600,n,8,1,1", "0,n,8,1", "-5,n,8,1", "99999999999,n,8,1",
                          "9600,,8,1", "9600,nn,8,1", "9600,n,4,1", "9600,n,9,1", "9600,n,8,3", "x,n,8,1"})
    EXPECT_FALSE(ParseSerialLineSettings(bad)) << bad;
}

}  // namespace
}  // namespace zeb
