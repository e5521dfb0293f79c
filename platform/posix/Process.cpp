#include "platform/system/Process.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

namespace zeb {
namespace {

// The usual limit is made for programs that open a few files. Where more is refused, it stays.
void RaiseDescriptorLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == limit.rlim_max) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace

std::vector<std::string> ProgramArguments(int argc, char** argv) {
  return {argv + 1, argv + argc};
}

void PrepareSystem() {
  std::signal(SIGPIPE, SIG_IGN);
  RaiseDescriptorLimit();
}

bool StandardErrorIsTerminal() {
  return isatty(STDERR_FILENO) != 0;
}

bool StandardOutputIsTerminal() {
  return isatty(STDOUT_FILENO) != 0;
}

void UsePlainStreams() {}

bool WouldLockOwnerOut(const std::string& folder) {
  struct stat info {};
  return geteuid() == 0 && ::stat(folder.c_str(), &info) == 0 && info.st_uid != 0;
}

}  // namespace zeb
