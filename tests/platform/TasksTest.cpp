#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/WorkLane.h"
#include "platform/simulated/SimulatedLoop.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

struct TasksTest : testing::Test {
  SimulatedLoop loop;
  std::vector<std::string> log;
  void Log(const std::string& text) { log.push_back(text); }
  // Logs with the simulated time in milliseconds.
  void LogTime(const std::string& text) { Log(text + "@" + std::to_string(loop.Monotonic() / 1ms)); }
};

using Lines = std::vector<std::string>;

TEST_F(TasksTest, WaitsTakeExactlyTheirTime) {
  loop.Start("a", [&] {
    LogTime("begun");
    loop.Wait(500ms);
    LogTime("half");
    loop.Wait(1s);
    LogTime("end");
  });
  EXPECT_EQ(log, Lines{"begun@0"}) << "a task begins before Start returns";
  EXPECT_EQ(loop.TaskCount(), 1u);
  loop.RunFor(1499ms);
  EXPECT_EQ(log.size(), 2u);
  loop.RunFor(1ms);
  EXPECT_EQ(log, (Lines{"begun@0", "half@500", "end@1500"}));
  EXPECT_EQ(loop.TaskCount(), 0u);
}

TEST_F(TasksTest, AConditionEndsAWaitWhenItComesTrueElseTheLimitDoes) {
  bool flag = false;
  const Timer timer = loop.After(700ms, [&] { flag = true; });
  loop.Start("early", [&] { LogTime(loop.WaitUntil([&] { return flag; }, 1s) ? "true" : "false"); });
  loop.Start("late", [&] { LogTime(loop.WaitUntil([&] { return flag; }, 600ms) ? "true" : "false"); });
  loop.Start("at once", [&] { LogTime(loop.WaitUntil([] { return true; }, 1s) ? "true" : "false"); });
  loop.Start("for ever",
             [&] { LogTime(loop.WaitUntil([&] { return flag; }, Duration::max()) ? "true" : "?"); });
  loop.RunFor(10s);
  EXPECT_EQ(log, (Lines{"true@0", "false@600", "true@700", "true@700"}));
}

TEST_F(TasksTest, WaitingOutsideATaskIsAFault) {
  EXPECT_THROW(loop.Wait(1s), std::logic_error);
  EXPECT_THROW(loop.WaitUntil([] { return true; }, 1s), std::logic_error);
  EXPECT_FALSE(loop.InTask());
}

TEST_F(TasksTest, ATaskStartedByATaskBeginsWhenThatOneWaitsOrEnds) {
  loop.Start("outer", [&] {
    loop.Start("first", [&] { LogTime("first"); });
    Log("outer goes on");
    loop.Wait(1s);
    loop.Start("second", [&] { LogTime("second"); });
    Log("outer ends");
  });
  loop.RunFor(2s);
  EXPECT_EQ(log, (Lines{"outer goes on", "first@0", "outer ends", "second@1000"}));
}

TEST_F(TasksTest, OneTaskAtATimePassesAGateThatEachShutsBehindIt) {
  bool busy = false;
  for (int i = 0; i < 4; ++i) {
    loop.Start("worker", [&] {
      ASSERT_TRUE(loop.WaitUntil([&] { return !busy; }, 1min));
      ASSERT_FALSE(busy);
      busy = true;
      loop.Wait(1s);
      LogTime("done");
      busy = false;
    });
  }
  loop.RunFor(10s);
  EXPECT_EQ(log, (Lines{"done@1000", "done@2000", "done@3000", "done@4000"}));
}

TEST_F(TasksTest, ATaskThatGoesOnLetsAnEarlierOneGoOnAtTheSameMoment) {
  bool first = false, second = false;
  loop.Start("a", [&] {
    loop.WaitUntil([&] { return second; }, 1min);
    LogTime("a");
  });
  loop.Start("b", [&] {
    loop.WaitUntil([&] { return first; }, 1min);
    second = true;
  });
  first = true;
  loop.RunPosted();
  EXPECT_EQ(log, Lines{"a@0"});
}

TEST_F(TasksTest, FailuresGoToTheHandlerAndNoFurther) {
  loop.OnTaskFailure([&](const std::string& task, const std::string& what) { Log(task + ": " + what); });
  loop.Start("one", [] { throw std::runtime_error("at once"); });
  loop.Start("two", [&] {
    loop.Wait(1s);
    throw 7;
  });
  loop.Start("three", [&] { loop.WaitUntil([]() -> bool { throw std::runtime_error("in it"); }, 1s); });
  bool asked = false;
  loop.Start("four", [&] {
    loop.WaitUntil([&] { return asked ? throw std::runtime_error("later") : (asked = true, false); }, 1min);
  });
  loop.RunFor(2s);
  EXPECT_EQ(log, (Lines{"one: at once", "three: in it", "four: later", "two: unknown exception"}));
  EXPECT_EQ(loop.TaskCount(), 0u);
}

