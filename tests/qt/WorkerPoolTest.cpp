// How many threads a pool has.

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <memory>

#include "platform/qt/WorkerPool.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

// Jobs that hang until they are released, and how many have begun.
struct Hanging : std::enable_shared_from_this<Hanging> {
  std::promise<void> release;
  std::shared_future<void> released = release.get_future().share();
  std::atomic<int> begun = 0;
  std::promise<void> third, never;

  std::function<void()> Job() {
    return [self = shared_from_this()] {
      if (++self->begun == 3) self->third.set_value();
      self->released.wait();
    };
  }
};

TEST(WorkerPoolTest, AThreadMoreForEachThatSeemsToHangAndNeverMoreThanTheMost) {
  const auto hanging = std::make_shared<Hanging>();
  std::future<void> third = hanging->third.get_future(), never = hanging->never.get_future();
  const auto hangLong = [&never] { never.wait_for(WorkerPool::kSeemsToHang + 200ms); };
  WorkerPool pool(2, 3);
  for (int i = 0; i < 5; ++i) EXPECT_FALSE(pool.Submit(hanging->Job()));
  pool.Relieve();
  hangLong();
  EXPECT_EQ(hanging->begun, 2) << "none had been at its job for long";
  pool.Relieve();
  EXPECT_EQ(third.wait_for(20s), std::future_status::ready);
  hangLong();
  pool.Relieve();
  hangLong();
  EXPECT_EQ(hanging->begun, 3);
  EXPECT_TRUE(pool.Crowded());
  hanging->release.set_value();
}

}  // namespace
}  // namespace zeb
