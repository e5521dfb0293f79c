// The slow send against the service: what is under way gives way to what is newer, at exact times.
#include "core/UpdateRecord.h"
#include "outputs/serial/clsZEBSerialOutput.h"
#include "outputs/wire/WireLog.h"
#include "tests/outputs/WireFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

class SlowSendTest : public WireTest {
 protected:
  // Counts what updates put out, as the journal does.
  struct Counts : ServiceEvents {
    void UpdateThrough(const UpdateRecord& record) override {
      for (const UpdateRun& run : record.runs)
        tallies.push_back({run.tally.published, run.tally.failed, run.tally.givenUp});
    }
    std::vector<std::vector<int>> tallies;
  };
  using Tallies = std::vector<std::vector<int>>;

  SlowSendTest() {
    station.SetServiceNumber(7);
    output->settings.simpleText = "<ZEB_NOW_ITEMNAME>";
    output->settings.append = "{0D}{0A}";
    output->settings.UseSlowSend = true;
    station.AddOutput(OutputType::kSerial, output);
    station.StartOutput(OutputType::kSerial, 1, port);
    t.loop.RunPosted();
    start = t.loop.Monotonic();
  }
  void Title(const std::string& title) {
    clsZEBItemInfo item;
    item.Edit().ItemName = title;
    station.SetCurrentItem(item);
    station.UpdateOutputs(true);
  }
  void At(Duration time, std::function<void()> work) {
    timers.push_back(t.loop.After(start + time - t.loop.Monotonic(), std::move(work)));
  }
  void RunUntil(Duration time) { t.loop.RunFor(start + time - t.loop.Monotonic()); }
  // When the byte was put out, in milliseconds from the start.
  int TimeOf(std::size_t byte) const { return static_cast<int>((port->written.at(byte).time - start) / 1ms); }
  std::size_t Last() const { return port->written.size() - 1; }

  Counts counts;
  clsZEBService station{t.environment, [](OutputType) { return OutputPtr(); }, counts};
  std::shared_ptr<SimulatedSerialPort> port = std::make_shared<SimulatedSerialPort>(t.loop);
  std::shared_ptr<clsZEBSerialOutput> output = std::make_shared<clsZEBSerialOutput>(t.environment);
  MonotonicTime start{};
  std::vector<Timer> timers;
  const std::string endless = std::string(60000, 'x');
};

TEST_F(SlowSendTest, ANewerTextEndsTheOldOneWithItsLineAndGoesOutWhole) {
  station.settings.LoggingPath = "/logs";
  Title(endless);
  At(1234ms, [&] { Title("New"); });
  RunUntil(2s);
  EXPECT_EQ(port->all, std::string(124, 'x') + "\r\nNew\r\n");
  EXPECT_EQ(TimeOf(123), 1230);
  EXPECT_EQ(TimeOf(124), 1240);  // the line end, at the same pace
  EXPECT_EQ(TimeOf(126), 1260);  // "N"
  EXPECT_EQ(TimeOf(Last()), 1300);
  EXPECT_EQ(counts.tallies, (Tallies{{0, 0, 1}, {1, 0, 0}}));
  EXPECT_EQ(output->Status(), kStatusOK);
  EXPECT_EQ(output->ProblemText(), "");
  EXPECT_TRUE(Has(Log(), "Given up after 124 characters"));
  const std::string end = kWireLogLineEnd;
  EXPECT_EQ(t.files.Contents("/logs/Service 07/2026-03-02-Serial-01.log").substr(endless.size()),
            "\r\n" + end + "Given up after 124 characters" + end + "New\r\n" + end);
  RunUntil(1h);
  EXPECT_EQ(TimeOf(Last()), 1300);  // nothing is left of the old one
}

TEST_F(SlowSendTest, OnlyTheNewestOfManyIsBegun) {
  Title(endless);
  for (int i = 0; i < 10; ++i) At(105ms + i * 200us, [&, i] { Title("Title " + std::to_string(i)); });
  RunUntil(1s);
  EXPECT_EQ(port->all, "xxxxxxxxxxx\r\nTitle 9\r\n");
}

