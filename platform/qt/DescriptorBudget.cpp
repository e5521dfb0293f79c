#include "platform/qt/DescriptorBudget.h"

#include <sys/resource.h>

#include <algorithm>

namespace zeb {

namespace {

// Workers, with a template, a page and a picture each, the settings and their journal, log files.
constexpr std::size_t kMostReserved = 128;

std::size_t PresentLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return 0;
  return static_cast<std::size_t>(limit.rlim_cur);
}

}  // namespace

DescriptorBudget::DescriptorBudget() : DescriptorBudget(PresentLimit()) {}

std::size_t DescriptorBudget::Reserve() const {
  return std::min(limit_ / 4, kMostReserved);
}

std::string DescriptorBudget::Reason() const {
  return "too many open files, the limit is " + std::to_string(limit_) + ": raise LimitNOFILE";
}

}  // namespace zeb