// The runtime keeps exceptions in flight per thread; tasks that wait while handling one must not mix them up.
TEST_F(TasksTest, TasksMayWaitWhileTheyHandleAnException) {
  for (int i = 0; i < 3; ++i) {
    loop.Start("handler", [&, i] {
      try {
        throw std::runtime_error("fault " + std::to_string(i));
      } catch (...) {
        loop.Wait(std::chrono::seconds(3 - i));
        try {
          throw;
        } catch (const std::exception& failure) {
          LogTime(failure.what());
        }
      }
    });
  }
  loop.RunFor(5s);
  EXPECT_EQ(log, (Lines{"fault 2@1000", "fault 1@2000", "fault 0@3000"}));
  EXPECT_EQ(std::uncaught_exceptions(), 0);
}

TEST_F(TasksTest, AThousandTasksWaitAtOnce) {
  int done = 0;
  bool go = false;
  for (int i = 0; i < 1000; ++i) {
    loop.Start("waiter", [&] {
      if (loop.WaitUntil([&] { return go; }, 1h)) ++done;
      loop.Wait(1s);
      ++done;
    });
  }
  EXPECT_EQ(loop.TaskCount(), 1000u);
  const Timer tick = loop.Every(100ms, [] {});
  loop.RunFor(30min);
  EXPECT_EQ(done, 0);
  go = true;
  loop.RunPosted();
  EXPECT_EQ(done, 1000);
  loop.RunFor(1s);
  EXPECT_EQ(done, 2000);
  EXPECT_EQ(loop.TaskCount(), 0u);
}

TEST_F(TasksTest, BlockingWorkTakesTheTimeThatWasSetAndOthersGoOn) {
  loop.SetBlockingTime(2s);
  bool finished = false;
  loop.Start("upload", [&] {
    loop.RunBlocking([&] { finished = true; }, 1h);
    LogTime("uploaded");
    try {
      loop.RunBlocking([] { throw std::runtime_error("share is gone"); }, 1h);
    } catch (const std::runtime_error& failure) {
      LogTime(failure.what());
    }
  });
  loop.Start("other", [&] {
    loop.Wait(1s);
    LogTime(finished ? "finished" : "under way");
  });
  loop.RunFor(5s);
  EXPECT_EQ(log, (Lines{"under way@1000", "uploaded@2000", "share is gone@4000"}));
  finished = false;
  loop.RunBlocking([&] { finished = true; }, 1h);
  EXPECT_TRUE(finished) << "outside a task the work is done at once";
}

