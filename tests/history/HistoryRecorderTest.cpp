#include <gtest/gtest.h>

#include "history/HistoryRecord.h"
#include "history/HistoryRecorder.h"
#include "platform/simulated/ScriptedHistory.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using Trouble = HistoryOutcome::Trouble;

class HistoryRecorderTest : public testing::Test {
 protected:
  clsZEBItemInfo Item(const std::string& title) {
    clsZEBItemInfo item;
    item.Edit().ItemName = title;
    return item;
  }
  void Set(const std::string& title, int slot = kHistoryCurrent) {
    recorder->ItemSet(1, "Demo FM", slot, "control link, Studio 1", Item(title));
  }
  SnapshotPtr Snapshot(const std::string& title, int service = 1) {
    const auto snapshot = std::make_shared<ServiceSnapshot>();
    snapshot->moment = test.loop.Now();
    snapshot->serviceNumber = service;
    snapshot->ServiceName = "Demo FM";
    snapshot->currentItem = Item(title);
    snapshot->nextItems = {Item("Next"), clsZEBItemInfo()};
    snapshot->previousItems = {clsZEBItemInfo(), Item("Before")};
    snapshot->comingSoonItem = Item("Soon");
    return snapshot;
  }
  static HistoryShown File(const SnapshotPtr& snapshot, const std::string& text,
                           const std::string& problem = "") {
    HistoryShown shown;
    shown.snapshot = snapshot;
    shown.number = 2;
    shown.part = "/www/now.html";
    shown.text = text;
    shown.problem = problem;
    shown.source.templateText = std::make_shared<std::string>("<ZEB_NOW_ITEMNAME>");
    return shown;
  }
  std::size_t Rows() const {
    std::size_t rows = 0;
    for (const HistoryBatch& batch : store->batches)
      rows += batch.items.size() + batch.updates.size() + batch.publications.size();
    return rows;
  }
  bool Noted(const std::string& words) const {
    for (const std::string& line : test.person.notes)
      if (line.find(words) != std::string::npos) return true;
    return false;
  }

  TestEnvironment test;
  std::shared_ptr<ScriptedHistory> store = std::make_shared<ScriptedHistory>();
  std::unique_ptr<HistoryRecorder> recorder =
      std::make_unique<HistoryRecorder>(test.environment, store, HistoryLimits());
};

TEST_F(HistoryRecorderTest, WritesABatchOneSecondAfterItsFirstEntry) {
  Set("One");
  test.loop.RunFor(600ms);
  Set("Two", 3);
  test.loop.RunFor(399ms);
  EXPECT_EQ(store->writes, 0);
  test.loop.RunFor(1ms);
  ASSERT_EQ(store->batches.size(), 1u);
  const std::vector<HistoryItem>& items = store->batches[0].items;
  ASSERT_EQ(items.size(), 2u);
  EXPECT_EQ(items[0].serviceName, "Demo FM");
  EXPECT_EQ(items[0].source, "control link, Studio 1");
  EXPECT_EQ((*ReadItemRecord(items[0].record))->ItemName, "One");
  EXPECT_EQ(items[1].slot, 3);
  EXPECT_EQ(items[1].moment.utc - items[0].moment.utc, 600);
  EXPECT_EQ(items[1].moment.Local(), test.loop.Now() - 400ms);
  EXPECT_EQ(store->lastLimits, HistoryLimits());
  test.loop.RunFor(30s);
  EXPECT_EQ(store->writes, 1);
}

TEST_F(HistoryRecorderTest, WritesAFullBatchAtOnce) {
  for (std::size_t i = 1; i < HistoryRecorder::kBatch; ++i) Set(std::to_string(i));
  test.loop.RunPosted();
  EXPECT_EQ(store->writes, 0);
  Set("the last");
  test.loop.RunPosted();
  EXPECT_EQ(Rows(), HistoryRecorder::kBatch);
}

