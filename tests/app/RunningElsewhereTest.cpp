// Settings that are edited beside the publisher that runs: two engines on one store, and the local socket
// between them.
#include <gtest/gtest.h>

#include "app/ControlRoom.h"
#include "app/RunningElsewhere.h"
#include "app/ServiceEditor.h"
#include "outputs/OutputTable.h"
#include "outputs/file/clsZEBFileOutput.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using Told = RunningElsewhere::Told;

class RunningElsewhereTest : public testing::Test {
 protected:
  RunningElsewhereTest() {
    edited.publishes = false;
    ports.hive.WriteNumber(edited.settingsRoot, "NumberServices", 3);
    for (int number = 1; number <= 3; ++number) {
      const std::string key = edited.ServiceKey(number), n = std::to_string(number);
      ports.hive.WriteText(key, "ServiceName", "Station " + n);
      ports.hive.WriteNumber(key, "TolvanTCPControlPort", number);
      ports.hive.WriteNumber(key, "TravelFlagActive", 1);
      ports.hive.WriteText(key + "\\File", "NumberOutputs", "1");
      ports.hive.WriteText(key + "\\File", "Output1.NumberFiles", "1");
      ports.hive.WriteText(key + "\\File", "Output1.SourceFileName1", "/data/template");
      ports.hive.WriteText(key + "\\File", "Output1.DestinationFileName1", "/data/page" + n);
    }
    ports.files.Put("/data/template", "<ZEB_NOW_ITEMNAME>");
    editor.removeElsewhere = [this](int number, std::function<void(const frmMain::Removed&)> done) {
      link.RemoveService(number, std::move(done));
    };
  }
  ~RunningElsewhereTest() override { room.reset(); }

  void Publish() {
    ASSERT_TRUE(publisher.Load());
    room = std::make_unique<ControlRoom>(
        ports.environment, ports.network, nullptr, publisher, journal,
        []() -> Result<std::unique_ptr<HistoryReader>> { return Failure{"none"}; },
        [](WallTime) { return 0s; });
    room->Open();
    ports.loop.RunFor(3s);
  }
  std::string NameOf(const frmMain& main, int number) const {
    return main.Window(number)->service().settings.ServiceName;
  }

  TestEnvironment ports;
  JournalTail journal{ports.person, ports.loop};
  frmMain publisher{ports.environment, MakeOutputFactory(ports.environment), {}};
  std::unique_ptr<ControlRoom> room;

  RecordingOperator asked;
  Environment edited{ports.loop, ports.hive,  ports.files,          ports.network,
                     asked,      ports.carts, kSimulatedDataFolder, ports.environment.settingsRoot};
  std::vector<Told> told;
  std::string reason;
  RunningElsewhere link{ports.loop, ports.network, kSimulatedDataFolder,
                        [this](Told what, const std::string& why) {
                          told.push_back(what);
                          reason = why;
                        }};
  frmMain editor{edited, MakeOutputFactory(edited), {}};
};

TEST_F(RunningElsewhereTest, NothingRunsWhereSettingsAreEdited) {
  ASSERT_TRUE(editor.Load());
  ports.loop.RunFor(1min);
  EXPECT_EQ(ports.network.ConnectLocal("/data/zeb.socket").connection, nullptr);
  for (int number = 1; number <= 3; ++number) {
    editor.Window(number)->ForceUpdate();
    editor.Window(number)->SetZEBInformation("SET_CURRENT_ITEM ITitle=a");
  }
  ports.loop.RunFor(1min);
  EXPECT_FALSE(ports.files.Exists("/data/page1"));
  const StationState state = editor.Window(1)->Board().State();
  EXPECT_TRUE(state.elsewhere);
  EXPECT_EQ(state.outputs.at(0).status, "runs elsewhere");
  EXPECT_TRUE(editor.Window(1)->Board().Troubles().empty());
  // The port is free for who publishes, and the travel flag that is stored is still that one's business.
  Publish();
  EXPECT_TRUE(publisher.Window(1)->Board().State().source.healthy);
  ports.hive.WriteNumber(edited.ServiceKey(1), "TravelFlagActive", 1);
  bool closed = false;
  editor.Quit([&] { closed = true; });
  ports.loop.RunFor(10s);
  EXPECT_TRUE(closed);
  EXPECT_EQ(ports.hive.ReadNumber(edited.ServiceKey(1), "TravelFlagActive", 0), 1);
}