TEST_F(TasksTest, BlockingWorkThatPassesItsLimitIsLeftToItself) {
  bool released = false;
  int comeBacks = 0;
  auto held = std::make_shared<int>(1);
  loop.Start("share", [&, held] {
    const auto got = loop.RunBlocking(
        [&, held] {
          loop.WaitUntil([&] { return released; }, 1h);
          return std::string("late");
        },
        30s, [&] { ++comeBacks; });
    LogTime(got ? *got : "nothing");
  });
  loop.RunFor(1min);
  EXPECT_EQ(log, Lines{"nothing@30000"});
  EXPECT_EQ(held.use_count(), 2) << "the worker has it still";
  released = true;
  loop.RunFor(1s);
  EXPECT_EQ(comeBacks, 1);
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(TasksTest, ALaneLetsOneJobHang) {
  WorkLane lane(loop);
  bool released = false;
  const auto run = [&](const std::string& name, Duration limit) {
    loop.Start(name, [&, name, limit] {
      const bool done = lane.Run([&] { loop.WaitUntil([&] { return released; }, 1h); }, limit);
      LogTime(name + (done ? " done" : " given up"));
    });
  };
  run("first", 2s);
  loop.RunFor(3s);
  run("second", 2s);
  EXPECT_TRUE(lane.Hangs());
  lane.WhenBack([&] { LogTime("back"); });
  loop.RunFor(1s);
  released = true;
  loop.RunFor(1s);
  EXPECT_FALSE(lane.Hangs());
  run("third", 2s);
  loop.RunFor(1s);
  EXPECT_EQ(log, (Lines{"first given up@2000", "second given up@3000", "back@4000", "third done@5000"}));
}

// A job that no worker has begun by its limit hangs nowhere: the lane stays open, and the next one that does
// hang is told of when it is back.
TEST_F(TasksTest, AJobThatNeverBeganLeavesTheLaneOpen) {
  WorkLane lane(loop);
  loop.SetBlockingTime(5s);
  bool released = false;
  loop.Start("late", [&] { EXPECT_FALSE(lane.Run([] {}, 1s)); });
  loop.RunFor(10s);
  EXPECT_FALSE(lane.Hangs());
  loop.SetBlockingTime(0s);
  loop.Start("hangs",
             [&] { EXPECT_FALSE(lane.Run([&] { loop.WaitUntil([&] { return released; }, 1h); }, 1s)); });
  loop.RunFor(2s);
  EXPECT_TRUE(lane.Hangs());
  lane.WhenBack([&] { LogTime("back"); });
  released = true;
  loop.RunFor(1s);
  EXPECT_EQ(log.size(), 1U);
}

TEST_F(TasksTest, AYieldLetsTheStartedRunAsFarAsTheyGo) {
  loop.Start("parent", [&] {
    loop.Start("child", [&] {
      LogTime("child");
      loop.Start("grandchild", [&] { LogTime("grandchild"); });
      loop.Wait(1s);
      LogTime("child again");
    });
    LogTime("parent");
    loop.Yield();
    LogTime("parent again");
  });
  loop.RunFor(2s);
  EXPECT_EQ(log, (Lines{"parent@0", "child@0", "grandchild@0", "parent again@0", "child again@1000"}));
}

TEST_F(TasksTest, WhatATaskHoldsIsReleasedWhenItEnds) {
  auto held = std::make_shared<int>(1);
  std::weak_ptr<int> watch = held;
  loop.Start("holder", [&loop = loop, held = std::move(held)] { loop.Wait(1s); });
  EXPECT_FALSE(watch.expired());
  loop.RunFor(1s);
  EXPECT_TRUE(watch.expired());
}

TEST_F(TasksTest, RunTaskTellsWhetherTheWorkEndedAndHandsOnWhatItThrew) {
  EXPECT_TRUE(loop.RunTask([&] { loop.Wait(9min); }));
  EXPECT_FALSE(loop.RunTask([&] { loop.Wait(2s); }, 1s));
  EXPECT_THROW(loop.RunTask([&] { throw std::runtime_error("x"); }), std::runtime_error);
  EXPECT_THROW(loop.RunTask([&] { loop.RunFor(1s); }), std::logic_error);
}

// What a loop's end does to the tasks that wait.
struct LoopEndTest : testing::Test {
  std::unique_ptr<SimulatedLoop> owned = std::make_unique<SimulatedLoop>();
  SimulatedLoop& loop = *owned;
  std::shared_ptr<int> token = std::make_shared<int>(0);
  void TearDown() override {
    owned.reset();
    EXPECT_EQ(token.use_count(), 1) << "everything that the tasks held is released";
  }
};

TEST_F(LoopEndTest, SuspendedTasksUnwind) {
  loop.SetBlockingTime(1min);
  loop.OnTaskFailure([](const std::string&, const std::string& what) { ADD_FAILURE() << what; });
  auto lives = [held = token] { return *held != 0; };
  loop.Start("time", [this, held = token] {
    const auto onStack = held;
    loop.Wait(1h);
    ADD_FAILURE() << "went on";
  });
  loop.Start("condition", [this, lives] { loop.WaitUntil(lives, 1h); });
  loop.Start("worker", [this, held = token] { loop.RunBlocking([held] { ADD_FAILURE(); }, 1h); });
  loop.Start("parent", [this, held = token] {
    loop.Start("child", [this, held] { loop.Wait(1h); });
    loop.Wait(1h);
  });
  loop.Post([held = token] {});
  loop.RunFor(1s);
  EXPECT_EQ(loop.TaskCount(), 5u);
}

TEST_F(LoopEndTest, ATaskThatCatchesEverythingGoesOnUntilItEnds) {
  int caught = 0;
  loop.Start("stubborn", [this, &caught, held = token] {
    for (int i = 0; i < 3; ++i) {
      try {
        loop.Wait(1h);
      } catch (...) {
        ++caught;
      }
    }
    loop.Start("too late", [held] { ADD_FAILURE(); });
  });
  owned.reset();
  EXPECT_EQ(caught, 3);
}

TEST_F(LoopEndTest, ATaskThatWouldWaitForEverIsLeft) {
  int refused = 0;
  loop.Start("endless", [this, &refused] {
    for (;;) {
      try {
        loop.Wait(1s);
      } catch (...) {
        ++refused;
      }
    }
  });
  owned.reset();
  EXPECT_GT(refused, 0);
}

TEST_F(LoopEndTest, AWaitWhileUnwindingDoesNotThrow) {
  struct WaitsAtTheEnd {
    SimulatedLoop& loop;
    bool& passed;
    ~WaitsAtTheEnd() {
      loop.Wait(1s);
      passed = true;
    }
  };
  bool passed = false;
  loop.Start("untidy", [this, &passed, held = token] {
    const WaitsAtTheEnd waits{loop, passed};
    loop.Wait(1h);
  });
  owned.reset();
  EXPECT_TRUE(passed);
}

}  // namespace
}  // namespace zeb
