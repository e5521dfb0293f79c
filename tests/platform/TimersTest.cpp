#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/TimerQueue.h"
#include "platform/simulated/SimulatedLoop.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

TEST(TimersTest, EventsComeInExactOrder) {
  SimulatedLoop loop;
  std::string order;
  const Timer late = loop.After(2s, [&] { order += 'd'; });
  const Timer early = loop.After(1s, [&] {
    order += 'b';
    loop.Post([&] { order += 'c'; });
  });
  const Timer sameMoment = loop.After(2s, [&] { order += 'e'; });
  loop.PostFromAnyThread([&] { order += 'a'; });
  EXPECT_EQ(order, "") << "nothing happens until time is run";
  loop.RunFor(10s);
  EXPECT_EQ(order, "abcde");
  EXPECT_EQ(loop.Monotonic(), 10s);
}

TEST(TimersTest, RepeatingTimersTickUntilStopped) {
  SimulatedLoop loop;
  int ticks = 0;
  Timer timer = loop.Every(250ms, [&] { ++ticks; });
  loop.RunFor(999ms);
  EXPECT_EQ(ticks, 3);
  loop.RunFor(1ms);
  EXPECT_EQ(ticks, 4);
  EXPECT_TRUE(timer.Running());
  timer.Stop();
  EXPECT_FALSE(timer.Running());
  loop.RunFor(1h);
  EXPECT_EQ(ticks, 4);
}

TEST(TimersTest, CallbacksMayStopReplaceAndDestroyTimers) {
  SimulatedLoop loop;
  std::string order;
  Timer self, replaced;
  std::optional<Timer> other;
  const auto big = std::string(100, 'x');
  self = loop.Every(1s, [&, big] {
    self.Stop();
    order += big.front();  // what the callback captured lives until it returns
    other.reset();
  });
  other = loop.After(1s, [&] { order += "never"; });
  replaced = loop.After(2s, [&, big] {
    replaced = loop.After(1s, [&] { order += 'z'; });
    order += big.back();
  });
  loop.RunFor(1min);
  EXPECT_EQ(order, "xxz");
  EXPECT_FALSE(replaced.Running());
}

TEST(TimersTest, TimersMayOutliveTheirLoop) {
  Timer timer;
  {
    SimulatedLoop loop;
    timer = loop.After(1s, [] {});
  }
  EXPECT_FALSE(timer.Running());
  timer.Stop();
}

TEST(TimersTest, CancelledTimersDoNotPileUp) {
  TimerQueue queue;
  std::vector<Timer> kept;
  for (int i = 0; i < 10000; ++i) {
    Timer timer = queue.Add(MonotonicTime(i % 100), Duration::zero(), [] {});
    if (i % 100 == 0) kept.push_back(std::move(timer));
  }
  EXPECT_EQ(queue.Size(), 100u);
  kept.clear();
  EXPECT_EQ(queue.NextDue(), std::nullopt);
}

TEST(TimersTest, ALateRepeatingTimerSkipsTheTicksItMissed) {
  TimerQueue queue;
  const Timer timer = queue.Add(10s, 10s, [] {});
  EXPECT_EQ(queue.TakeDue(10s - 1ns), nullptr);
  EXPECT_NE(queue.TakeDue(45s), nullptr);
  EXPECT_EQ(queue.NextDue(), 50s);
  EXPECT_EQ(queue.TakeDue(45s), nullptr);
  EXPECT_NE(queue.TakeDue(50s), nullptr);
  EXPECT_EQ(queue.NextDue(), 60s);
}

TEST(TimersTest, EndlessDelaysDoNotOverflow) {
  SimulatedLoop loop;
  loop.RunFor(1s);
  const Timer timer = loop.After(Duration::max(), [] { ADD_FAILURE(); });
  const Timer past = loop.After(-1h, [] {});
  loop.RunFor(24h);
  EXPECT_TRUE(timer.Running());
  EXPECT_FALSE(past.Running());
}

TEST(TimersTest, TheWallClockRunsWithTimeAndMayJump) {
  SimulatedLoop loop;
  const WallTime noon = std::chrono::local_days{std::chrono::year{2026} / 3 / 2} + 12h;
  EXPECT_EQ(loop.Now(), noon);
  loop.RunFor(1500ms);
  EXPECT_EQ(loop.Now(), noon + 1500ms);
  loop.SetWallClock(noon - 1h);
  EXPECT_EQ(loop.Now(), noon - 1h);
  loop.RunFor(1s);
  EXPECT_EQ(loop.Now(), noon - 1h + 1s);
  EXPECT_EQ(loop.Monotonic(), 2500ms);
}

TEST(TimersTest, ADayOfAThousandServicesIsQuick) {
  SimulatedLoop loop;
  long ticks = 0;
  std::vector<Timer> timers;
  for (int i = 0; i < 1000; ++i) timers.push_back(loop.Every(1s, [&] { ++ticks; }));
  loop.RunFor(24h);
  EXPECT_EQ(ticks, 86'400'000);
}

}  // namespace
}  // namespace zeb
