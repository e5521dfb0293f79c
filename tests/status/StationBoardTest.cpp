#include "status/StationBoard.h"
#include "tests/core/ServiceFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

// A service with its board, told of what happens as the service window tells it.
class StationBoardTest : public ServiceTest {
 protected:
  StationBoardTest()
      : board_(service_,
               {[this] { return source_; }, [this](Panel) -> const std::string& { return panel_; }}) {
    service_.SetItemCount(3);
    board_.onChanged = [this] { ++told_; };
  }
  void OutputUpdateStarting(int index, OutputType type) override { board_.OutputChanged(type, index); }
  void OutputUpdateFinished(int index, OutputType type) override { board_.OutputChanged(type, index); }
  void OutputRunEnded(const UpdateRecord& record, const UpdateRun& run) override {
    board_.RunEnded(record, run);
  }
  void Publish(const std::string& title) {
    SetTitle(title);
    service_.UpdateOutputs(true);
    board_.Changed();
  }
  OutputState Output(std::size_t place = 0) const { return board_.State().outputs.at(place); }
  Duration Since(const std::optional<WallTime>& moment) const { return ports_.loop.Now() - moment.value(); }

  SourceState source_{SourceState::Kind::kControlLink, true, "port 6901", "playout"};
  std::string panel_;
  StationBoard board_;
  int told_ = 0;
};

TEST_F(StationBoardTest, ShowsWhatStandsInTheSlots) {
  clsZEBItemInfo item;
  item.ItemIndexNumber = 2;
  item.Edit().ItemName = "Second";
  service_.SetNextItem(2, item);
  service_.ShowTitle = "Breakfast";
  panel_ = "Information Update received, waiting..";
  const StationState state = board_.State();
  ASSERT_EQ(state.next.size(), 2U);  // up to the last that holds something
  EXPECT_TRUE(state.next[0].HoldsNothing());
  EXPECT_EQ(state.next[1]->ItemName, "Second");
  EXPECT_TRUE(state.previous.empty());
  EXPECT_EQ(state.showTitle, "Breakfast");
  EXPECT_EQ(state.information, panel_);
  EXPECT_EQ(state.source.controller, "playout");
  EXPECT_EQ(state.Worst(), Severity::kOk);
}

TEST_F(StationBoardTest, TellsWhenAndHowFastAnOutputPublished) {
  const auto output = Add(OutputType::kHTTP, "h");
  output->SetStatus(kStatusOK);
  EXPECT_FALSE(Output().published);
  EXPECT_FALSE(Output().stale);  // there is nothing to show yet
  output->during["update"] = Wait(300ms);
  service_.NoteInformationMoment(ports_.loop.Monotonic() - 1500ms);
  Publish("One");
  EXPECT_EQ(Output().severity, Severity::kBusy);
  EXPECT_TRUE(Output().stale);
  ports_.loop.RunFor(10s);
  EXPECT_EQ(Output().severity, Severity::kOk);
  EXPECT_EQ(Output().latency, 1800ms);
  EXPECT_EQ(Since(Output().published), 9700ms);
  EXPECT_FALSE(Output().stale);
  EXPECT_EQ(Output().publications, 1U);
  // Showing the same once more is a publication, but says nothing of how fast the information was.
  service_.SetOutputUpdateInterval(static_cast<std::int32_t>(OutputType::kHTTP), 1);
  service_.UpdateOutputs(false);
  ports_.loop.RunFor(1s);
  EXPECT_EQ(Output().publications, 2U);
  EXPECT_EQ(Output().latency, 1800ms);
  EXPECT_FALSE(Output().stale);
}

TEST_F(StationBoardTest, AFailureIsCountedFromItsBeginningAndEndsWithWhatIsRight) {
  const auto output = Add(OutputType::kFile, "f");
  output->SetStatus(kStatusOK);
  Publish("One");
  ports_.loop.RunFor(1s);
  output->problem = "'/srv/now.html': no space\nleft";
  Publish("Two");
  ports_.loop.RunFor(3s);
  EXPECT_EQ(Output().severity, Severity::kFailing);
  EXPECT_EQ(Output().problem, "'/srv/now.html': no space left");
  EXPECT_EQ(Since(Output().failingSince), 3s);
  EXPECT_EQ(Since(Output().staleSince), 3s);
  EXPECT_EQ(board_.State().Worst(), Severity::kFailing);
  ports_.loop.RunFor(4s);  // it has tried again
  EXPECT_EQ(Since(Output().failingSince), 7s);
  EXPECT_EQ(Output().failures, 2U);
  output->problem.clear();
  ports_.loop.RunFor(20s);
  EXPECT_EQ(Output().severity, Severity::kOk);
  EXPECT_FALSE(Output().failingSince);
  EXPECT_FALSE(Output().stale);
  EXPECT_EQ(Output().failures, 2U);
}

TEST_F(StationBoardTest, AnOutputThatIsDelayedOnPurposeIsNotStale) {
  const auto output = Add(OutputType::kEncoder, "e");
  output->SetStatus(kStatusOK);
  output->DelaySeconds = 25;
  Publish("One");
  ports_.loop.RunFor(10s);
  EXPECT_FALSE(Output().stale);
  EXPECT_FALSE(Output().published);
  ports_.loop.RunFor(20s);
  EXPECT_EQ(Output().latency, 25s);
}

TEST_F(StationBoardTest, AnOutputThatIsGoneIsForgotten) {
  Add(OutputType::kHTTP, "gone")->problem = "x";
  Publish("One");
  ports_.loop.RunFor(1s);
  EXPECT_TRUE(Output().failingSince);
  service_.RemoveOutput(OutputType::kHTTP, 1);
  Add(OutputType::kHTTP, "new")->SetStatus(kStatusOK);
  EXPECT_FALSE(Output().failingSince);
  EXPECT_EQ(Output().failures, 0U);
}

TEST_F(StationBoardTest, ChangesAreToldOnceATurn) {
  Add(OutputType::kFile, "a");
  Add(OutputType::kFile, "b");
  Publish("One");
  board_.Changed();
  ports_.loop.RunPosted();
  EXPECT_EQ(told_, 1);
  ports_.loop.RunFor(1min);
  EXPECT_EQ(told_, 1);
}

}  // namespace
}  // namespace zeb
