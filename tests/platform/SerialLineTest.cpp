#include <gtest/gtest.h>

#include "platform/SerialLineWatch.h"
#include "platform/simulated/SimulatedLoop.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using Events = std::vector<CommEvent>;

TEST(SerialLine, TellsWhatLiesBetweenTwoLooks) {
  using S = SerialLineState;
  const struct {
    std::function<void(S&)> change;
    Events events;
  } cases[] = {
      {[](S&) {}, {}},
      {[](S& s) { s.breaks += 3; }, {kCommBreak}},
      {[](S& s) { ++s.framingErrors; }, {kCommFrame}},
      {[](S& s) { ++s.parityErrors; }, {kCommParity}},
      {[](S& s) { ++s.overruns; }, {kCommOverrun}},
      {[](S& s) { ++s.bufferOverflows; }, {kCommReceiveOverflow}},
      {[](S& s) { s.cts = false; }, {kCommCTS}},
      {[](S& s) { s.ctsChanges += 2; }, {kCommCTS}},  // off and on again
      {[](S& s) { s.dsr = true, ++s.dsrChanges; }, {kCommDSR}},
      {[](S& s) { s.carrier = true; }, {kCommCD}},
      {[](S& s) { s.ringing = true; }, {kCommRing}},
      {[](S& s) { ++s.rings; }, {kCommRing}},
      {[](S& s) { s.breaks = 0, ++s.framingErrors; }, {kCommBreak, kCommFrame}},  // a counter that wraps
  };
  for (const auto& [change, events] : cases) {
    S before;
    before.cts = true;
    before.breaks = 0xFFFFFFFF;
    S now = before;
    change(now);
    EXPECT_EQ(CommEventsBetween(before, now), events) << (events.empty() ? 0 : events[0]);
  }
  S ringing;
  ringing.ringing = true;
  EXPECT_EQ(CommEventsBetween(ringing, S()), Events()) << "the end of a ring is none";
}

struct WatchTest : testing::Test {
  void Watch() {
    watch.emplace(
        loop,
        [this]() -> std::optional<SerialLineState> {
          ++looks;
          loop.WaitUntil([this] { return !hangs; }, 1000h);
          return state;
        },
        [this](CommEvent event) {
          events.push_back(event);
          if (onEvent) onEvent();
        });
  }
  SimulatedLoop loop;
  std::optional<SerialLineState> state = SerialLineState();
  bool hangs = false;
  int looks = 0;
  Events events;
  std::function<void()> onEvent;
  std::optional<SerialLineWatch> watch;
};

TEST_F(WatchTest, TellsOfChangesOnly) {
  state->framingErrors = 7;  // from before it was opened
  Watch();
  loop.RunFor(10s);
  EXPECT_EQ(events, Events());
  EXPECT_EQ(looks, 20);
  ++state->framingErrors;
  state->cts = true;
  loop.RunFor(10s);
  EXPECT_EQ(events, (Events{kCommFrame, kCommCTS}));
  state.reset();  // pulled out
  loop.RunFor(10s);
  EXPECT_EQ(events.size(), 2u);
}

TEST_F(WatchTest, ADeviceThatTellsNothingIsAskedOnce) {
  state.reset();
  Watch();
  loop.RunFor(1min);
  EXPECT_EQ(looks, 1);
}

TEST_F(WatchTest, ADeviceThatHangsIsAskedOnceUntilItAnswers) {
  Watch();
  loop.RunFor(1s);
  hangs = true;
  loop.RunFor(1min);
  EXPECT_EQ(looks, 3);
  EXPECT_LE(loop.TaskCount(), 1u);
  ++state->breaks;
  hangs = false;
  loop.RunFor(2s);
  EXPECT_EQ(events, Events{kCommBreak});
  hangs = true;
  loop.RunFor(1s);
  ++state->breaks;
  watch.reset();  // closed meanwhile
  hangs = false;
  loop.RunFor(1min);
  EXPECT_EQ(events.size(), 1u);
}

TEST_F(WatchTest, AnEventMayCloseThePort) {
  Watch();
  loop.RunFor(1s);
  ++state->breaks;
  ++state->overruns;
  onEvent = [this] { watch.reset(); };
  loop.RunFor(1min);
  EXPECT_EQ(events, Events{kCommBreak});
}

}  // namespace
}  // namespace zeb
