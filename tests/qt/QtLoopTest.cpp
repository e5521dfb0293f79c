#include <QAbstractEventDispatcher>
#include <QEventLoop>
#include <QTimer>
#include <atomic>
#include <ctime>
#include <future>
#include <optional>
#include <stdexcept>
#include <thread>

#include "platform/WorkLane.h"
#include "platform/qt/QtLoop.h"
#include "platform/qt/WorkerPool.h"
#include "tests/qt/QtFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

using QtLoopTest = QtFixture;

TEST_F(QtLoopTest, EventsComeInOrderAndNeverEarly) {
  std::string order;
  const MonotonicTime begun = loop.Monotonic();
  MonotonicTime fired{};
  const Timer late = loop.After(30ms, [&] {
    order += 'c';
    fired = loop.Monotonic();
  });
  const Timer early = loop.After(0ms, [&] { order += 'b'; });
  loop.Start("a", [&] { order += 'a'; });
  ASSERT_TRUE(Until([&] { return order.size() == 3; }));
  EXPECT_EQ(order, "abc");
  EXPECT_GE(fired - begun, 30ms);
}

TEST_F(QtLoopTest, QuitHandsItsCodeToRunEvenWhenItComesFirst) {
  loop.Quit(3);
  EXPECT_EQ(loop.Run(), 3);
}

TEST_F(QtLoopTest, TheWallClockIsLocalCivilTime) {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
#ifdef _WIN32
  localtime_s(&local, &now);
#else
  localtime_r(&now, &local);
#endif
  const auto civil =
      std::chrono::local_days{std::chrono::year(local.tm_year + 1900) / (local.tm_mon + 1) / local.tm_mday} +
      std::chrono::hours(local.tm_hour) + std::chrono::minutes(local.tm_min) +
      std::chrono::seconds(local.tm_sec);
  const auto difference = loop.Now() - civil;
  EXPECT_GE(difference, 0s);
  EXPECT_LT(difference, 30s);
}

TEST_F(QtLoopTest, WorkThatPostsWorkDoesNotKeepTimersOut) {
  bool stop = false;
  std::function<void()> again = [&] {
    if (!stop) loop.Post(again);
  };
  loop.Post(again);
  const Timer timer = loop.After(5ms, [&] { stop = true; });
  EXPECT_TRUE(Until([&] { return stop; }));
}

TEST_F(QtLoopTest, TimersOfSecondsTickTogether) {
  std::vector<MonotonicTime> ticks;
  std::vector<Timer> timers;
  for (int i = 0; i < 100; ++i) {
    timers.push_back(loop.Every(1s, [&] { ticks.push_back(loop.Monotonic()); }));
  }
  int wakes = 0;
  const auto connection = QObject::connect(QAbstractEventDispatcher::instance(),
                                           &QAbstractEventDispatcher::awake, [&] { ++wakes; });
  ASSERT_TRUE(Until([&] { return ticks.size() >= 200; }));
  QObject::disconnect(connection);
  EXPECT_EQ(ticks.size(), 200u);
  // Two seconds' worth; a hundred timers on their own would wake it two hundred times.
  EXPECT_LT(wakes, 40);
}

TEST_F(QtLoopTest, WhatCallbacksThrowIsReportedAndTheLoopGoesOn) {
  std::vector<std::string> failures;
  loop.OnTaskFailure(
      [&](const std::string& name, const std::string& what) { failures.push_back(name + ": " + what); });
  loop.Post([] { throw std::runtime_error("posted"); });
  const Timer timer = loop.After(1ms, [] { throw 1; });
  ASSERT_TRUE(Until([&] { return failures.size() == 2; }));
  EXPECT_EQ(failures, (std::vector<std::string>{"event: posted", "event: unknown exception"}));
}

TEST_F(QtLoopTest, AMessageBoxInAnEventLetsOtherEventsThrough) {
  std::string order;
  Timer sameMoment;
  loop.Post([&] {
    QEventLoop box;
    sameMoment = loop.After(0ms, [&] {
      order += "timer ";
      box.quit();
    });
    box.exec();
    order += "closed";
  });
  loop.Post([&] { order += "post "; });
  ASSERT_TRUE(Until([&] { return order.find("closed") != std::string::npos; }));
  EXPECT_EQ(order, "post timer closed");
}

// A condition may come true by an event that is not the loop's own, a window's for example.
TEST_F(QtLoopTest, TasksSeeWhatForeignEventsChanged) {
  bool flag = false;
  QTimer::singleShot(5, [&] { flag = true; });
  EXPECT_TRUE(Until([&] { return flag; }));
}

