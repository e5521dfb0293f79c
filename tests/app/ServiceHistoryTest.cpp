// What the windows tell the history, with real outputs on simulated ports, from the message to the batch.
#include <gtest/gtest.h>

#include "app/frmMain.h"
#include "history/HistoryRecord.h"
#include "outputs/OutputTable.h"
#include "outputs/file/clsFileParameters.h"
#include "platform/simulated/ScriptedHistory.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

const std::string kRoot = "Software\\Hexmoor\\ZEB v3\\Profiles\\Profile1";

class ServiceHistoryTest : public testing::Test {
 protected:
  ServiceHistoryTest() {
    world.environment.settingsRoot.clear();
    world.hive.WriteNumber(kRoot, "NumberServices", 1);
    world.hive.WriteText(kRoot + "\\Service1", "ServiceName", "Demo FM");
    world.hive.WriteNumber(kRoot + "\\Service1", "InstantUpdate", 1);
    world.hive.WriteNumber(kRoot + "\\Service1", "TolvanTCPControlPort", 1);
    EXPECT_TRUE(world.files.CreateFolders("/w"));
    world.files.Put("/t", "<ZEB_NOW_ITEMNAME>");
    File("NumberOutputs", "1");
    File("Output1.NumberFiles", "2");
    Pair(1, "/w/all.txt");
    Pair(2, "/w/songs.txt");
    File("Output1.UseUpdateRules2", "1");
    File("Output1.UpdateRulesFlags2", std::to_string(clsFileParameters::kSong));
  }
  ~ServiceHistoryTest() override {
    if (!main) return;
    bool ended = false;
    main->Quit([&ended] { ended = true; });
    EXPECT_TRUE(world.loop.RunUntil([&ended] { return ended; }, 1min));
  }
  void File(const std::string& name, const std::string& value) {
    world.hive.WriteText(kRoot + "\\Service1\\File", name, value);
  }
  void Pair(int number, const std::string& destination) {
    File("Output1.SourceFileName" + std::to_string(number), "/t");
    File("Output1.DestinationFileName" + std::to_string(number), destination);
    File("Output1.AddNoCache" + std::to_string(number), "0");
  }
  void Start() {
    main = std::make_unique<frmMain>(world.environment, MakeOutputFactory(world.environment),
                                     StartUpOptions(), store);
    ASSERT_TRUE(main->Load().Ok());
    world.loop.RunFor(100ms);
  }
  void Say(const std::string& line) {
    main->Window(1)->SetZEBInformation(line);
    world.loop.RunFor(100ms);
  }
  // What the store was given since the last call, in one line each.
  Lines Written() {
    world.loop.RunFor(2s);
    Lines lines;
    for (const HistoryBatch& batch : store->batches) {
      for (const HistoryItem& item : batch.items)
        lines.push_back("item " + std::to_string(item.slot) + " " + item.serviceName + " " +
                        (*ReadItemRecord(item.record))->ItemName + " from " + item.source);
      for (const HistoryUpdate& update : batch.updates) {
        ids.push_back(update.id);
        lines.push_back("update of " + std::to_string(update.items.size()));
      }
      for (const HistoryPublication& row : batch.publications)
        lines.push_back(row.output + " " + row.part + " '" + row.text + "' " + std::to_string(row.bytes) +
                        " " + row.templateText + (row.problem.empty() ? "" : " FAILED " + row.problem) +
                        (row.update == ids.back() ? "" : " of an older update"));
    }
    store->batches.clear();
    return lines;
  }

  TestEnvironment world;
  std::shared_ptr<ScriptedHistory> store = std::make_shared<ScriptedHistory>();
  std::unique_ptr<frmMain> main;
  std::vector<std::int64_t> ids;
};

