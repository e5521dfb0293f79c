#include "platform/posix/StandardError.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace zeb {

bool WriteToStandardError(const LogLine& line) {
  const std::string bytes = line.time + line.text + '\n';
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t count = ::write(STDERR_FILENO, bytes.data() + done, bytes.size() - done);
    if (count > 0) {
      done += static_cast<std::size_t>(count);
    } else if (errno == EAGAIN) {  // whoever shares it may have made it one that does not wait
      pollfd end = {STDERR_FILENO, POLLOUT, 0};
      ::poll(&end, 1, -1);
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

}  // namespace zeb