TEST_F(QtLoopTest, ABlockedWorkerStopsOnlyItsOwnTask) {
  std::promise<void> release;
  bool blockedEnded = false;
  int ended = 0;
  loop.Start("blocked", [&] {
    loop.RunBlocking([&] { release.get_future().wait(); }, 1h);
    blockedEnded = true;
  });
  std::atomic<int> done = 0;
  for (int i = 0; i < 50; ++i) {
    loop.Start("other", [&] {
      loop.RunBlocking([&] { ++done; }, 1h);
      ++ended;
    });
  }
  EXPECT_TRUE(Until([&] { return ended == 50; }));
  EXPECT_EQ(done, 50);
  EXPECT_FALSE(blockedEnded);
  release.set_value();
  EXPECT_TRUE(Until([&] { return blockedEnded; }));
}

TEST_F(QtLoopTest, BlockingWorkRunsElsewhereAndHandsItsFailureBack) {
  std::string what;
  std::thread::id worker;
  loop.Start("failing", [&] {
    try {
      loop.RunBlocking(
          [&] {
            worker = std::this_thread::get_id();
            throw std::runtime_error("share is gone");
          },
          1h);
    } catch (const std::runtime_error& failure) {
      what = failure.what();
    }
  });
  EXPECT_TRUE(Until([&] { return !what.empty(); }));
  EXPECT_EQ(what, "share is gone");
  EXPECT_NE(worker, std::this_thread::get_id());
}

TEST_F(QtLoopTest, AJobThatPassesItsLimitIsLeftToItself) {
  auto release = std::make_shared<std::promise<void>>();
  std::string order;
  WorkLane lane(loop);
  loop.Start("hangs", [&] {
    // A job that no thread takes up within its limit, on a busy machine, never begins and does not hang.
    while (!lane.Hangs()) EXPECT_FALSE(lane.Run([release] { release->get_future().wait(); }, 10ms));
    EXPECT_FALSE(lane.Run([] { return 1; }, 1h)) << "one worker hangs, not two";
    lane.WhenBack([&] { order += "back "; });
    order += "on ";
    release->set_value();
  });
  ASSERT_TRUE(Until([&] { return order == "on back "; }));
  loop.Start("again", [&] { order += std::to_string(lane.Run([] { return 7; }, 1h).value_or(0)); });
  EXPECT_TRUE(Until([&] { return order == "on back 7"; }));
}

// As many jobs hang as the pool usually has threads; the next one still runs, a little later.
TEST_F(QtLoopTest, HangingJobsDoNotUseThePoolUp) {
  std::promise<void> release;
  std::shared_future<void> released = release.get_future().share();
  std::size_t ended = 0;
  for (std::size_t i = 0; i < WorkerPool::kUsualThreads; ++i)
    loop.Start("hangs", [&] {
      loop.RunBlocking([released] { released.wait(); }, 1h);
      ++ended;
    });
  bool done = false;
  loop.Start("other", [&] { done = loop.RunBlocking([] {}, 1h); });
  EXPECT_TRUE(Until([&] { return done; }));
  EXPECT_EQ(ended, 0u);
  release.set_value();
  EXPECT_TRUE(Until([&] { return ended == WorkerPool::kUsualThreads; }));
}

TEST_F(QtLoopTest, OtherThreadsMayPost) {
  constexpr int kThreads = 4, kPosts = 1000;
  std::vector<int> seen(kThreads, 0);
  bool inOrder = true;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kPosts; ++i) {
        loop.PostFromAnyThread([&, t, i] { inOrder = inOrder && seen[static_cast<std::size_t>(t)]++ == i; });
      }
    });
  }
  EXPECT_TRUE(Until([&] { return seen == std::vector<int>(kThreads, kPosts); }));
  EXPECT_TRUE(inOrder);
  for (auto& thread : threads) thread.join();
}

TEST(QtLoopEndTest, TheLoopEndsThoughAWorkerHangs) {
  std::promise<void> begun, release, finished;
  const auto held = std::make_shared<int>(0);
  bool wentOn = false;
  std::optional<QtLoop> loop(std::in_place);
  QtLoop& inside = *loop;
  inside.Start("hangs", [&] {
    inside.RunBlocking(
        [&] {
          begun.set_value();
          release.get_future().wait();
          finished.set_value();
        },
        1h);
    wentOn = true;
  });
  inside.Start("waits", [&inside, held] { inside.Wait(1h); });
  begun.get_future().wait();
  loop.reset();
  EXPECT_EQ(held.use_count(), 1) << "the others unwind";
  release.set_value();
  finished.get_future().wait();
  EXPECT_FALSE(wentOn);
}

TEST(QtLoopEndTest, PostsToALoopThatHasEndedAreDropped) {
  const auto held = std::make_shared<int>(0);
  {
    QtLoop loop;
    loop.Post([held] { ADD_FAILURE(); });
    loop.PostFromAnyThread([held] { ADD_FAILURE(); });
    const Timer timer = loop.After(0ms, [held] { ADD_FAILURE(); });
  }
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace zeb
