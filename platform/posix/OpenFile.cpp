#include "platform/posix/OpenFile.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace zeb {

std::string ErrorText(int error) {
  return std::generic_category().message(error);
}

Failure Cannot(const std::string& verb, const std::string& path, const std::string& why) {
  return {"cannot " + verb + " '" + path + "': " + why};
}

bool Descriptor::Close() {
  return number_ < 0 || ::close(std::exchange(number_, -1)) == 0;
}

bool HasNul(const std::string& path) {
  return path.find('\0') != std::string::npos;
}

std::int64_t Nanoseconds(const timespec& moment) {
  return static_cast<std::int64_t>(moment.tv_sec) * 1'000'000'000 + moment.tv_nsec;
}

ssize_t ReadSome(const Descriptor& file, char* to, std::size_t size) {
  ssize_t got = 0;
  do got = ::read(file.Number(), to, size);
  while (got < 0 && errno == EINTR);
  return got;
}

bool WriteAll(const Descriptor& file, std::string_view bytes) {
  while (!bytes.empty()) {
    ssize_t written = ::write(file.Number(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace zeb
