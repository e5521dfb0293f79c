// The queue and the thread behind the journal and the debug log. The sink is a gate: nothing here depends on
// how fast a thread runs.
#include <gtest/gtest.h>

#include <condition_variable>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "platform/ThreadedLineWriter.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

constexpr auto kLong = 20s;

// A reader that takes lines only while the gate is open, or loses them.
class Gate {
 public:
  LineSink Sink() {
    return [state = state_](const LogLine& line) {
      std::unique_lock lock(state->mutex);
      ++state->arrived;
      state->changed.notify_all();
      state->changed.wait(lock, [&] { return state->open; });
      if (state->loses) return false;
      state->written += line.file + line.time + line.text + '|';
      return true;
    };
  }
  void Set(bool open, bool loses = false) {
    const std::lock_guard lock(state_->mutex);
    state_->open = open;
    state_->loses = loses;
    state_->changed.notify_all();
  }
  // Until the thread has come with its `count`th line.
  bool AwaitArrival(int count) {
    std::unique_lock lock(state_->mutex);
    return state_->changed.wait_for(lock, kLong, [&] { return state_->arrived >= count; });
  }
  std::string Written() {
    const std::lock_guard lock(state_->mutex);
    return state_->written;
  }

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    bool open = true, loses = false;
    int arrived = 0;
    std::string written;
  };
  std::shared_ptr<State> state_ = std::make_shared<State>();
};

LogLine Line(const std::string& text, const std::string& time = "", const std::string& file = "") {
  return {file, time, text};
}

TEST(LineWriterTest, LinesOfOneThreadKeepTheirOrder) {
  Gate gate;
  ThreadedLineWriter writer(gate.Sink(), {.mostWaiting = 64 * 1024 * 1024});
  constexpr int kLines = 2000;
  std::thread other([&] {
    for (int i = 0; i < kLines; ++i) writer.Write(Line(std::to_string(i), "", "b"));
  });
  for (int i = 0; i < kLines; ++i) writer.Write(Line(std::to_string(i), "", "a"));
  other.join();
  ASSERT_TRUE(writer.Flush(kLong));
  std::map<char, int> next;
  const std::string written = gate.Written();
  for (std::size_t at = 0; at < written.size(); at = written.find('|', at) + 1)
    ASSERT_EQ(std::stoi(written.substr(at + 1)), next[written[at]]++);
  EXPECT_EQ(next, (std::map<char, int>{{'a', kLines}, {'b', kLines}}));
}

TEST(LineWriterTest, CountsWhatItDropsWhileNobodyReads) {
  Gate gate;
  gate.Set(false);
  const std::string text(1000, 'x');
  ThreadedLineWriter writer(gate.Sink(), {.mostWaiting = 3500});
  writer.Write(Line("hangs"));
  ASSERT_TRUE(gate.AwaitArrival(1));
  for (int i = 0; i < 3; ++i) writer.Write(Line(text, std::to_string(i) + " "));
  writer.Write(Line(text, "12:00:01 ", "day1: "));
  writer.Write(Line("short", "12:00:02 ", "day2: "));  // would fit, but the gap has begun
  EXPECT_FALSE(writer.Flush(0ms));
  EXPECT_EQ(gate.Written(), "");
  gate.Set(true);
  ASSERT_TRUE(writer.Flush(kLong));
  const std::string out = "hangs|0 " + text + "|1 " + text + "|2 " + text + "|";
  EXPECT_EQ(gate.Written(), out +
                                "day1: 12:00:01 2 lines were dropped here: they could not be "
                                "written in time|");
  writer.Write(Line("again"));
  ASSERT_TRUE(writer.Flush(kLong));
  EXPECT_TRUE(gate.Written().ends_with("in time|again|"));
}

TEST(LineWriterTest, CountsWhatTheSinkLosesBeforeTheNextLine) {
  Gate gate;
  ThreadedLineWriter writer(gate.Sink());
  writer.Write(Line("1"));
  ASSERT_TRUE(writer.Flush(kLong));
  gate.Set(true, true);
  writer.Write(Line("2", "12:00:02 "));
  ASSERT_TRUE(writer.Flush(kLong));
  gate.Set(true);
  writer.Write(Line("3"));
  ASSERT_TRUE(writer.Flush(kLong));
  EXPECT_EQ(gate.Written(), "1|12:00:02 1 line was dropped here: they could not be written in time|3|");
}

