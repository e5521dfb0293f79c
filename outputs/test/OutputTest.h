// OutputTest: one attempt of an output at what it works with, without publishing anything: is the server
// found, does it let us in, may we write in its folder. Each output has its own test, with a copy of the
// output's settings and connections of its own, so the running output notices nothing of it.
//
// Everything is bounded: each step takes about ten seconds at the most, and after kTestLimit no further step
// is begun.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/EventLoop.h"
#include "platform/Result.h"

namespace zeb {

inline constexpr Duration kTestStepLimit = std::chrono::seconds(10);
inline constexpr Duration kTestLimit = std::chrono::seconds(20);

struct TestStep {
  std::string what;  // "connection to www.example.org:80"
  bool ok = true;
  std::string words;  // why not, in the server's words where it said any; or what else is to be known; or ""

  std::string Text() const { return words.empty() ? what : what + ": " + words; }
  bool operator==(const TestStep&) const = default;
};

// The steps as they are done.
class TestSteps {
 public:
  // `told` hears of each as soon as it is done. In the task.
  using Told = std::function<void(const TestStep&)>;
  explicit TestSteps(EventLoop& loop, Told told = nullptr)
      : loop_(loop), begun_(loop.Monotonic()), told_(std::move(told)) {}

  // Whether it went well. `words` are for a step that did.
  bool Add(std::string what, const Outcome& outcome, std::string words = "");
  // True when a further step may be begun; when not, a step says so, once.
  bool HasTime();
  std::vector<TestStep> Take() { return std::move(steps_); }

 private:
  void Keep(TestStep step);

  EventLoop& loop_;
  const MonotonicTime begun_;
  const Told told_;
  bool overtime_ = false;
  std::vector<TestStep> steps_;
};

class OutputTest {
 public:
  virtual ~OutputTest() = default;
  // In a task.
  virtual void Run(TestSteps& steps) = 0;
};

// All steps of a test; what it throws is one that failed. In a task.
std::vector<TestStep> StepsOf(EventLoop& loop, OutputTest& test, TestSteps::Told told = nullptr);

}  // namespace zeb
