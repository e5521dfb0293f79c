#include <algorithm>

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

TEST_F(ServiceUpdateTest, OfFarTooManyCuesTheLastTellsHowThingsStand) {
  const auto serial = Add<RecordingSerial>(OutputType::kSerial, "s");
  serial->during["update"] = Wait(30s);
  Update(OutputType::kSerial);
  for (int i = 0; i < 20; ++i) {
    service_.SetTravelFlagActivated();
    service_.SetTravelFlagCleared();
    service_.CurrentItemNearEnd();
  }
  ports_.loop.RunFor(1min);
  const Lines lines = Take();
  EXPECT_LE(std::ssize(lines), 3 + 3 * 18);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "30 string SAE\r\nto s"), 1);
  const auto last = std::find_if(lines.rbegin(), lines.rend(), [](const std::string& line) {
    return line.find("travel") != std::string::npos;
  });
  EXPECT_EQ(*last, "30 travel off s");
}

TEST_F(ServiceUpdateTest, ATravelCueIsSentUntilItHasLeft) {
  const auto serial = Add<RecordingSerial>(OutputType::kSerial, "s");
  serial->sends = false;
  service_.SetTravelFlagActivated();
  EXPECT_TRUE(service_.TravelCueOwed());
  ports_.loop.RunFor(4s);
  service_.SetTravelFlagCleared();  // takes the place of the one that did not leave
  ports_.loop.RunFor(14s);          // tried at 4 s; the failures in a row are 2 by then, so again at 14 s
  serial->sends = true;
  ports_.loop.RunFor(30s);
  Lines cues;
  for (const std::string& line : Take())
    if (line.find("travel") != std::string::npos) cues.push_back(line);
  EXPECT_EQ(cues, Lines({"0 travel on s", "4 travel off s", "14 travel off s", "34 travel off s"}));
  EXPECT_FALSE(service_.TravelCueOwed());
}

TEST_F(ServiceUpdateTest, OutputsThatComeOrGoMeanwhile) {
  writeEvents_ = true;
  Add(OutputType::kFile, "a")->during["update"] = Wait(500ms);
  Add(OutputType::kFile, "b");
  Add(OutputType::kFile, "c");
  Update(OutputType::kFile);
  Take();
  service_.RemoveOutput(OutputType::kFile, 2);
  service_.RemoveOutput(OutputType::kFile, 1);  // the one that waits
  Add(OutputType::kFile, "new");
  ports_.loop.RunFor(10s);
  EXPECT_EQ(Take(), Lines({"0 finish c", "0 finished 1 of type 3", "0 update finished"}));
}

TEST_F(ServiceUpdateTest, ClearingTheServiceEndsWhatRunsAndWhatWaits) {
  writeEvents_ = true;
  service_.SetServiceNumber(1);
  Add<RecordingSerial>(OutputType::kSerial, "s1")->during["prepare"] = Wait(10s);
  Add<RecordingSerial>(OutputType::kSerial, "s2");
  Add(OutputType::kWeb, "w");
  service_.UpdateOutputs(true);
  service_.SetTravelFlagActivated();
  ports_.loop.RunFor(5s);
  Take();
  service_.ClearService();
  EXPECT_EQ(Take(), Lines({"5 stop w", "5 stop s1", "5 stop s2", "5 closed"}));
  EXPECT_EQ(service_.TotalNumberOutputs(), 0);
  EXPECT_FALSE(service_.UpdateInProgress());
  EXPECT_EQ(ports_.loop.TaskCount(), 1U);  // the output that still waits

  // The outputs that come next need not wait for those that went.
  Add<RecordingSerial>(OutputType::kSerial, "later");
  Update(OutputType::kSerial);
  ports_.loop.RunFor(6s);
  EXPECT_EQ(Take(), Lines({"5 update started", "5 starting 1 of type 5", "5 prepare later",
                           "5 updating 1 of type 5", "5 update later", "5 updated 1 of type 5",
                           "5 finish later", "5 finished 1 of type 5", "5 update finished"}));
}

TEST_F(ServiceUpdateTest, AServiceMayGoWhileItsOutputsWait) {
  RecordingOutput* output = nullptr;
  {
    clsZEBService other(ports_.environment, nullptr, *this);
    const auto waits = std::make_shared<RecordingOutput>(*this, "w");
    waits->during["update"] = Wait(1min);
    output = waits.get();
    other.AddOutput(OutputType::kWeb, waits);
    other.UpdateOutputs(true);
    ports_.loop.RunFor(10s);
  }
  EXPECT_EQ(output->Status(), kStatusOff);  // still there: its run holds it
  ports_.loop.RunFor(1min);
  EXPECT_EQ(Take(), Lines({"0 prepare w", "0 update w"}));
}

// ---- Each for itself

