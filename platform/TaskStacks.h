// TaskStacks: the stacks of tasks, each with a guard page below it so that running out of stack stops the
// program instead of damaging another task. Stacks of ended tasks are kept for the next ones, up to a bound.
//
// Private to TaskScheduler.
#pragma once

#include <boost/assert.hpp>
#include <boost/context/protected_fixedsize_stack.hpp>
#include <boost/context/stack_context.hpp>
#include <cstddef>
#include <vector>

namespace zeb {

class TaskStacks {
 public:
  TaskStacks();
  ~TaskStacks();
  TaskStacks(const TaskStacks&) = delete;
  TaskStacks& operator=(const TaskStacks&) = delete;

  boost::context::stack_context Take();  // throws std::bad_alloc
  void GiveBack(boost::context::stack_context& stack) noexcept;

 private:
  static constexpr std::size_t kMostKept = 256;
  boost::context::protected_fixedsize_stack maker_;
  std::vector<boost::context::stack_context> kept_;
};

}  // namespace zeb
