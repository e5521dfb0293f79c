#include "outputs/test/OutputTest.h"

#include <exception>
#include <utility>

namespace zeb {

void TestSteps::Keep(TestStep step) {
  if (told_) told_(step);
  steps_.push_back(std::move(step));
}

bool TestSteps::Add(std::string what, const Outcome& outcome, std::string words) {
  if (!outcome) words = outcome.Reason();
  Keep({std::move(what), outcome.Ok(), std::move(words)});
  return outcome.Ok();
}

bool TestSteps::HasTime() {
  if (loop_.Monotonic() - begun_ < kTestLimit) return true;
  if (!std::exchange(overtime_, true)) Keep({"the rest", false, "not tried, for the test took too long"});
  return false;
}

std::vector<TestStep> StepsOf(EventLoop& loop, OutputTest& test, TestSteps::Told told) {
  TestSteps steps(loop, std::move(told));
  try {
    test.Run(steps);
  } catch (const std::exception& error) {
    steps.Add("the test itself", Failure{error.what()});
  }
  return steps.Take();
}

}  // namespace zeb