TEST_F(ServiceUpdateTest, APhaseWaitsForAllButNoLongerThanASecond) {
  Add(OutputType::kHTTP, "quick");
  Add(OutputType::kHTTP, "0.9")->during["update"] = Wait(900ms);
  Add(OutputType::kHTTP, "slow")->during["prepare"] = Wait(5s);
  Add(OutputType::kFile, "file");
  writeMilliseconds_ = true;
  service_.UpdateOutputs(true);
  ports_.loop.RunFor(10s);
  EXPECT_EQ(Take(), Lines({"0 prepare file", "0 update file", "0 finish file", "0 prepare quick",
                           "0 prepare 0.9", "0 prepare slow", "1000 update quick", "1000 update 0.9",
                           "1900 finish quick", "1900 finish 0.9", "5000 update slow", "5000 finish slow"}));
}

TEST_F(ServiceUpdateTest, EachPhaseHasASecondOfItsOwn) {
  const auto one = Add(OutputType::kHTTP, "one");
  one->during["prepare"] = Wait(700ms);
  writeMilliseconds_ = writeEvents_ = true;
  struct Case {
    Duration update;
    Lines lines;
  };
  for (const Case& c : {Case{900ms,
                             {"700 update one", "1600 updated 1 of type 14", "1600 finish one",
                              "1600 finished 1 of type 14", "1600 update finished"}},
                        Case{1500ms,
                             {"700 update one", "1700 update finished", "2200 updated 1 of type 14",
                              "2200 finish one", "2200 finished 1 of type 14"}}}) {
    one->during["update"] = Wait(c.update);
    started_ = ports_.loop.Monotonic();
    service_.UpdateOutputs(true);
    ports_.loop.RunFor(10s);
    Lines lines = Take();
    EXPECT_EQ(Lines(lines.end() - 5, lines.end()), c.lines);
  }
}

TEST_F(ServiceUpdateTest, WhoeverHangsHoldsNobodyUpAndThenShowsTheNewest) {
  const auto hangs = Add(OutputType::kWeb, "web");
  hangs->during["update"] = Wait(20s);
  Add(OutputType::kWeb, "web2");
  Add(OutputType::kFile, "file");
  for (int second = 0; second < 20; second += 5) {
    SetTitle("title at " + std::to_string(second));
    service_.UpdateOutputs(true);
    ports_.loop.RunFor(5s);
  }
  hangs->during.clear();
  ports_.loop.RunFor(1min);
  Lines updates;
  for (const std::string& line : Take())
    if (line.find(" update ") != std::string::npos) updates.push_back(line);
  EXPECT_EQ(updates,
            Lines({"0 update file", "0 update web", "0 update web2", "5 update file", "5 update web2",
                   "10 update file", "10 update web2", "15 update file", "15 update web2", "20 update web"}));
  EXPECT_EQ(hangs->shown, (Lines{"title at 0", "title at 15"})) << "never a queue of old titles";
}

TEST_F(ServiceUpdateTest, ACueGoesBeforeTheNextUpdateOfABusyOutput) {
  const auto serial = Add<RecordingSerial>(OutputType::kSerial, "s");
  serial->during["update"] = Wait(10s);
  Update(OutputType::kSerial);
  ports_.loop.RunFor(2s);
  Update(OutputType::kSerial);
  service_.CurrentItemNearEnd();
  serial->during.clear();
  ports_.loop.RunFor(20s);
  EXPECT_EQ(Take(),
            Lines({"0 prepare s", "0 update s", "10 finish s", "10 prepare s", "10 string SAE\r\nto s",
                   "10 finish s", "10 prepare s", "10 update s", "10 finish s"}));
}

TEST_F(ServiceUpdateTest, AnOutputThatFailsTriesAgainUntilItIsRight) {
  const auto output = Add(OutputType::kWeb, "w");
  output->problem = "no answer";
  SetTitle("first");
  service_.UpdateOutputs(true);
  ports_.loop.RunFor(80s);  // 5, 10, 20 and 40 s later
  SetTitle("newest");
  service_.UpdateOutputs(true);
  ports_.loop.RunFor(61s);
  output->problem.clear();
  ports_.loop.RunFor(1h);
  Lines tries;
  for (const std::string& line : Take())
    if (line.find(" update ") != std::string::npos) tries.push_back(line.substr(0, line.find(' ')));
  ASSERT_EQ(tries.size(), 7U);
  EXPECT_EQ(Lines(tries.begin(), tries.begin() + 6), Lines({"0", "5", "15", "35", "75", "80"}));
  EXPECT_GE(std::stoi(tries[6]), 140) << "then every minute, a little spread";
  EXPECT_LE(std::stoi(tries[6]), 147);
  EXPECT_EQ(output->shown.back(), "newest");
}

