// Encoders by automation, against a program that offers them (server/EncoderServer.cpp).
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/clsZEBService.h"
#include "outputs/encoder/clsZEBEncoderOutput.h"
#include "platform/WorkLane.h"
#include "platform/simulated/TestEnvironment.h"
#include "platform/windows/PutInPlace.h"
#include "platform/windows/WinEncoderAutomation.h"
#include "platform/windows/WinHandle.h"
#include "tests/qt/QtFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

std::filesystem::path Server(const char* ending = ".exe") {
  std::wstring path(1024, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), 1024));
  return std::filesystem::path(path).parent_path() / (std::string("EncoderServer") + ending);
}

bool RunServer(const std::wstring& option) {
  STARTUPINFOW how{};
  how.cb = sizeof how;
  PROCESS_INFORMATION made{};
  std::wstring line = L"\"" + Server().wstring() + L"\" " + option;
  if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &how, &made))
    return false;
  const WinHandle process(made.hProcess), thread(made.hThread);
  DWORD code = 1;
  return WaitForSingleObject(process.Get(), 30'000) == WAIT_OBJECT_0 &&
         GetExitCodeProcess(process.Get(), &code) != 0 && code == 0;
}

class WinEncoderTest : public QtFixture {
 protected:
  // Test programs that run at the same time share the server's names and files.
  WinEncoderTest() : turn_(CreateMutexW(nullptr, FALSE, L"zeb-encoder-test")) {
    WaitForSingleObject(turn_.Get(), 60'000);
    EndServer();
    std::filesystem::remove(Server(".calls"));
    Order("");
  }
  ~WinEncoderTest() override {
    Order("");
    EndServer();
    RunServer(L"--unregister");
    ReleaseMutex(turn_.Get());
  }
  void SetUp() override { ASSERT_TRUE(RunServer(L"--register")); }

  static void Order(const std::string& lines) {
    // In one step, for the server reads it at any moment.
    const auto fresh = Server(".fresh");
    std::ofstream(fresh) << lines;
    EXPECT_TRUE(PutInPlace(fresh, Server(".orders")));
  }
  static std::vector<std::string> Calls() {
    std::ifstream file(Server(".calls"));
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }
  static void EndServer() {
    DWORD id = 0;
    std::ifstream(Server(".pid")) >> id;
    std::filesystem::remove(Server(".pid"));
    if (id == 0) return;
    const WinHandle process(OpenProcess(SYNCHRONIZE, FALSE, id));
    const WinHandle end(OpenEventW(EVENT_MODIFY_STATE, FALSE, L"zeb-encoder-server-end"));
    if (!process.IsOpen() || !end.IsOpen()) return;
    SetEvent(end.Get());
    WaitForSingleObject(process.Get(), 10'000);
  }

  // For some moments the system may send who asks for an encoder to a server that has gone.
  template <class Create>
  auto Made(const Create& create) {
    const MonotonicTime end = loop.Monotonic() + 5s;
    for (;;) {
      auto made = create();
      if (made || loop.Monotonic() > end) return made;
    }
  }
  auto MadeProducer() {
    return Made([this] { return automation.CreateRealProducer(); });
  }
  auto MadeAsf() {
    return Made([this] { return automation.CreateAsfEncoder(); });
  }
  auto MadeAgent(const std::string& computer) {
    return Made([&] { return automation.CreateEncoderAgent(computer); });
  }

  WinEncoderAutomation automation;

 private:
  WinHandle turn_;
};

TEST_F(WinEncoderTest, EachKindIsAskedAndToldByItsMembers) {
  auto producer = MadeProducer();
  ASSERT_TRUE(producer) << producer.Reason();
  const Result<bool> encodes = producer.Value()->IsEncoding();
  ASSERT_TRUE(encodes) << encodes.Reason();
  EXPECT_TRUE(encodes.Value());
  EXPECT_TRUE(producer.Value()->SendRealMediaEvent(2, "Zo\xC3\xAB \xE2\x82\xAC"));
  auto asf = MadeAsf();
  ASSERT_TRUE(asf) << asf.Reason();
  EXPECT_TRUE(asf.Value()->LoadASD("C:\\a b\\s.asd"));
  Order("running 0");
  const Result<bool> started = asf.Value()->Started();
  ASSERT_TRUE(started) << started.Reason();
  EXPECT_FALSE(started.Value());
  EXPECT_TRUE(asf.Value()->SendScript("TEXT", ""));
  EXPECT_EQ(Calls(), (std::vector<std::string>{"isEncoding", "SendRealMediaEvent 2 Zo\xC3\xAB \xE2\x82\xAC",
                                               "LoadASD C:\\a b\\s.asd", "Started", "SendScript TEXT "}));
}

TEST_F(WinEncoderTest, AnAgentListsAndHandsOutItsEncoders) {
  const std::vector<std::string> names = {"Other", "STATION \xC3\x89"};
  for (const char* list : {"", "list array", "list counted"}) {
    Order(list);
    auto agent = MadeAgent("");
    ASSERT_TRUE(agent) << agent.Reason();
    const auto given = agent.Value()->EncoderNames();
    ASSERT_TRUE(given) << list << ": " << given.Reason();
    EXPECT_EQ(given.Value(), names) << list;
  }
  auto agent = MadeAgent("localhost");
  ASSERT_TRUE(agent) << agent.Reason();
  auto encoder = agent.Value()->Encoder(names[1]);
  ASSERT_TRUE(encoder) << encoder.Reason();
  agent.Value().reset();  // the encoder goes on without it
  Order("state 3");
  const Result<std::int32_t> state = encoder.Value()->RunState();
  ASSERT_TRUE(state) << state.Reason();
  EXPECT_EQ(state.Value(), 3);
  EXPECT_TRUE(encoder.Value()->SendScript(0, "TITLE", "B"));
  EXPECT_EQ(Calls().back(), "SendScript 0 TITLE B");
}

TEST_F(WinEncoderTest, WhatFailsIsNamedInOneLine) {
  auto producer = MadeProducer();
  ASSERT_TRUE(producer) << producer.Reason();
  RealProducerEncoder& encoder = *producer.Value();
  Order("fail SendRealMediaEvent The licence\thas expired");
  EXPECT_EQ(encoder.SendRealMediaEvent(2, "x").Reason(),
            "RealProducerControl.ProducerControl: SendRealMediaEvent failed: The licence has expired");
  Order("fail SendRealMediaEvent");  // with a number and no words
  const std::string refused = encoder.SendRealMediaEvent(2, "x").Reason();
  EXPECT_EQ(refused.find("RealProducerControl.ProducerControl: SendRealMediaEvent failed: Access"), 0u)
      << refused;
  Order("fail isEncoding not now");
  EXPECT_EQ(encoder.IsEncoding().Reason(), "RealProducerControl.ProducerControl: isEncoding failed: not now");
  auto agent = MadeAgent("");
  ASSERT_TRUE(agent) << agent.Reason();
  EXPECT_NE(agent.Value()->Encoder("unknown").Reason().find("WMEncAgt.WMEncoderAgent: Encoder failed: "),
            std::string::npos);
  ASSERT_TRUE(RunServer(L"--unregister"));
  EXPECT_EQ(automation.CreateAsfEncoder().Reason(), "Asf.RealTimeEncoder is not installed on this computer");
}

// The loop goes on, another encoder answers, and the call that was given up comes back.
TEST_F(WinEncoderTest, ACallThatHangsHoldsUpNobody) {
  auto hanging = MadeProducer();
  auto other = MadeAsf();
  ASSERT_TRUE(hanging) << hanging.Reason();
  ASSERT_TRUE(other) << other.Reason();
  const std::shared_ptr<RealProducerEncoder> encoder = std::move(hanging.Value());
  const std::shared_ptr<AsfEncoder> second = std::move(other.Value());
  Order("hang isEncoding");
  int ticks = 0;
  const Timer ticking = loop.Every(10ms, [&] { ++ticks; });
  WorkLane lane(loop), secondLane(loop);
  bool gaveUp = false, answered = false, back = false;
  loop.Start("hanging", [&] {
    gaveUp = !lane.Run([encoder] { return encoder->IsEncoding(); }, 500ms);
    lane.WhenBack([&] { back = true; });
  });
  loop.Start("other", [&] {
    const auto sent = secondLane.Run([second] { return second->SendScript("TEXT", "B"); }, 20s);
    answered = sent && sent->Ok();
  });
  EXPECT_TRUE(Until([&] { return answered; }));
  EXPECT_FALSE(gaveUp);
  EXPECT_TRUE(Until([&] { return gaveUp; }));
  EXPECT_GE(ticks, 10);
  EXPECT_TRUE(lane.Hangs());
  Order("");
  EXPECT_TRUE(Until([&] { return back; }));
  const Result<bool> encodes = encoder->IsEncoding();
  EXPECT_TRUE(encodes) << encodes.Reason();
}

TEST_F(WinEncoderTest, LettingGoOfWhatHangsDoesNotWait) {
  auto made = MadeProducer();
  ASSERT_TRUE(made) << made.Reason();
  std::shared_ptr<RealProducerEncoder> encoder = std::move(made.Value());
  Order("hang isEncoding");
  bool gaveUp = false;
  {
    WorkLane lane(loop);
    loop.Start("hanging", [&] {
      gaveUp = !lane.Run([held = std::weak_ptr(encoder)] { return held.lock()->IsEncoding(); }, 200ms);
    });
    ASSERT_TRUE(Until([&] { return gaveUp; }));
  }
  const MonotonicTime begin = loop.Monotonic();
  encoder.reset();
  EXPECT_LT(loop.Monotonic() - begin, 1s);
}

TEST_F(WinEncoderTest, ADeadServerIsNamedAndAnotherTakesItsPlace) {
  auto made = MadeProducer();
  ASSERT_TRUE(made) << made.Reason();
  EndServer();
  const Outcome sent = made.Value()->SendRealMediaEvent(2, "x");
  ASSERT_FALSE(sent);
  EXPECT_EQ(sent.Reason().find("RealProducerControl.ProducerControl: SendRealMediaEvent failed: "), 0u)
      << sent.Reason();
  EXPECT_EQ(sent.Reason().find('\n'), std::string::npos);
  auto again = MadeProducer();
  ASSERT_TRUE(again) << again.Reason();
  EXPECT_TRUE(again.Value()->SendRealMediaEvent(2, "y"));
  Order("die isEncoding");  // in the middle of a call
  EXPECT_FALSE(again.Value()->IsEncoding());
}

// The whole way: the output on the real loop and the real encoder.
TEST_F(WinEncoderTest, AnOutputSendsItsTextsAndOutlivesItsEncoder) {
  TestEnvironment t;
  ServiceEvents events;
  clsZEBService service{t.environment, nullptr, events};
  Environment environment{loop, t.hive, t.files, t.network, t.person, t.carts, "", ""};
  environment.encoders = &automation;
  clsZEBEncoderOutput output(environment);
  output.settings.EncoderType = kWindowsMediaEncoder7;
  output.settings.WME7StreamIDName = "station \xC3\xA9";
  output.settings.SimpleTextFormat = "TITLE:B";
  const auto inTask = [&](const std::function<void()>& work) {
    bool done = false;
    loop.Start("test", [&] {
      work();
      done = true;
    });
    return Until([&] { return done; }, 60s);
  };
  const auto update = [&] { output.UpdateOutput(service.TakeSnapshot()); };
  ASSERT_TRUE(MadeAgent(""));
  ASSERT_TRUE(inTask([&] { output.StartOutput(nullptr); }));
  EXPECT_EQ(output.ProblemText(), "");
  EXPECT_EQ(output.Status(), kStatusOK);
  ASSERT_TRUE(inTask(update));
  EXPECT_EQ(Calls().back(), "SendScript 0 TITLE B");
  EndServer();
  std::filesystem::remove(Server(".calls"));
  ASSERT_TRUE(MadeAgent(""));
  ASSERT_TRUE(inTask(update));
  EXPECT_EQ(output.ProblemText(), "");
  EXPECT_EQ(Calls().back(), "SendScript 0 TITLE B");
  EndServer();
  bool told = false;
  output.onShownLost = [&] { told = true; };
  EXPECT_TRUE(Until([&] { return told; }));
  EXPECT_EQ(output.Status(), kStatusError);
  EXPECT_NE(output.ProblemText(), "");
  output.StopOutput();
}

}  // namespace
}  // namespace zeb