TEST_F(HistoryRecorderTest, KeepsAnUpdateOnceWithAllThatATemplateMayAskFor) {
  const SnapshotPtr snapshot = Snapshot("Song");
  const std::int64_t id = recorder->Updating(snapshot, UpdateCause::kInformation);
  EXPECT_NE(id, 0);
  test.loop.RunFor(10s);
  // The same items ten seconds later, and the same snapshot again.
  const auto again = std::make_shared<ServiceSnapshot>(*snapshot);
  again->moment += 10s;
  EXPECT_EQ(recorder->Updating(again, UpdateCause::kInterval), id);
  EXPECT_EQ(recorder->Updating(snapshot, UpdateCause::kRepair), id);
  // Another service, and another presenter.
  EXPECT_NE(recorder->Updating(Snapshot("Song", 2), UpdateCause::kInformation), id);
  const auto other = std::make_shared<ServiceSnapshot>(*snapshot);
  other->PresenterFullName = "Zoë";
  EXPECT_NE(recorder->Updating(other, UpdateCause::kInformation), id);
  EXPECT_EQ(recorder->Updating(snapshot, UpdateCause::kRepair), id);  // a delayed output
  test.loop.RunFor(1s);
  ASSERT_EQ(store->batches.size(), 2u);
  EXPECT_EQ(store->batches[1].updates.size(), 2u);
  ASSERT_EQ(store->batches[0].updates.size(), 1u);
  const HistoryUpdate& update = store->batches[0].updates[0];
  EXPECT_EQ(update.id, id);
  EXPECT_EQ(update.service, 1);
  std::vector<std::pair<int, std::string>> slots;
  for (const HistoryUpdate::Slot& slot : update.items)
    slots.emplace_back(slot.slot, (*ReadItemRecord(slot.record))->ItemName);
  EXPECT_EQ(slots, (std::vector<std::pair<int, std::string>>{
                       {0, "Song"}, {kHistoryComingSoon, "Soon"}, {1, "Next"}, {-2, "Before"}}));
}

TEST_F(HistoryRecorderTest, KeepsWhatAnOutputShowsUntilItIsSomethingElse) {
  const SnapshotPtr snapshot = Snapshot("Song");
  HistoryShown shown = File(snapshot, "Song by Ann");
  shown.latency = 1500us;
  recorder->Shown(shown);
  recorder->Shown(shown);                                   // the interval
  recorder->Shown(File(snapshot, "", "the disk is full"));  // fails
  recorder->Shown(File(snapshot, "", "the disk is full"));  // still
  recorder->Shown(shown);                                   // works again
  HistoryShown page = File(snapshot, "");
  page.part = "/www/other.html";
  page.page = zeb::Shown::Page{"/www/other.html", 3, "abc", std::string("the digest")};
  recorder->Shown(page);
  test.loop.RunFor(1s);
  ASSERT_EQ(store->batches.size(), 1u);
  const auto& rows = store->batches[0].publications;
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[0].output, "File2");
  EXPECT_EQ(rows[0].part, "/www/now.html");
  EXPECT_EQ(rows[0].text, "Song by Ann");
  EXPECT_EQ(rows[0].bytes, 11u);
  EXPECT_EQ(rows[0].latency, 1500us);
  EXPECT_EQ(rows[0].update, store->batches[0].updates.at(0).id);
  EXPECT_EQ(rows[0].updateMoment.Local(), snapshot->moment);
  EXPECT_EQ(rows[1].problem, "the disk is full");
  EXPECT_EQ(rows[2].problem, "");
  EXPECT_EQ(rows[3].digest, "the digest");
  EXPECT_EQ(rows[3].bytes, 3u);
  EXPECT_EQ(rows[3].text, "abc");
}

TEST_F(HistoryRecorderTest, BoundsTheTextsOfAPublication) {
  HistoryShown shown = File(Snapshot("Song"), std::string(100000, 'x'));
  shown.problem = std::string(5000, 'p').append("\nsecond line");
  shown.source.templateText = std::make_shared<std::string>(HistoryRecorder::kMostTemplateBytes + 1, 't');
  recorder->Shown(shown);
  test.loop.RunFor(1s);
  const HistoryPublication& row = store->batches.at(0).publications.at(0);
  EXPECT_EQ(row.text.size(), HistoryRecorder::kMostTextBytes);
  EXPECT_EQ(row.bytes, 100000u);
  EXPECT_EQ(row.problem.size(), 1024u);
  EXPECT_EQ(row.templateText, "");
}

TEST_F(HistoryRecorderTest, TriesAStoreThatFailsAgainAndTellsOnce) {
  store->always = {Trouble::kMayPass, "history file 'h' is locked by another program"};
  Set("One");
  test.loop.RunFor(1s);
  EXPECT_EQ(store->writes, 1);
  Set("Two");  // does not hurry it
  test.loop.RunFor(9999ms);
  EXPECT_EQ(store->writes, 1);
  test.loop.RunFor(1ms);
  EXPECT_EQ(store->writes, 2);
  test.loop.RunFor(30s);
  EXPECT_EQ(test.person.notes, std::vector<std::string>{
                                   "History: history file 'h' is locked by another program; publishing goes "
                                   "on, and it is tried again every 10 s"});
  store->always = {};
  test.loop.RunFor(10s);
  EXPECT_EQ(Rows(), 2u);  // nothing lost, in its order
  EXPECT_EQ((*ReadItemRecord(store->batches[0].items[0].record))->ItemName, "One");
  EXPECT_EQ(test.person.notes.back(), "History: is kept again");
  // Another reason is another line.
  store->script = {{Trouble::kMayPass, "disk full"}};
  Set("Three");
  test.loop.RunFor(1s);
  EXPECT_TRUE(Noted("disk full"));
  EXPECT_EQ(recorder->Waiting(), 1u);
}