TEST_F(ServiceUpdateTest, WhatDoesNotPassAndWhatIsTurnedOffIsNotTriedAgain) {
  struct Case {
    bool mayPass;
    std::int32_t retrySeconds;
    int updates;
  };
  for (const Case& c : {Case{true, 5, 4}, Case{false, 5, 1}, Case{true, 0, 1}, Case{true, 20, 2}}) {
    ports_.hive.WriteNumber(ports_.environment.settingsRoot, "RetrySeconds", c.retrySeconds);
    service_.SetServiceNumber(1);
    const auto output = Add(OutputType::kHTTP, "h");
    output->problem = "refused";
    output->mayPass = c.mayPass;
    service_.UpdateOutputs(true);
    ports_.loop.RunFor(40s);
    EXPECT_EQ(std::ssize(output->shown), c.updates) << c.mayPass << ' ' << c.retrySeconds;
    service_.ClearService();
  }
}

// A text that the server refuses for good takes the place of one that might have passed.
TEST_F(ServiceUpdateTest, ARefusalForGoodEndsTheTries) {
  const auto output = Add(OutputType::kHTTP, "h");
  output->problem = "no answer";
  service_.UpdateOutputs(true);
  ports_.loop.RunFor(2s);
  output->mayPass = false;
  service_.UpdateOutputs(true);
  ports_.loop.RunFor(1h);
  EXPECT_EQ(output->shown.size(), 2U);
}

TEST_F(ServiceUpdateTest, AServiceThatStopsEndsTheTravelFlagOfADelayedOutputAtOnce) {
  Add<RecordingSerial>(OutputType::kSerial, "late")->DelaySeconds = 25;
  service_.SetTravelFlagActivated();
  ports_.loop.RunFor(30s);
  service_.BeginStopping();
  service_.SetTravelFlagCleared();
  EXPECT_EQ(Take(), Lines({"25 prepare late", "25 travel on late", "25 finish late", "30 prepare late",
                           "30 travel off late", "30 finish late"}));
}

TEST_F(ServiceUpdateTest, WhatIsShownAndLostIsSentAgain) {
  const auto output = Add(OutputType::kDAB, "d");
  output->onShownLost();  // nothing was shown yet
  SetTitle("song");
  service_.UpdateOutputs(true);
  ports_.loop.RunFor(10s);
  output->onShownLost();
  ports_.loop.RunFor(4s);
  EXPECT_EQ(output->shown, Lines{"song"});
  ports_.loop.RunFor(1min);
  EXPECT_EQ(output->shown, (Lines{"song", "song"}));
}

TEST_F(ServiceUpdateTest, ADelayedOutputShowsEverythingLater) {
  const auto late = Add<RecordingSerial>(OutputType::kSerial, "late");
  late->DelaySeconds = 25;
  for (const char* title : {"a", "b", "c"}) {
    SetTitle(title);
    service_.UpdateOutputs(true);
    ports_.loop.RunFor(1s);
  }
  service_.CurrentItemNearEnd();
  SetTitle("d");
  late->during["update"] = Wait(2s);  // longer than the time between two of them
  ports_.loop.RunFor(1min);
  EXPECT_EQ(Take(),
            Lines({"25 prepare late", "25 update late", "27 finish late", "27 prepare late", "27 update late",
                   "29 finish late", "29 prepare late", "29 update late", "31 finish late", "31 prepare late",
                   "31 string SAE\r\nto late", "31 finish late"}));
  EXPECT_EQ(late->shown, (Lines{"a", "b", "c"}));
}

// A thousand wait at the most: the oldest ones go, never the end of a travel flag, and the rest is shown.
TEST_F(ServiceUpdateTest, ADelayedOutputOutlivesMoreThanItCanKeep) {
  const auto late = Add<RecordingSerial>(OutputType::kSerial, "late");
  late->DelaySeconds = 3600;
  service_.SetTravelFlagActivated();
  service_.SetTravelFlagCleared();
  for (int i = 0; i < 1100; ++i) {
    SetTitle(std::to_string(i));
    service_.UpdateOutputs(true);
    ports_.loop.RunFor(1s);
  }
  ports_.loop.RunFor(2h);
  ASSERT_EQ(late->shown.size(), 998U);
  EXPECT_EQ(late->shown.front(), "102");
  EXPECT_EQ(late->shown.back(), "1099");
  const Lines lines = Take();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "3600 travel off late"), 1);
}

// ---- Records

TEST_F(ServiceUpdateTest, AnUpdateIsThroughWhenItsLastRunHasEnded) {
  Add(OutputType::kFile, "f");
  Add(OutputType::kWeb, "w")->during["update"] = Wait(12s);
  SetTitle("one");
  service_.UpdateOutputs(true);
  ports_.loop.RunFor(3s);
  EXPECT_EQ(records_, Lines());
  SetTitle("two");
  service_.UpdateOutputs(true);
  EXPECT_EQ(records_, Lines{"3 full 'two' 1 run, 1 postponed"});
  ports_.loop.RunFor(1min);
  EXPECT_EQ(records_,
            Lines({"3 full 'two' 1 run, 1 postponed", "10 'one' waits", "12 full 'one' 2 runs, 0 postponed",
                   "22 'two' waits", "24 full 'two' 1 run, 0 postponed"}));
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
