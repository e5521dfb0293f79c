#include "platform/qt/DescriptorBudget.h"

#include <sys/resource.h>

namespace zeb {
namespace {

std::size_t PresentLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return 0;
  return static_cast<std::size_t>(limit.rlim_cur);
}

}  // namespace

DescriptorBudget::DescriptorBudget() : DescriptorBudget(PresentLimit()) {}

}  // namespace zeb