TEST_F(HistoryRecorderTest, GivesUpTheOldestAndCountsThem) {
  store->always = {Trouble::kMayPass, "full"};
  const SnapshotPtr snapshot = Snapshot("Song");
  const std::int64_t first = recorder->Updating(snapshot, UpdateCause::kInformation);
  for (std::size_t i = 0; i < HistoryRecorder::kMostWaiting + 9; ++i) Set(std::to_string(i));
  test.loop.RunFor(20s);
  EXPECT_EQ(recorder->Waiting(), HistoryRecorder::kMostWaiting);
  // Its update was given up, so what is shown brings it along again.
  EXPECT_NE(recorder->Updating(snapshot, UpdateCause::kRepair), first);
  store->always = {};
  test.loop.RunFor(10s);
  EXPECT_EQ(recorder->Waiting(), 0u);
  EXPECT_EQ(Rows(), HistoryRecorder::kMostWaiting);
  EXPECT_TRUE(Noted("11 entries were given up, since they could not be written in time"));
  test.loop.RunFor(10min);
  EXPECT_EQ(test.person.notes.size(), 3u);  // fails, again, given up
}

TEST_F(HistoryRecorderTest, BoundsTheBytesThatWait) {
  store->always = {Trouble::kMayPass, "full"};
  HistoryShown shown = File(Snapshot("Song"), "");
  for (int i = 0; i < 1000; ++i) {
    shown.source.templateText = std::make_shared<std::string>(std::string(60000, 't') + std::to_string(i));
    recorder->Shown(shown);
  }
  EXPECT_LE(recorder->Waiting(), 2 * (9 * 1024 * 1024 / (60000 + 4096) + 1));  // with a batch under way
  EXPECT_GT(recorder->Waiting(), 100u);
}

TEST_F(HistoryRecorderTest, SetsADamagedStoreAsideAndWritesToANewOne) {
  store->script = {{Trouble::kDamaged, "history file 'h' is damaged (malformed)"}};
  Set("One");
  test.loop.RunFor(1s);
  EXPECT_EQ(store->setAside, 1);
  EXPECT_EQ(Rows(), 1u);
  EXPECT_EQ(
      test.person.notes,
      std::vector<std::string>{
          "History: history file 'h' is damaged (malformed); it is set aside as 'history.aside' and a new "
          "one begun"});
  // One that is damaged again at once is not set aside for ever.
  store->always = {Trouble::kDamaged, "still"};
  Set("Two");
  test.loop.RunFor(60s);
  EXPECT_EQ(store->setAside, 2);
  EXPECT_EQ(recorder->Waiting(), 1u);
}

TEST_F(HistoryRecorderTest, GoesOnWhenADamagedStoreCannotBeMoved) {
  store->always = {Trouble::kDamaged, "damaged"};
  store->setAsideFails = "cannot set aside: Permission denied";
  Set("One");
  test.loop.RunFor(5s);
  EXPECT_TRUE(Noted("Permission denied"));
  EXPECT_EQ(recorder->Waiting(), 1u);
  store->always = {};
  test.loop.RunFor(10s);
  EXPECT_EQ(Rows(), 1u);
}

TEST_F(HistoryRecorderTest, LeavesAHangingDiskToItself) {
  bool hangs = true;
  store->whileWriting = [&] { test.loop.WaitUntil([&] { return !hangs; }, 24h); };
  Set("One");
  test.loop.RunFor(1s);
  Set("Two");
  test.loop.RunFor(29999ms);
  EXPECT_EQ(test.person.notes.size(), 0u);
  test.loop.RunFor(1ms);
  EXPECT_EQ(test.person.notes,
            std::vector<std::string>{"History: the disk of the history file does not answer"});
  test.loop.RunFor(1h);
  EXPECT_EQ(store->writes, 0);
  EXPECT_EQ(recorder->Waiting(), 2u);
  hangs = false;
  test.loop.RunFor(1s);
  EXPECT_EQ(Rows(), 2u);  // the first is not written twice
  EXPECT_EQ(recorder->Waiting(), 0u);
  EXPECT_EQ(test.person.notes.back(), "History: is kept again");
}