TEST_F(ServiceHistoryTest, TellsItemsUpdatesAndEachPageThatIsPublished) {
  Start();
  EXPECT_EQ(Written(), Lines{});
  Say("SET_NEXT_ITEM IType=7 ITitle=Later");
  Say("SET_CURRENT_ITEM IType=7 ITitle=First");
  EXPECT_EQ(Written(), (Lines{"item 1 Demo FM Later from manual entry",
                              "item 0 Demo FM First from manual entry", "update of 1", "update of 2",
                              "File1 /w/all.txt '' 0 <ZEB_NOW_ITEMNAME> of an older update",
                              "File1 /w/songs.txt '' 0 <ZEB_NOW_ITEMNAME> of an older update",
                              "File1 /w/all.txt 'First' 5 <ZEB_NOW_ITEMNAME>",
                              "File1 /w/songs.txt 'First' 5 <ZEB_NOW_ITEMNAME>"}));
  // The same once more is nothing new.
  Say("SET_CURRENT_ITEM IType=7 ITitle=First");
  EXPECT_EQ(Written(), Lines{});
  // Songs only, says the second pair.
  Say("SET_CURRENT_ITEM IType=4 ITitle=Spot");
  EXPECT_EQ(Written(), (Lines{"item 0 Demo FM Spot from manual entry", "update of 3",
                              "File1 /w/all.txt 'Spot' 4 <ZEB_NOW_ITEMNAME>"}));
}

TEST_F(ServiceHistoryTest, TellsWhatFailsAndThatItWorksAgain) {
  Pair(1, "/missing/all.txt");
  Start();
  Say("SET_CURRENT_ITEM IType=7 ITitle=First");
  const Lines failing = Written();
  ASSERT_EQ(failing.size(), 4u);
  EXPECT_EQ(failing[2], "File1 /w/songs.txt 'First' 5 <ZEB_NOW_ITEMNAME>");
  EXPECT_EQ(failing[3].find("File1 /missing/all.txt '' 0  FAILED "), 0u) << failing[3];
  world.loop.RunFor(10s);
  EXPECT_EQ(Written(), Lines{});  // it is tried again, and fails in the same way
  ASSERT_TRUE(world.files.CreateFolders("/missing"));
  world.loop.RunFor(1min);
  EXPECT_EQ(Written(), Lines{"File1 /missing/all.txt 'First' 5 <ZEB_NOW_ITEMNAME>"});
}

TEST_F(ServiceHistoryTest, FollowsItsSettingsAtAReload) {
  world.hive.WriteNumber(kRoot, "HistoryDays", 0);
  Start();
  Say("SET_CURRENT_ITEM IType=7 ITitle=First");
  EXPECT_EQ(Written(), Lines{});
  world.hive.WriteNumber(kRoot, "HistoryDays", 7);
  world.hive.WriteNumber(kRoot, "HistoryMegabytes", 50);
  main->Reload();
  // The second page, for songs only, was put out before.
  Say("SET_CURRENT_ITEM IType=4 ITitle=Spot");
  EXPECT_EQ(Written(), (Lines{"item 0 Demo FM Spot from manual entry", "update of 2",
                              "File1 /w/all.txt 'Spot' 4 <ZEB_NOW_ITEMNAME>"}));
  Say("SET_CURRENT_ITEM IType=7 ITitle=Second");
  EXPECT_EQ(Written().size(), 4u);
  EXPECT_EQ(store->lastLimits, (HistoryLimits{7, 50}));
}

TEST_F(ServiceHistoryTest, WritesTheRestBeforeItEnds) {
  Start();
  Say("SET_CURRENT_ITEM IType=7 ITitle=Last");
  EXPECT_EQ(store->writes, 0);
  bool ended = false;
  main->Quit([&ended] { ended = true; });
  EXPECT_TRUE(world.loop.RunUntil([&ended] { return ended; }, 5s));
  ASSERT_EQ(store->writes, 1);
  EXPECT_EQ(store->batches[0].items.size(), 1u);
  EXPECT_EQ(store->closed, 1);
  main.reset();
}

// Whatever the store does, pages are published as without one.
TEST_F(ServiceHistoryTest, AStoreThatHangsHoldsNothingUp) {
  store->whileWriting = [this] { world.loop.Wait(1h); };
  Start();
  Say("SET_CURRENT_ITEM IType=7 ITitle=First");
  world.loop.RunFor(1min);
  Say("SET_CURRENT_ITEM IType=7 ITitle=Second");
  EXPECT_EQ(world.files.Read("/w/all.txt", 100).Value(), "Second");
  bool ended = false;
  main->Quit([&ended] { ended = true; });
  EXPECT_TRUE(world.loop.RunUntil([&ended] { return ended; }, 5s));
  main.reset();
}

}  // namespace
}  // namespace zeb
