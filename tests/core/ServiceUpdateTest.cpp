#include "diagnostics/hxGeneral.h"
#include "tests/core/ServiceFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using ServiceUpdateTest = ServiceTest;

constexpr std::int32_t kFileCode = 3;

TEST_F(ServiceUpdateTest, PreparesAllThenUpdatesAllThenFinishesAll) {
  writeEvents_ = true;
  Add(OutputType::kWeb, "w");
  Add(OutputType::kFile, "f1");
  Add(OutputType::kFile, "f2");
  Start([this] { service_.UpdateOutputs(true); });
  EXPECT_EQ(Take(), Lines({"0 update started",
                           "0 starting 1 of type 3",
                           "0 prepare f1",
                           "0 starting 2 of type 3",
                           "0 prepare f2",
                           "0 updating 1 of type 3",
                           "0 update f1",
                           "0 updated 1 of type 3",
                           "0 updating 2 of type 3",
                           "0 update f2",
                           "0 updated 2 of type 3",
                           "0 finish f1",
                           "0 finished 1 of type 3",
                           "0 finish f2",
                           "0 finished 2 of type 3",
                           "0 update finished",
                           "0 update started",
                           "0 starting 1 of type 15",
                           "0 prepare w",
                           "0 updating 1 of type 15",
                           "0 update w",
                           "0 updated 1 of type 15",
                           "0 finish w",
                           "0 finished 1 of type 15",
                           "0 update finished"}));
}

TEST_F(ServiceUpdateTest, TypesRunInAscendingCode) {
  for (const OutputTypeInfo& info : kOutputTypes) Add(info.type, std::string(info.name));
  Start([this] { service_.UpdateOutputs(true); });
  Lines updates;
  for (const std::string& line : Take())
    if (line.rfind("0 update ", 0) == 0) updates.push_back(line.substr(9));
  EXPECT_EQ(updates, Lines({"DAB", "Encoder", "File", "RDS", "Serial", "HTTP", "Web"}));
}

TEST_F(ServiceUpdateTest, CodesOutsideTheRangeDoNothing) {
  writeEvents_ = true;
  for (const std::int32_t code : {-1, 0, 16}) Start([this, code] { service_.UpdateOutputType(code); });
  EXPECT_EQ(Take(), Lines());
  Start([this] { service_.UpdateOutputType(6); });  // a code that no outputs have
  EXPECT_EQ(Take(), Lines({"0 update started", "0 update finished"}));
}

TEST_F(ServiceUpdateTest, APeriodicPassWaitsForMoreThanTheInterval) {
  Add(OutputType::kFile, "f");
  const auto pass = [this] {
    const bool due = service_.PeriodicUpdateDue();
    Start([this] { service_.UpdateOutputs(false); });
    EXPECT_EQ(due, !Take().empty());
    return due;
  };
  EXPECT_FALSE(pass());  // no interval
  service_.SetOutputUpdateInterval(kFileCode, -1);
  EXPECT_FALSE(pass());
  service_.SetOutputUpdateInterval(kFileCode, 10);
  EXPECT_TRUE(pass());  // never updated
  ports_.loop.RunFor(10s);
  EXPECT_FALSE(pass());
  ports_.loop.SetWallClock(ports_.loop.Now() + std::chrono::hours(1));
  EXPECT_FALSE(pass());
  ports_.loop.RunFor(1ms);
  EXPECT_TRUE(pass());
  ports_.loop.RunFor(9s);
  Start([this] { service_.UpdateOutputs(true); });  // starts the interval anew
  Take();
  ports_.loop.RunFor(10s);
  EXPECT_FALSE(pass());
  ports_.loop.RunFor(1ms);
  service_.RemoveOutput(OutputType::kFile, 1);
  EXPECT_FALSE(pass());
}

TEST_F(ServiceUpdateTest, FullUpdatesCountRoundTheServersHistory) {
  service_.settings.NumberUpdatesOnServer = 25;
  service_.settings.LastUpdateOnServerIndex = 24;
  service_.UpdateOutputs(true);
  EXPECT_EQ(service_.settings.LastUpdateOnServerIndex, 25);
  service_.UpdateOutputs(false);
  EXPECT_EQ(service_.settings.LastUpdateOnServerIndex, 25);
  service_.UpdateOutputs(true);
  EXPECT_EQ(service_.settings.LastUpdateOnServerIndex, 1);
}

TEST_F(ServiceUpdateTest, AnOutputThatThrowsReadsErrorAndStopsNoOther) {
  for (const char* operation : {"prepare", "update", "finish"}) {
    service_.RemoveOutput(OutputType::kFile, 1);
    service_.RemoveOutput(OutputType::kFile, 1);
    const auto failing = Add(OutputType::kFile, "bad");
    failing->SetStatus(kStatusOK);
    failing->during[operation] = [] { throw std::runtime_error("broken"); };
    Add(OutputType::kFile, "good");
    Update(OutputType::kFile);
    EXPECT_EQ(Take(), Lines({"0 prepare bad", "0 prepare good", "0 update bad", "0 update good",
                             "0 finish bad", "0 finish good"}));
    EXPECT_EQ(failing->Status(), kStatusError) << operation;
    EXPECT_FALSE(service_.UpdateInProgress());
  }
  EXPECT_EQ(ports_.person.shown, Lines());
}