TEST_F(RunningElsewhereTest, WhatIsStoredIsTakenByThePublisherAndWhatItHasOnAirStays) {
  Publish();
  ASSERT_TRUE(editor.Load());
  publisher.Window(2)->SetZEBInformation("SET_CURRENT_ITEM ITitle=Waterloo");
  ports.loop.RunFor(3s);
  ServiceEditor service(editor.Window(2));
  const OutputPtr draft = service.NewDraft(OutputType::kFile);
  clsFileParameters pair;
  pair.SetSourceFileName("/data/template");
  pair.SetDestinationFileName("/data/second");
  dynamic_cast<clsZEBFileOutput&>(*draft).AddUpdateFile(pair);
  ASSERT_TRUE(service.AddOutput(OutputType::kFile, *draft));
  ServiceSettings named = editor.Window(2)->service().settings;
  named.ServiceName = "Second FM";
  ASSERT_TRUE(service.ApplySettings(editor.Window(2)->service().settings, named));
  link.Stored();
  link.Stored();
  ports.loop.RunFor(5s);
  EXPECT_EQ(told, std::vector<Told>{Told::kTaken}) << "both in one";
  EXPECT_EQ(NameOf(publisher, 2), "Second FM");
  EXPECT_EQ(ports.files.Contents("/data/second"), "Waterloo");
  EXPECT_EQ(publisher.Window(2)->service().CurrentItem()->ItemName, "Waterloo");
}

TEST_F(RunningElsewhereTest, AServiceIsRemovedByWhoPublishesIt) {
  Publish();
  ASSERT_TRUE(editor.Load());
  publisher.Window(3)->SetZEBInformation("SET_CURRENT_ITEM ITitle=Waterloo");
  ports.loop.RunFor(3s);
  editor.RemoveService(2);
  EXPECT_EQ(asked.asked.size(), 1U);
  ports.loop.RunFor(5s);
  for (const frmMain* main : {&publisher, &editor}) {
    ASSERT_EQ(main->NumberServices(), 2);
    EXPECT_EQ(NameOf(*main, 2), "Station 3");
  }
  EXPECT_EQ(publisher.Window(2)->service().CurrentItem()->ItemName, "Waterloo");
}

TEST_F(RunningElsewhereTest, OnceNobodyRunsChangesAreStoredAllTheSame) {
  ASSERT_TRUE(editor.Load());
  link.Stored();
  ports.loop.RunFor(5s);
  EXPECT_EQ(told, std::vector<Told>{Told::kNobodyRuns});
  editor.RemoveService(1);
  ports.loop.RunFor(5s);
  ASSERT_EQ(editor.NumberServices(), 2);
  EXPECT_EQ(NameOf(editor, 1), "Station 2");
  EXPECT_EQ(ports.hive.ReadNumber(edited.settingsRoot, "NumberServices", 0), 2);
}

TEST_F(RunningElsewhereTest, APublisherThatHangsIsToldOfWithItsReasonAndAskedAgainForWhatIsStoredLater) {
  ASSERT_TRUE(editor.Load());
  std::vector<std::unique_ptr<TcpConnection>> silent;
  const auto listener = ports.network.MakeLocalListener();
  listener->onConnection = [&](std::unique_ptr<TcpConnection> peer) { silent.push_back(std::move(peer)); };
  ASSERT_TRUE(listener->Listen("/data/zeb.socket"));
  link.Stored();
  ports.loop.RunFor(1s);
  link.Stored();  // while the first is still waited for
  ports.loop.RunFor(40s);
  ASSERT_EQ(told.size(), 1U);
  EXPECT_EQ(told[0], Told::kFailed);
  EXPECT_EQ(reason, "the publisher does not answer: it hangs or is busy; it may still do what was asked");
  EXPECT_EQ(silent.size(), 2U);
}

}  // namespace
}  // namespace zeb