TEST_F(HistoryRecorderTest, WritesWhatAHangingDiskRefusedInTheEnd) {
  bool hangs = true;
  store->whileWriting = [&] { test.loop.WaitUntil([&] { return !hangs; }, 24h); };
  store->script = {{Trouble::kMayPass, "Input/output error"}};
  Set("One");
  test.loop.RunFor(1min);
  hangs = false;
  test.loop.RunFor(1s);
  EXPECT_EQ(Rows(), 1u);
  EXPECT_EQ(store->writes, 2);
}

TEST_F(HistoryRecorderTest, CleansUpInPiecesAMinuteAfterTheStartAndEachHour) {
  store->piecesToCleanUp = 2;
  test.loop.RunFor(59999ms);
  EXPECT_EQ(store->cleanUps.size(), 0u);
  test.loop.RunFor(1ms);
  ASSERT_EQ(store->cleanUps.size(), 1u);
  EXPECT_EQ(store->cleanUps[0], HistoryMoment(test.loop.Now(), test.loop.UtcOffset()).utc);
  test.loop.RunFor(99ms);
  EXPECT_EQ(store->cleanUps.size(), 1u);
  test.loop.RunFor(1s);
  EXPECT_EQ(store->cleanUps.size(), 3u);
  test.loop.RunFor(1h);
  EXPECT_EQ(store->cleanUps.size(), 4u);
  // What is told between two pieces is written between them.
  store->piecesToCleanUp = 1000;
  test.loop.RunFor(59min);
  Set("One");
  EXPECT_LT(store->cleanUps.size(), 1000u);
  test.loop.RunFor(1s);
  EXPECT_EQ(Rows(), 1u);
}

TEST_F(HistoryRecorderTest, WritesTheRestWhenItCloses) {
  Set("One");
  EXPECT_TRUE(test.loop.RunTask([this] { recorder->Close(); }));
  EXPECT_EQ(Rows(), 1u);
  EXPECT_EQ(store->closed, 1);
  Set("Two");
  test.loop.RunFor(2h);
  EXPECT_EQ(Rows(), 1u);
  EXPECT_TRUE(store->cleanUps.empty());
  EXPECT_TRUE(test.person.notes.empty());
}

TEST_F(HistoryRecorderTest, ClosesWithinTwoSecondsWhileTheDiskHangs) {
  store->whileWriting = [&] { test.loop.Wait(24h); };
  Set("One");
  const MonotonicTime before = test.loop.Monotonic();
  EXPECT_TRUE(test.loop.RunTask([this] { recorder->Close(); }));
  EXPECT_EQ(test.loop.Monotonic() - before, 2s);
  EXPECT_TRUE(Noted("at the end 1 entry could not be written"));
  recorder.reset();
  test.loop.RunFor(25h);
}

TEST_F(HistoryRecorderTest, CanGoAtAnyTime) {
  test.loop.SetBlockingTime(3s);
  Set("One");
  test.loop.RunFor(2s);
  recorder.reset();
  test.loop.RunFor(1min);
  EXPECT_EQ(Rows(), 1u);
}

TEST_F(HistoryRecorderTest, KeepsNothingWhenItIsTurnedOff) {
  const std::string& root = test.environment.settingsRoot;
  EXPECT_EQ(ReadHistoryLimits(test.hive, root), HistoryLimits());
  struct Case {
    int days, megabytes;
    std::optional<HistoryLimits> limits;
  };
  for (const Case& c :
       {Case{0, 200, std::nullopt}, Case{30, 0, std::nullopt}, Case{-5, 9, std::nullopt},
        Case{7, 50, HistoryLimits{7, 50}}, Case{99999, 999999, HistoryLimits{3650, 100000}}}) {
    test.hive.WriteNumber(root, "HistoryDays", c.days);
    test.hive.WriteNumber(root, "HistoryMegabytes", c.megabytes);
    EXPECT_EQ(ReadHistoryLimits(test.hive, root), c.limits) << c.days << " " << c.megabytes;
  }
  recorder->SetLimits(std::nullopt);
  Set("One");
  recorder->Shown(File(Snapshot("Song"), "text"));
  EXPECT_EQ(recorder->Updating(Snapshot("Song"), UpdateCause::kInformation), 0);
  test.loop.RunFor(2h);
  EXPECT_EQ(store->writes, 0);
  EXPECT_TRUE(store->cleanUps.empty());
  recorder->SetLimits(HistoryLimits{1, 20});
  Set("Two");
  test.loop.RunFor(1s);
  EXPECT_EQ(Rows(), 1u);
  EXPECT_EQ(store->lastLimits, (HistoryLimits{1, 20}));
}

}  // namespace
}  // namespace zeb
