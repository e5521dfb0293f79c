#include "platform/system/DescriptorLimit.h"

#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "platform/DescriptorReserve.h"

namespace zeb {
namespace {

bool LeavesDescriptors(int descriptor) {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return true;
  const auto most = static_cast<std::size_t>(limit.rlim_cur);
  return static_cast<std::size_t>(descriptor) + DescriptorReserve(most) / 2 < most;
}

}  // namespace

SocketNumber OpenSocketWithinLimit(int family, int type, int protocol, bool& noneLeft) {
  const int descriptor = socket(family, type | SOCK_CLOEXEC, protocol);
  noneLeft = descriptor < 0 ? errno == EMFILE : !LeavesDescriptors(descriptor);
  if (!noneLeft || descriptor < 0) return descriptor;
  close(descriptor);
  return kNoSocket;
}

}  // namespace zeb