TEST(LineWriterTest, ASinkThatThrowsLosesTheLineOnly) {
  auto written = std::make_shared<std::string>();
  ThreadedLineWriter writer([written](const LogLine& line) {
    if (line.text == "bad") throw std::runtime_error("no memory");
    *written += line.text.substr(0, 6) + '|';
    return true;
  });
  writer.Write(Line("bad"));
  writer.Write(Line("good"));
  ASSERT_TRUE(writer.Flush(kLong));
  EXPECT_EQ(*written, "1 line|good|");
}

TEST(LineWriterTest, EndsWhileItsSinkHangsAndWritesNothingMoreAfterwards) {
  Gate gate;
  gate.Set(false);
  {
    ThreadedLineWriter writer(gate.Sink());
    writer.Write(Line("in its hands"));
    writer.Write(Line("behind it"));
    ASSERT_TRUE(gate.AwaitArrival(1));
  }
  gate.Set(true);  // the thread that was left behind comes back, and ends
}

// Where a line can be written without waiting, no thread is asked, unless lines wait already.
TEST(LineWriterTest, WritesAtOnceWhereItMayAndKeepsTheOrder) {
  Gate gate;
  auto atOnce = std::make_shared<std::string>();
  bool takes = true;
  ThreadedLineWriter writer(gate.Sink(), {.atOnce = [&, atOnce](const LogLine& line) {
                              if (takes) *atOnce += line.text + '|';
                              return takes;
                            }});
  writer.Write(Line("1"));
  EXPECT_EQ(*atOnce, "1|");
  takes = false;
  gate.Set(false);
  writer.Write(Line("2"));
  ASSERT_TRUE(gate.AwaitArrival(1));
  takes = true;
  writer.Write(Line("3"));
  gate.Set(true);
  ASSERT_TRUE(writer.Flush(kLong));
  EXPECT_EQ(gate.Written(), "2|3|") << "behind the one that waits";
  writer.Write(Line("4"));
  EXPECT_EQ(*atOnce, "1|4|");
}

TEST(LineWriterTest, WhatWasLostIsToldBeforeALineGoesOutAtOnce) {
  Gate gate;
  bool takes = false;
  ThreadedLineWriter writer(gate.Sink(), {.atOnce = [&](const LogLine&) { return takes; }});
  gate.Set(true, true);
  writer.Write(Line("lost"));
  ASSERT_TRUE(writer.Flush(kLong));
  gate.Set(true);
  takes = true;
  writer.Write(Line("next"));
  ASSERT_TRUE(writer.Flush(kLong));
  EXPECT_EQ(gate.Written().substr(0, 6), "1 line");
  EXPECT_EQ(gate.Written().substr(gate.Written().find('|')), "|next|");
}

TEST(LineWriterTest, LinesThatComeTogetherWaitForFlushOrAQueueThatIsHalfFull) {
  Gate gate;
  ThreadedLineWriter writer(gate.Sink(), {.mostWaiting = 4000, .gather = 1h});
  writer.Write(Line("1"));
  writer.Write(Line("2"));
  EXPECT_EQ(gate.Written(), "");
  ASSERT_TRUE(writer.Flush(kLong));
  EXPECT_EQ(gate.Written(), "1|2|");
  writer.Write(Line(std::string(2500, 'x')));
  EXPECT_TRUE(gate.AwaitArrival(3));
}

TEST(LineWriterTest, WhatWaitsIsOutBeforeItEnds) {
  Gate gate;
  {
    ThreadedLineWriter writer(gate.Sink());
    for (int i = 0; i < 5; ++i) writer.Write(Line(std::to_string(i)));
  }
  EXPECT_EQ(gate.Written(), "0|1|2|3|4|");
}

}  // namespace
}  // namespace zeb
