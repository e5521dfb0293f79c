#include "platform/TaskStacks.h"

#include "platform/Sanitizer.h"

namespace zeb {

namespace {

// Instrumented frames are several times larger.
constexpr std::size_t kStackBytes = kAddressSanitizer ? 1024 * 1024 : 256 * 1024;

}  // namespace

TaskStacks::TaskStacks() : maker_(kStackBytes) {
  kept_.reserve(kMostKept);
}

TaskStacks::~TaskStacks() {
  for (auto& stack : kept_) maker_.deallocate(stack);
}

boost::context::stack_context TaskStacks::Take() {
  if (kept_.empty()) return maker_.allocate();
  auto stack = kept_.back();
  kept_.pop_back();
  return stack;
}

void TaskStacks::GiveBack(boost::context::stack_context& stack) noexcept {
  // The last frames of a task are left by a jump, so their red zones are still marked.
  ForgetStackMarks(static_cast<char*>(stack.sp) - stack.size, stack.size);
  if (kept_.size() < kMostKept) {
    kept_.push_back(stack);
  } else {
    maker_.deallocate(stack);
  }
}

}  // namespace zeb