TEST_F(SlowSendTest, ATextThatTakesLongerThanItsSuccessorsComeIsCutEachTimeAndTheLastIsWhole) {
  for (int i = 0; i < 5; ++i)
    At(i * 50ms + 5ms, [&, i] { Title(std::string(20, static_cast<char>('a' + i))); });
  RunUntil(2s);
  EXPECT_TRUE(port->all.ends_with("\r\n" + std::string(20, 'e') + "\r\n")) << port->all;
  EXPECT_EQ(counts.tallies.size(), 5u);
  EXPECT_EQ(counts.tallies.back(), (std::vector<int>{1, 0, 0}));
}

TEST_F(SlowSendTest, ItemsThatChangeNothingInTheTextLetItGoOn) {
  Title("0123456789");
  At(35ms, [&] {
    clsZEBItemInfo next;
    next.Edit().ItemName = "Later";
    station.SetNextItem(1, next);
    station.UpdateOutputs(true);
  });
  // Nor does an item that there is no text for: half a title must not stay on the radios.
  At(85ms, [&] { Title(""); });
  RunUntil(1s);
  EXPECT_EQ(port->all, "0123456789\r\n");
  EXPECT_EQ(counts.tallies.at(0), (std::vector<int>{1, 0, 0}));
}

TEST_F(SlowSendTest, WhatIsNewerWhenATextIsInItsLineEndWaitsForThat) {
  Title("abc");
  At(31ms, [&] { Title("New"); });
  RunUntil(1s);
  EXPECT_EQ(port->all, "abc\r\nNew\r\n");
  EXPECT_EQ(TimeOf(5), 50);
  EXPECT_EQ(counts.tallies, (Tallies{{1, 0, 0}, {1, 0, 0}}));
}

TEST_F(SlowSendTest, ATextWithoutALineEndIsJustGivenUp) {
  output->settings.append = "";
  Title(endless);
  At(15ms, [&] { Title("New"); });
  RunUntil(1s);
  EXPECT_EQ(port->all, "xxNew");
  EXPECT_EQ(TimeOf(2), 20);
}

TEST_F(SlowSendTest, CharactersOfSeveralBytesAreNotParted) {
  output->settings.characterSet = CharacterSet::kUtf8;
  std::string title;
  for (int i = 0; i < 1000; ++i) title += "日";
  Title(title);
  At(15ms, [&] { Title("New"); });
  RunUntil(1s);
  EXPECT_EQ(port->all, "日日\r\nNew\r\n");
}

TEST_F(SlowSendTest, ACueGoesOutAtOnceAndTheTextOnceMore) {
  Title("0123456789");
  At(25ms, [&] { station.CurrentItemNearEnd(); });
  RunUntil(1s);
  EXPECT_EQ(port->all, "012\r\nSAE\r\n0123456789\r\n");
  EXPECT_EQ(TimeOf(3), 30);
  EXPECT_EQ(TimeOf(5), 50);    // "S"
  EXPECT_EQ(TimeOf(10), 100);  // "0" again
  EXPECT_EQ(counts.tallies, (Tallies{{0, 0, 1}, {1, 0, 0}}));
}

TEST_F(SlowSendTest, CuesAreSentInTheirOrderAndTheNewestTextBehindThem) {
  Title(endless);
  At(25ms, [&] {
    Title("New");
    station.SetTravelFlagActivated();
    station.CurrentItemNearEnd();
    Title("Newest");
  });
  RunUntil(1s);
  EXPECT_EQ(port->all, "xxx\r\nTA=1\r\nSAE\r\nNewest\r\n");
  EXPECT_FALSE(station.TravelCueOwed());
}

TEST_F(SlowSendTest, ACueIsNotOvertakenByTextsOrNearEnds) {
  Title("Now");
  RunUntil(100ms);
  port->all.clear();
  At(100ms, [&] { station.SetTravelFlagActivated(); });
  At(115ms, [&] { Title("New"); });
  At(125ms, [&] { station.CurrentItemNearEnd(); });
  RunUntil(1s);
  EXPECT_EQ(port->all, "TA=1\r\nSAE\r\nNew\r\n");
}

