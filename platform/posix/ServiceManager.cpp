#include "platform/system/ServiceManager.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace zeb {
namespace {

long long NumberInVariable(const char* name) {
  const char* text = std::getenv(name);
  long long number = 0;
  if (text != nullptr) std::from_chars(text, text + std::strlen(text), number);
  return number;
}

}  // namespace

void NotifyServiceManager(std::string_view state) {
  const char* path = std::getenv("NOTIFY_SOCKET");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path == nullptr || (path[0] != '/' && path[0] != '@') || std::strlen(path) >= sizeof address.sun_path)
    return;
  const std::size_t length = std::strlen(path);
  std::memcpy(address.sun_path, path, length);
  if (path[0] == '@') address.sun_path[0] = '\0';  // a name outside of the file system
  const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (socket < 0) return;
  // Not waited for and not checked: nothing depends on it here.
  sendto(socket, state.data(), state.size(), MSG_NOSIGNAL | MSG_DONTWAIT,
         reinterpret_cast<const sockaddr*>(&address),
         static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length));
  close(socket);
}

std::chrono::microseconds WatchdogInterval() {
  const long long forProcess = NumberInVariable("WATCHDOG_PID");
  if (forProcess != 0 && forProcess != getpid()) return std::chrono::microseconds(0);
  const long long interval = NumberInVariable("WATCHDOG_USEC");
  return std::chrono::microseconds(interval > 0 ? interval : 0);
}

std::optional<int> DoServiceCommand(const std::string&, std::vector<std::string>&, bool (*)(), std::ostream&,
                                    std::ostream&) {
  return std::nullopt;
}

}  // namespace zeb
