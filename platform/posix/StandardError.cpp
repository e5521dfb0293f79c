#include "platform/system/StandardError.h"

#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace zeb {

namespace {

std::string BytesOf(const LogLine& line) {
  return line.time + line.text + '\n';
}

// Up to this size a pipe or a local socket takes all or nothing.
constexpr std::size_t kWholeBytes = PIPE_BUF;

bool IsLocalSocket(int descriptor) {
  int domain = 0;
  socklen_t size = sizeof domain;
  return getsockopt(descriptor, SOL_SOCKET, SO_DOMAIN, &domain, &size) == 0 && domain == AF_UNIX;
}

// The same pipe once more, with a flag of its own: that of the shared one is its other users' matter.
int OpenPipeAgain() {
  return ::open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
}

}  // namespace

bool WriteToStandardError(const LogLine& line) {
  const std::string bytes = BytesOf(line);
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

LineSink TryStandardError() {
  struct stat info {};
  if (::fstat(STDERR_FILENO, &info) != 0) return nullptr;
  if (S_ISSOCK(info.st_mode) && IsLocalSocket(STDERR_FILENO))
    return [](const LogLine& line) {
      const std::string bytes = BytesOf(line);
      return bytes.size() <= kWholeBytes &&
             ::send(STDERR_FILENO, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL) > 0;
    };
  if (!S_ISFIFO(info.st_mode)) return nullptr;
  const int pipe = OpenPipeAgain();
  if (pipe < 0) return nullptr;
  return [pipe](const LogLine& line) {
    const std::string bytes = BytesOf(line);
    return bytes.size() <= kWholeBytes && ::write(pipe, bytes.data(), bytes.size()) > 0;
  };
}

}  // namespace zeb