TEST_F(ServiceUpdateTest, LogLines) {
  DebugLog log(ports_.loop, ports_.files, ports_.person, "test", "/logs", 5, true);
  log.Install();
  service_.SetServiceNumber(1);
  clsZEBItemInfo item;
  item.Edit().ItemName = "Song";
  item.Edit().Artists = "Band";
  service_.SetCurrentItem(item);
  Add<RecordingSerial>(OutputType::kSerial, "s");
  const auto failing = Add(OutputType::kWeb, "w");
  failing->during["update"] = [] { throw std::runtime_error("broken"); };
  Start([this] {
    service_.UpdateOutputs(true);
    service_.CurrentItemNearEnd();
    service_.SetTravelFlagActivated();
    service_.ClearService();
  });
  std::size_t from = 0;
  for (const char* text : {"Doing FULL Update",
                           "Started ZEBService.UpdateOutputType(5): 'Song' by 'Band'",
                           "Update - Preparing Serial 1",
                           "Update - Updating Serial 1",
                           "Update - Finishing Serial 1",
                           "Finished ZEBService.UpdateOutputType",
                           "Started ZEBService.UpdateOutputType(15)",
                           "Update - Updating Web 1",
                           "There was a problem updating Web 1",
                           "broken",
                           "Update - Finishing Web 1",
                           "PreCue - Preparing Serial 1",
                           "PreCue - Updating Serial 1",
                           "PreCue - Finishing Serial 1",
                           "Update - Preparing Serial 1",
                           "Update - Updating Serial 1",
                           "Update - Finishing Serial 1",
                           "Started ZEBService.ClearService",
                           "Clearing Web Output 1",
                           "Clearing Serial Output 1",
                           "Finished ZEBService.ClearService"}) {
    std::string all;
    for (const std::string& line : ports_.person.notes) all += line + "\n";
    const std::size_t found = all.find(text, from);
    ASSERT_NE(found, std::string::npos) << text << " is not in\n" << all.substr(from);
    from = found + 1;
  }
}

// ---- Cues

TEST_F(ServiceUpdateTest, TheNearEndCueGoesToEncodersThenToSerialOutputs) {
  writeEvents_ = true;
  Add<RecordingSerial>(OutputType::kSerial, "s");
  Add<RecordingEncoder>(OutputType::kEncoder, "e");
  Add(OutputType::kEncoder, "no commands");
  Add(OutputType::kFile, "f");
  Start([this] { service_.CurrentItemNearEnd(); });
  EXPECT_EQ(Take(), Lines({"0 starting 1 of type 2",
                           "0 prepare e",
                           "0 starting 2 of type 2",
                           "0 prepare no commands",
                           "0 updating 1 of type 2",
                           "0 command CMD SAE\r\nto e",
                           "0 updated 1 of type 2",
                           "0 updating 2 of type 2",
                           "0 updated 2 of type 2",
                           "0 finish e",
                           "0 finished 1 of type 2",
                           "0 finish no commands",
                           "0 finished 2 of type 2",
                           "0 starting 1 of type 5",
                           "0 prepare s",
                           "0 updating 1 of type 5",
                           "0 string SAE\r\nto s",
                           "0 updated 1 of type 5",
                           "0 finish s",
                           "0 finished 1 of type 5"}));
  service_.SetOutputUpdateInterval(5, 10);
  EXPECT_TRUE(service_.PeriodicUpdateDue());  // a cue is no update
}

TEST_F(ServiceUpdateTest, TheTravelFlagGoesToSerialOutputsOnly) {
  Add<RecordingSerial>(OutputType::kSerial, "s1");
  Add<RecordingSerial>(OutputType::kSerial, "s2");
  Add<RecordingEncoder>(OutputType::kEncoder, "e");
  Start([this] { service_.SetTravelFlagActivated(); });
  Start([this] { service_.SetTravelFlagCleared(); });
  EXPECT_EQ(Take(), Lines({"0 prepare s1", "0 prepare s2", "0 travel on s1", "0 travel on s2", "0 finish s1",
                           "0 finish s2", "0 prepare s1", "0 prepare s2", "0 travel off s1",
                           "0 travel off s2", "0 finish s1", "0 finish s2"}));
}

// ---- Waiting outputs

TEST_F(ServiceUpdateTest, ACueToAnotherTypeGoesOutWhileAnOutputWaits) {
  Add(OutputType::kWeb, "w")->during["update"] = Wait(30s);
  Add<RecordingSerial>(OutputType::kSerial, "s");
  Update(OutputType::kWeb);
  ports_.loop.RunFor(5s);
  EXPECT_TRUE(service_.UpdateInProgress());
  Start([this] { service_.CurrentItemNearEnd(); });
  ports_.loop.RunFor(30s);
  EXPECT_EQ(Take(), Lines({"0 prepare w", "0 update w", "5 prepare s", "5 string SAE\r\nto s", "5 finish s",
                           "30 finish w"}));
  EXPECT_FALSE(service_.UpdateInProgress());
}