// A format that names the title may be long; the flag that is over must not hold its own end up.
TEST_F(SlowSendTest, OfTheTravelFlagTheNewestStateCounts) {
  output->settings.TravelActivateFormat = "TA=1 <ZEB_NOW_ITEMNAME>{0D}{0A}";
  output->settings.simpleText = "<ZEB_SPECIAL_SHOWTITLE>";  // nothing
  Title(endless);
  At(100ms, [&] { station.SetTravelFlagActivated(); });
  At(7s, [&] { station.SetTravelFlagCleared(); });
  RunUntil(30s);
  EXPECT_EQ(port->all.substr(0, 8), "TA=1 xxx");
  EXPECT_EQ(port->all.substr(690), "\r\nTA=0\r\n");
  EXPECT_FALSE(station.TravelCueOwed());
  // One that stands alone goes out whole, also when it takes longer than the first try again.
  port->all.clear();
  At(40s, [&] { station.SetTravelFlagActivated(); });
  RunUntil(20min);
  EXPECT_EQ(port->all, "TA=1 " + endless + "\r\n");
  EXPECT_FALSE(station.TravelCueOwed());
}

TEST_F(SlowSendTest, WhatADelayedOutputIsToShowNextEndsWhatItShows) {
  output->DelaySeconds = 5;
  Title(endless);
  At(2s, [&] { Title("Second"); });
  At(3s, [&] { station.CurrentItemNearEnd(); });
  RunUntil(20s);
  std::string expected(200, 'x');
  expected += "\r\nSecond\r\nSAE\r\n";
  EXPECT_EQ(port->all, expected);
  EXPECT_EQ(TimeOf(0), 5000);
  EXPECT_EQ(TimeOf(200), 7000);
}

TEST_F(SlowSendTest, StoppingAndStartingAgainLeavesNothingOfTheOldText) {
  Title(endless);
  At(25ms, [&] {
    output->StopOutput();
    t.loop.Start("restart", [&] { output->StartOutput(port); });
  });
  RunUntil(200ms);
  EXPECT_EQ(port->all, "xxx");
  EXPECT_TRUE(port->PortOpen());
  Title("New");
  RunUntil(1s);
  EXPECT_EQ(port->all, "xxxNew\r\n");
}

// The end of a service: the text ends when it is cancelled, and what it owes goes out behind it.
TEST_F(SlowSendTest, ACancelledTextEndsAtTheNextCharacterAndIsNotBegunAgain) {
  Title(endless);
  At(2s + 5ms, [&] {
    station.BeginStopping();
    station.CancelOutputs();
  });
  RunUntil(2s + 200ms);
  EXPECT_EQ(port->all, std::string(201, 'x') + "\r\n");
  EXPECT_FALSE(station.UpdateInProgress());
  station.SetTravelFlagCleared();
  RunUntil(3s);
  EXPECT_TRUE(port->all.ends_with("x\r\nTA=0\r\n"));
  EXPECT_EQ(counts.tallies, (Tallies{{0, 0, 0}}));
}

TEST_F(SlowSendTest, ALineThatStandsStillIsGivenUpInItsTenSecondsHoweverMuchIsNewer) {
  Title(endless);
  At(15ms, [&] { port->stuck = true; });
  for (int i = 1; i < 20; ++i) At(i * 1s, [&, i] { Title("Title " + std::to_string(i)); });
  RunUntil(10s + 500ms);
  EXPECT_FALSE(counts.tallies.empty());
  EXPECT_EQ(counts.tallies.at(0), (std::vector<int>{0, 1, 0}));
  port->stuck = false;
  RunUntil(60s);
  EXPECT_TRUE(port->all.ends_with("Title 19\r\n")) << port->all.substr(port->all.size() - 30);
  EXPECT_EQ(output->ProblemText(), "");
}

TEST_F(SlowSendTest, WithoutSlowSendingATextIsSentAsItIs) {
  output->settings.UseSlowSend = false;
  port->byteTime = 1ms;
  Title("0123456789");
  At(3ms, [&] { Title("New"); });
  RunUntil(1s);
  EXPECT_EQ(port->all, "0123456789\r\nNew\r\n");
}

}  // namespace
}  // namespace zeb
