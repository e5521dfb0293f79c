#include "platform/posix/DescriptorLimit.h"

#include <sys/resource.h>

#include <cstddef>

#include "platform/DescriptorReserve.h"

namespace zeb {

void RaiseDescriptorLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == limit.rlim_max) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

bool LeavesDescriptors(int descriptor) {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return true;
  const auto most = static_cast<std::size_t>(limit.rlim_cur);
  return static_cast<std::size_t>(descriptor) + DescriptorReserve(most) / 2 < most;
}

}  // namespace zeb