TEST_F(ServiceUpdateTest, CuesToTheSameTypeWaitInTheirOrderAndSoDoUpdates) {
  const auto serial = Add<RecordingSerial>(OutputType::kSerial, "s");
  serial->during["update"] = Wait(30s);
  serial->during["travel on"] = Wait(2s);
  Update(OutputType::kSerial);
  ports_.loop.RunFor(5s);
  Start([this] { service_.SetTravelFlagActivated(); });
  Start([this] { service_.SetTravelFlagCleared(); });
  serial->during.erase("update");
  Update(OutputType::kSerial);
  ports_.loop.RunFor(40s);
  EXPECT_EQ(Take(), Lines({"0 prepare s", "0 update s", "30 finish s", "30 prepare s", "30 travel on s",
                           "32 finish s", "32 prepare s", "32 travel off s", "32 finish s", "32 prepare s",
                           "32 update s", "32 finish s"}));
}

TEST_F(ServiceUpdateTest, WhatWaitsTooLongOrInTooLongAQueueIsDropped) {
  const auto serial = Add<RecordingSerial>(OutputType::kSerial, "s");
  serial->during["update"] = Wait(299s);
  Update(OutputType::kSerial);
  for (int i = 0; i < 20; ++i) Start([this] { service_.SetTravelFlagCleared(); });
  EXPECT_EQ(ports_.person.notes.size(), 4U);
  ports_.loop.RunFor(299s);
  Take();

  serial->during["update"] = Wait(301s);
  Update(OutputType::kSerial);
  Update(OutputType::kSerial);
  ports_.loop.RunFor(300s);
  EXPECT_EQ(ports_.person.notes.size(), 5U);
  ports_.loop.RunFor(301s);
  EXPECT_EQ(Take(), Lines({"299 prepare s", "299 update s", "600 finish s"}));
  serial->during.clear();
  Update(OutputType::kSerial);
  EXPECT_EQ(Take().size(), 3U);
}

TEST_F(ServiceUpdateTest, OutputsThatComeOrGoMeanwhile) {
  writeEvents_ = true;
  Add(OutputType::kFile, "a")->during["update"] = Wait(10s);
  Add(OutputType::kFile, "b");
  Add(OutputType::kFile, "c");
  Update(OutputType::kFile);
  ports_.loop.RunFor(5s);
  Take();
  service_.RemoveOutput(OutputType::kFile, 2);
  service_.RemoveOutput(OutputType::kFile, 1);  // the one that waits
  Add(OutputType::kFile, "new");
  ports_.loop.RunFor(10s);
  EXPECT_EQ(Take(), Lines({"10 updating 1 of type 3", "10 update c", "10 updated 1 of type 3", "10 finish c",
                           "10 finished 1 of type 3", "10 update finished"}));
}

TEST_F(ServiceUpdateTest, ClearingTheServiceEndsWhatRunsAndWhatWaits) {
  writeEvents_ = true;
  service_.SetServiceNumber(1);
  Add<RecordingSerial>(OutputType::kSerial, "s1")->during["prepare"] = Wait(10s);
  Add<RecordingSerial>(OutputType::kSerial, "s2");
  Add(OutputType::kWeb, "w");
  Start([this] { service_.UpdateOutputs(true); });
  Start([this] { service_.SetTravelFlagActivated(); });
  ports_.loop.RunFor(5s);
  Take();
  service_.ClearService();
  EXPECT_EQ(Take(), Lines({"5 stop w", "5 stop s1", "5 stop s2", "5 closed"}));
  EXPECT_EQ(service_.TotalNumberOutputs(), 0);
  ports_.loop.RunPosted();
  EXPECT_EQ(ports_.loop.TaskCount(), 1U);  // the cue has ended, the output still waits

  // The outputs that come next need not wait for those that went.
  Add<RecordingSerial>(OutputType::kSerial, "later")->during["update"] = Wait(10s);
  Update(OutputType::kSerial);
  ports_.loop.RunFor(6s);
  EXPECT_EQ(Take(), Lines({"5 update started", "5 starting 1 of type 5", "5 prepare later",
                           "5 updating 1 of type 5", "5 update later", "10 update finished"}));
  EXPECT_TRUE(service_.UpdateInProgress());
  Start([this] { service_.SetTravelFlagActivated(); });  // still waits its turn behind "later"
  EXPECT_EQ(Take(), Lines());
  ports_.loop.RunFor(5s);
  EXPECT_FALSE(service_.UpdateInProgress());
}

TEST_F(ServiceUpdateTest, AServiceWithoutNumberIsNotCleared) {
  writeEvents_ = true;
  Add(OutputType::kFile, "f");
  service_.ClearService();
  EXPECT_EQ(Take(), Lines());
  EXPECT_EQ(service_.TotalNumberOutputs(), 1);
}

}  // namespace
}  // namespace zeb
